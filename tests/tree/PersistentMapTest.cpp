#include <zelm/text/ZString.h>
#include <zelm/tree/PersistentMap.h>

#include <support/Allocations.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <new>
#include <random>
#include <string>
#include <vector>

using namespace Zelm;
using namespace Zelm::Testing;

namespace {

/// A value that may hold a map in turn.
struct Counted;
using Pointer = std::shared_ptr<const Counted>;
using Map = Private::PersistentMap<ZString, ZStringView, Pointer>;

int s_alive = 0;
struct Counted {
    explicit Counted(Map before = {}) : inner(std::move(before)) { ++s_alive; }
    ~Counted() { --s_alive; }
    Map inner;
};

struct Version {
    Map map;
    std::map<std::string, Pointer> model;

    bool agrees() const {
        const auto alike = [](const Map::Entry& entry, const auto& expected) {
            return ZStringView(entry.key) == expected.first && entry.mapped == expected.second;
        };
        return map.size() == model.size() && map.empty() == model.empty() &&
               std::equal(map.begin(), map.end(), model.begin(), model.end(), alike);
    }
};

/// Random changes on one version at a time, while older ones that share its chunks are kept.
struct History {
    std::mt19937 random;
    std::vector<Version> kept = std::vector<Version>(8);
    Version now;
    Map sharer;
    unsigned next = 0;
    int failures = 0;
    std::size_t largest = 0;

    std::size_t pick(std::size_t count) { return random() % count; }

    std::string key(std::size_t family) {
        const std::string number = std::to_string(pick(3000));
        std::string bytes(pick(4), '\0');
        switch (family) {
        case 0:
            return number;
        case 1:
            return std::string(100, 'x') + number + std::string(pick(2), '\xff');
        case 2: // In order, here and there.
            next = pick(100) ? next + 1 : static_cast<unsigned>(pick(3000));
            return "child" + std::to_string(10000 + next);
        default: // The empty one, NULs, bytes over 0x7f.
            std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(pick(7) * 51); });
            return bytes;
        }
    }

    /// The map changes as the model does, or not at all if its memory runs out.
    template <class Change, class ModelChange>
    void change(Change onMap, ModelChange onModel) {
        if (pick(4) == 0) {
            sharer = now.map;
        }
        try {
            failAllocationAfter(pick(4) ? -1 : static_cast<long>(pick(6)));
            onMap();
            failAllocationAfter(-1);
            onModel();
        } catch (const std::bad_alloc&) {
            ++failures;
        }
    }

    void step(std::size_t family, bool shrinking) {
        std::string name = key(family);
        if (pick(4) == 0 || (shrinking && pick(3))) {
            if (const auto present = now.model.lower_bound(name); pick(8) && present != now.model.end()) {
                name = present->first;
            }
            change([&] { now.map.erase(name); }, [&] { now.model.erase(name); });
        } else {
            const auto value = std::make_shared<const Counted>(pick(50) ? Map() : kept[0].map);
            const ZString text(name);
            change([&] { now.map.insert(text, value); }, [&] { now.model[name] = value; });
        }
        const auto expected = now.model.find(name);
        const Pointer* found = now.map.find(name);
        ASSERT_EQ(found ? *found : nullptr, expected == now.model.end() ? nullptr : expected->second);
        ASSERT_EQ(now.map.size(), now.model.size());
        largest = std::max(largest, now.map.size());
    }
};

TEST(PersistentMap, agrees_with_a_plain_map_in_all_versions_through_random_changes_and_lack_of_memory) {
    {
        History history;
        for (int step = 0; step < 120000; ++step) {
            const bool shrinking = step % 15000 > 9000;
            history.step(history.pick(10) ? static_cast<std::size_t>(step / 15000) % 4 : history.pick(4),
                         shrinking);
            if (history.pick(300) == 0) {
                // Reads a version that others have changed meanwhile, and lets it go.
                Version& oldest = history.kept[history.pick(history.kept.size())];
                ASSERT_TRUE(oldest.agrees()) << step;
                oldest = history.now;
            }
            if (history.pick(3000) == 0) {
                history.now = history.kept[history.pick(history.kept.size())];
            }
            ASSERT_FALSE(HasFatalFailure());
        }
        EXPECT_TRUE(std::all_of(history.kept.begin(), history.kept.end(),
                                [](const Version& version) { return version.agrees(); }));
        EXPECT_GT(history.failures, 5000);
        EXPECT_GT(history.largest, 16u * 16u * 4u) << "the maps must get several forks high";
    }
    EXPECT_EQ(s_alive, 0);
}

Map numbered(int count) {
    const auto value = std::make_shared<const Counted>();
    Map map;
    for (int i = 0; i < count; ++i) {
        map.insert(ZString(std::to_string(1000000 + i)), value);
    }
    return map;
}

TEST(PersistentMap, takes_memory_by_chunks_and_copies_one_for_each_level) {
    for (const int count : {1, 10, 100, 1000, 100000}) {
        Map map = numbered(count);
        const ZString key(std::to_string(1000000 + count / 2));
        const Pointer value = *map.find(key);
        const int levels = count <= 16 ? 1 : count <= 120 ? 2 : count <= 1000 ? 3 : 6;
        EXPECT_EQ(allocationsOf([&] { map.insert(key, value); }), 0) << "in place, as nobody else holds it";
        const Map before = map;
        EXPECT_LE(allocationsOf([&] { map.insert(key, value); }), levels) << count;
        EXPECT_EQ(allocationsOf([&] { map.insert(key, value); }), 0) << "its own by now";
    }
    // Each key is a text with a buffer of its own.
    const long perThousand = allocationsOf([] { numbered(1000); });
    EXPECT_LT(perThousand, 1150);
    EXPECT_LT(allocationsOf([] { numbered(100000); }), 101 * perThousand);
}

} // namespace
