#include <zelm/tree/ZObject.h>
#include <zelm/tree/ZPropertyTree.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <vector>

using namespace Zelm;

namespace {

using Path = ZPropertyHandle::Path;

std::string text(const ZString& name) {
    return std::string(name.data(), name.size());
}

/// The tree as plain nested maps, copied whole for each version.
struct Model {
    std::optional<int> value;
    std::string type;
    std::map<std::string, Model> children;

    std::size_t count() const {
        std::size_t result = 1;
        for (const auto& [name, child] : children) {
            result += child.count();
        }
        return result;
    }
    Model& at(const Path& path) {
        Model* node = this;
        for (const ZString& name : path) {
            node = &node->children.at(text(name));
        }
        return *node;
    }
};

::testing::AssertionResult agree(const Model& model, const ZPropertyTreeNode& node,
                                 const std::string& where) {
    const bool sameValue = model.value ? node.value().isEquivalentTo(Variant(*model.value))
                                       : node.value().isEquivalentTo(Variant());
    if (!sameValue || text(node.objectType()) != model.type ||
        node.children().size() != model.children.size()) {
        return ::testing::AssertionFailure() << "other node at " << where;
    }
    auto expected = model.children.begin();
    for (const auto& [name, child] : node.children()) {
        if (text(name) != expected->first) {
            return ::testing::AssertionFailure() << "other name at " << where << ": " << text(name);
        }
        if (auto result = agree(expected->second, *child, where + "/" + expected->first); !result) {
            return result;
        }
        ++expected;
    }
    return ::testing::AssertionSuccess();
}

/// Random changes on versions of several lineages, each version with its model beside it.
class History {
public:
    explicit History(unsigned seed) : random_(seed) { begin(); }

    void step() {
        Version next = versions_[pick(versions_.size())];
        const Path path = randomPath(next.model);
        const ZPropertyHandle at(next.tree.basis(), path);
        const ZPropertyHandle changed = change(at, path, next.model);
        countCollisions(at, changed);
        next.tree = ZPropertyHandle(changed.basis());
        if (pick(12) == 0) {
            rebase(next);
        }
        if (next.model.count() > 100 || pick(8) == 0) {
            begin();
        } else {
            keep(std::move(next));
        }
    }

    void checkAll() const {
        for (const Version& version : versions_) {
            ASSERT_TRUE(agree(version.model, version.tree.node(), ""));
        }
    }

    int collisions = 0;

private:
    struct Version {
        ZPropertyHandle tree;
        Model model;
    };

    std::size_t pick(std::size_t count) { return random_() % count; }

    std::string randomName() {
        static const std::vector<std::string> names{"a", "a10", "a2", "\xC3\xA9", "_x", "B", "", "b"};
        return names[pick(names.size())];
    }

    Path randomPath(const Model& model) {
        Path path;
        const Model* node = &model;
        while (!node->children.empty() && pick(3) != 0) {
            const auto child =
                std::next(node->children.begin(), static_cast<std::ptrdiff_t>(pick(node->children.size())));
            path.push_back(child->first);
            node = &child->second;
        }
        return path;
    }

    ZPropertyHandle change(const ZPropertyHandle& at, const Path& path, Model& model) {
        Model& node = model.at(path);
        const std::string name = randomName();
        const ZString key(name);
        const std::size_t kind = pick(7);
        if (kind == 0) {
            node.children.erase(name);
            return at.removeChild(key);
        }
        if (kind == 1) {
            return rename(at, path, model, name);
        }
        if (kind < 5) {
            return kind == 2 ? writeMany(at, node, name) : graft(at, node, name);
        }
        node.children[name] = Model{counter_, "", {}};
        return at.setChildValue(key, counter_++);
    }

    ZPropertyHandle rename(const ZPropertyHandle& at, const Path& path, Model& model,
                           const std::string& name) {
        const ZPropertyHandle renamed = at.rename(ZString(name));
        if (!path.empty()) {
            auto& siblings = model.at({path.begin(), path.end() - 1}).children;
            const Model moved = siblings.at(path.back());
            siblings[name] = moved;
            siblings.erase(path.back());
        } else {
            EXPECT_EQ(text(renamed.getName()), name);
        }
        return renamed;
    }

    ZPropertyHandle graft(const ZPropertyHandle& at, Model& node, const std::string& name) {
        Version& other = versions_[pick(versions_.size())];
        const Path path = randomPath(other.model);
        const ZPropertyHandle grafted(other.tree.basis(), path);
        if (name.empty()) {
            EXPECT_THROW(at.insertChild(ZString(), grafted), std::invalid_argument);
            return at;
        }
        const Model copy = other.model.at(path);
        node.children[name] = copy;
        return at.insertChild(ZString(name), grafted);
    }

    /// Several writes in one version, some of them through a node that another tree brought in.
    ZPropertyHandle writeMany(const ZPropertyHandle& at, Model& node, const std::string& name) {
        Version& other = versions_[pick(versions_.size())];
        const Model copy = other.model;
        const int value = counter_++;
        node.type = "T";
        node.value = value;
        node.children[name].children["deep"] = Model{value, "", {}};
        node.children["graft"] = copy;
        node.children["graft"].children["late"] = Model{value, "", {}};
        return at.changed([&](ZMutablePropertyHandle& self) {
            self.setObjectType("T");
            self.setValue(value);
            self.getOrCreateChild(ZString(name)).setChildValue("deep", value);
            self.attachChild("graft", other.tree).addChildValue("late", value);
        });
    }

    /// What constructing an object on a node does.
    void rebase(Version& version) {
        const Path path = randomPath(version.model);
        const ZPropertyHandle at(version.tree.basis(), path);
        version.tree = ZObject(at, at.getObjectType()).propertyHandle();
        const Model copy = version.model.at(path);
        version.model = copy;
    }

    void begin() {
        ZMutablePropertyTree tree("new");
        tree.handle().addChildValue("a", counter_).setObjectType("A");
        Model model;
        model.children["a"] = Model{counter_++, "A", {}};
        keep({tree.immutableHandle(), std::move(model)});
    }

    void keep(Version version) {
        if (versions_.size() < 24) {
            versions_.push_back(std::move(version));
        } else {
            versions_[pick(versions_.size())] = std::move(version);
        }
    }

    /// Counts the nodes on the changed path that carry the new generation by accident, from another lineage.
    void countCollisions(const ZPropertyHandle& before, const ZPropertyHandle& changed) {
        const Private::ZPropertyVersion version = changed.basis()->root()->version();
        const ZPropertyTreeNode* node = before.basis()->root().get();
        for (const ZString& name : before.path()) {
            node = node->findChild(name);
            collisions += node->generation() == version.generation && node->version() != version;
        }
    }

    std::mt19937 random_;
    std::vector<Version> versions_;
    int counter_ = 0;
};

TEST(PropertyTreeModel, every_version_stays_as_it_was_through_random_histories) {
    int collisions = 0;
    for (unsigned seed = 1; seed <= 8; ++seed) {
        History history(seed);
        for (int round = 0; round < 200; ++round) {
            for (int step = 0; step < 20; ++step) {
                history.step();
            }
            history.checkAll();
            if (HasFatalFailure()) {
                FAIL() << "seed " << seed << ", round " << round;
            }
        }
        collisions += history.collisions;
    }
    EXPECT_GT(collisions, 20) << "the histories must write below grafts of equal generation";
}

} // namespace
