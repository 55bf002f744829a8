// What costs in proportion to its size, or nearly so, and must go on doing so. Each row is measured at sizes
// that grow by a factor of 32: what is quadratic then costs 32 times as much for each element, what is linear
// as much as before, and up to four times as much where it no longer fits a cache.

#include <zelm/entities/ZEntityImpl.h>
#include <zelm/zelm.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <functional>
#include <ostream>
#include <sstream>

using namespace Zelm;

namespace {

using Action = std::function<void()>;

struct Row {
    const char* name;
    std::size_t smallest;
    std::size_t largest;
    /// Makes what is needed for a size; what that returns is measured, with the end of what was made.
    Action (*prepare)(std::size_t count);
};

std::ostream& operator<<(std::ostream& out, const Row& row) {
    return out << row.name;
}

constexpr std::size_t kStep = 32;
constexpr double kLimit = 8;

/// The shortest CPU time of this thread for an element, of several runs: what disturbs one only makes it
/// longer. Stops early at a time that is good enough.
double timeOfElement(const Row& row, std::size_t count, int runs, double goodEnough) {
    const auto now = [] {
        timespec time{};
        ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
    };
    double shortest = 1e30;
    for (int run = 0; run < runs && shortest > goodEnough; ++run) {
        Action action = row.prepare(count);
        const double start = now();
        action();
        action = nullptr;
        shortest = std::min(shortest, (now() - start) / static_cast<double>(count));
    }
    return shortest;
}

/// The factor by which an element becomes dearer, at the first step that exceeds the limit or the last one.
double growthOf(const Row& row) {
    double growth = 0;
    for (std::size_t count = row.smallest; growth <= kLimit && count * kStep <= row.largest; count *= kStep) {
        const double few = timeOfElement(row, count, 5, 0);
        growth = timeOfElement(row, count * kStep, 5, few * kLimit) / few;
    }
    return growth;
}

/// Objects of an application.
struct Folder : ZObject {
    static ZString objectType() { return "Folder"; }
    Folder() : ZObject(objectType()) {}
    Folder(ZGenericObject object) : ZObject(std::move(object), objectType()) {}
};
struct FolderEntity : ZEntity<FolderEntity, Folder> {
    FolderEntity(ZString name, Folder state) : ZEntity(std::move(name), std::move(state)) {}
};

/// Calls `use` with each number below `count`, and as a name, in an order without order.
template <class Use>
void inAnyOrder(std::size_t count, Use use) {
    for (std::size_t i = 0; i < count; ++i) {
        use(ZString(std::to_string(i * 7919 % count)));
    }
}

template <class Fill>
ZPropertyHandle treeOf(Fill fill) {
    const ZMutablePropertyTree tree("root");
    tree.handle().setObjectType(Folder::objectType());
    fill(tree.handle());
    return tree.immutableHandle();
}

ZPropertyHandle wideTree(std::size_t count, const ZPropertyHandle& child) {
    return treeOf([&](ZMutablePropertyHandle root) {
        inAnyOrder(count, [&](const ZString& name) { root.attachChild(name, child); });
    });
}

ZPropertyHandle deepTree(std::size_t count) {
    return treeOf([&](ZMutablePropertyHandle root) {
        for (ZPropertyTreeNode* node = &root.node(); count > 0; --count) {
            node = node->addChild("child", Variant(1.0)).get();
        }
    });
}

const ZVariable& variable() {
    static const ZVariable one(Variant(1.0), ZUnit());
    return one;
}

/// Links, each to a variable of its own or all to one.
Folder links(std::size_t count, bool haveOneTarget) {
    return Folder(treeOf([&](ZMutablePropertyHandle root) {
        inAnyOrder(count, [&](const ZString& name) {
            const ZString target = haveOneTarget ? "x" : "x" + name;
            ZObserver link(ZObserver().propertyHandle().insertChild("Link", variable()));
            link.setLinkedPath("../" + target);
            link.setLinkType("Variable");
            root.attachChild("l" + name, link.propertyHandle());
            root.attachChild(target, variable().propertyHandle());
        });
    }));
}

std::string document(const ZPropertyHandle& tree) {
    std::ostringstream out;
    JSONFormatter().serialize(out, "document", tree);
    return out.str();
}

ZPropertyHandle reread(const ZPropertyHandle& tree) {
    std::istringstream in(document(tree));
    return JSONFormatter().deserialize(in);
}

// clang-format off
const Row kRows[] = {
    {"text_appended_and_cut", 1000, 1024000, [](std::size_t count) -> Action { return [=] {
        ZString text;
        for (std::size_t i = 0; i < count; ++i) text += "letters ";
        while (!text.empty()) text = text.mid(8);
    }; }},
    {"parents_of_text", 1000, 1024000, [](std::size_t count) -> Action {
        auto* text = new ZString::Storage("x");
        for (std::size_t i = 1; i < count; ++i) {
            auto* const cut = new ZString::Storage("x");
            cut->parent = std::exchange(text, cut);
        }
        return [text] { ZString::testing_release_pimpl(text); };
    }},
    {"text_searched_and_replaced", 1000, 1024000, [](std::size_t count) -> Action {
        return [text = repeatChar('a', count), half = repeatChar('a', count / 2)] {
            tokenize(text, ";a", true), text.replace("a", "bb"), text.replace_ignore_case("A", "bb");
            text.find(half + "b"), text.rfind("b" + half);
            ZStringFormatter(text.replace("a", "%1 ")).arg("text").toString();
            convertUtf16ToZString(convertZStringToUtf16(text));
        };
    }},
    {"elements_appended_and_selected", 1000, 32000, [](std::size_t count) -> Action { return [=] {
        Variant all;
        IndexSet places;
        for (std::size_t i = 0; i < count; ++i) all.append(Variant(1.0)), places.add(IndexValue(i, false));
        all.slice({places});
    }; }},
    {"cells_side_by_side_and_in_each_other", 1000, 32000, [](std::size_t count) -> Action { return [=] {
        const std::vector<Variant> cells(count, Variant({1.0, 2.0}));
        EXPECT_TRUE(Variant(cells).isEquivalentTo(Variant(cells)));
        Variant nested(1.0);
        for (std::size_t i = 0; i < count; ++i) nested = Variant(std::vector<Variant>{std::move(nested)});
    }; }},
    {"wide_tree_used", 1000, 32000, [](std::size_t count) -> Action { return [=] {
        const ZPropertyHandle tree = wideTree(count, variable().propertyHandle());
        EXPECT_TRUE(tree.isEquivalentTo(reread(tree)));
        for (const ZPropertyHandle& child : tree) EXPECT_TRUE(tree.hasChild(child.getName()));
        tree.changed([&](ZMutablePropertyHandle& root) { inAnyOrder(count, [&](const ZString& name) { root.eraseChild(name); }); });
    }; }},
    {"wide_tree_written_read_and_destroyed", 1000, 1024000, [](std::size_t count) -> Action {
        return [tree = wideTree(count, ZMutablePropertyTree().immutableHandle())] { reread(tree); };
    }},
    {"children_by_one_version_each", 1000, 32000, [](std::size_t count) -> Action { return [=] {
        ZPropertyHandle tree = deepTree(1);
        inAnyOrder(count, [&](const ZString& name) { tree = tree.setChildValue(name, Variant(1.0)); });
        inAnyOrder(count, [&](const ZString& name) { tree = tree.removeChild(name); });
    }; }},
    {"deep_tree_compared_written_and_destroyed", 1000, 1024000, [](std::size_t count) -> Action {
        return [tree = deepTree(count), other = deepTree(count)] { EXPECT_TRUE(tree.isEquivalentTo(other)), document(tree); };
    }},
    {"deep_tree_read", 15, 480, [](std::size_t count) -> Action { return [tree = deepTree(count)] { reread(tree); }; }},
    {"quantities_and_factors_of_units", 100, 3200, [](std::size_t count) -> Action { return [=] {
        static int next = 0;
        std::string factors = "m";
        for (std::size_t i = 0; i < count; ++i, ++next) {
            const ZString text = "m^" + fromInt(1 + next % 99) + "*kg^" + fromInt(1 + next / 99 % 99) + "*s^" + fromInt(1 + next / 9801);
            ZUnitType::FindByReferenceSiString(ZUnit::FromSiString(text).GetUnitType().GetReferenceSIString());
            factors += i % 2 ? "*m" : "*A";
        }
        ZUnit::FromSiString(factors);
    }; }},
    {"units_of_the_catalogue", 1000, 32000, [](std::size_t count) -> Action { return [=] {
        ZSystemOfUnits& all = ZSystemOfUnits::instance();
        const ZUnit unit = ZUnit::FromSiString("km");
        inAnyOrder(count, [&](const ZString& name) { all.InsertUnits(name, ZUnit(unit).SetUnitsLabel(name)); });
        EXPECT_GT(all.GetCompatibleUnits(unit).size(), count);
        inAnyOrder(count, [&](const ZString& name) { all.GetUnitsByName(name), all.RemoveUnits(name); });
    }; }},
    {"independents", 1000, 32000, [](std::size_t count) -> Action { return [=] {
        ZVariable all = variable();
        all.setIndeps(std::vector<ZVariable>(count, variable()));
        EXPECT_TRUE(all.isEquivalentTo(ZVariable(all)) && all.indepCount() == count);
    }; }},
    {"entities", 1000, 32000, [](std::size_t count) -> Action { return [=] {
        FolderEntity root("root", Folder(wideTree(count, variable().propertyHandle())));
        inAnyOrder(count, [&](const ZString& name) {
            dynamic_cast<ZVariableEntity&>(*root.getChild(name).lock()).updateState([](ZVariable* state) { *state = ZVariable(2, ZUnit()); });
        });
        root.setState(Folder(wideTree(count / 2, variable().propertyHandle())));
    }; }},
    {"links", 250, 8000, [](std::size_t count) -> Action { return [=] {
        for (const bool haveOneTarget : {false, true}) {
            FolderEntity root("root", links(count, haveOneTarget));
            root.onPostLoad(), root.state(), root.deleteAllObservers();
        }
    }; }},
#ifndef RXCPP_RX_HPP // RxCpp itself copies its list of subscribers for each that comes or goes.
    {"subscribers", 1000, 32000, [](std::size_t count) -> Action { return [=] {
        CompositeSubscriberStream<ZGenericObject> stream;
        std::vector<rxcpp::composite_subscription> all(count);
        for (const bool lastFirst : {false, true}) {
            for (auto& each : all) each = stream.subscribe([](ZGenericObject) {});
            stream.publish(ZGenericObject());
            if (lastFirst) std::reverse(all.begin(), all.end());
            for (auto& each : all) each.unsubscribe();
        }
    }; }},
#endif
    {"contexts_of_an_error", 30, 960, [](std::size_t count) -> Action { return [=] {
        const auto fails = [&](const auto& self, std::size_t level) -> void {
            try {
                level == 0 ? throw std::runtime_error("failed") : self(self, level - 1);
            } catch (...) { rethrow_with_more_info("at level " + std::to_string(level)); }
        };
        EXPECT_THROW(fails(fails, count), std::runtime_error);
    }; }},
    {"elements_of_a_path", 1000, 32000, [](std::size_t count) -> Action { return [=] {
        ZPath path("C:\\");
        for (std::size_t i = 0; i < count; ++i) path /= ZPath(i % 3 ? "name" : "..");
        const ZPath same = path.normalize();
        EXPECT_TRUE(path.equal_filenames(same) && ZPath::make_relative_path(path, same, nullptr, 1).empty());
        const auto& elements = path.fs_path();
        EXPECT_GT(std::distance(elements.begin(), elements.end()), 1);
    }; }},
};
const Row kQuadratic{"", 500, 16000, [](std::size_t count) -> Action { return [=] {
    std::vector<std::string> all;
    for (std::size_t i = 0; i < count; ++i) all.emplace(all.begin());
}; }};
// clang-format on

struct Growth : ::testing::TestWithParam<Row> {};

TEST_P(Growth, IsInProportion) {
    EXPECT_LE(growthOf(GetParam()), kLimit);
}

INSTANTIATE_TEST_SUITE_P(Of, Growth, ::testing::ValuesIn(kRows),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(Growth, OfWhatIsQuadraticIsSeen) {
    EXPECT_GT(growthOf(kQuadratic), kLimit);
}

} // namespace
