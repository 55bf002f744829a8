#include <zelm/tree/ZObject.h>
#include <zelm/tree/ZPropertyTree.h>

#include <gtest/gtest.h>

#include <map>
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
    Variant value;
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

bool agree(const Model& model, const ZPropertyTreeNode& node) {
    auto expected = model.children.begin();
    for (const auto& [name, child] : node.children()) {
        if (expected == model.children.end() || text(name) != expected->first ||
            !agree(expected->second, *child)) {
            return false;
        }
        ++expected;
    }
    return expected == model.children.end() && text(node.objectType()) == model.type &&
           node.value().isEquivalentTo(model.value);
}

struct Version {
    ZPropertyHandle tree;
    Model model;
};

/// Random changes on versions of several lineages, each version with its model beside it.
class History {
public:
    explicit History(unsigned seed) : random_(seed) {
        for (Version& version : versions_) {
            version = fresh();
        }
    }

    void step() {
        Version next = any();
        const ZPropertyHandle at = randomPlace(next);
        const ZPropertyHandle changed = change(at, next.model);
        countCollisions(at, changed);
        next.tree = ZPropertyHandle(changed.basis());
        if (pick(12) == 0) {
            // What constructing an object on a node does.
            const ZPropertyHandle place = randomPlace(next);
            next = {ZObject(place, place.getObjectType()).propertyHandle(), next.model.at(place.path())};
        }
        any() = next.model.count() > 100 || pick(8) == 0 ? fresh() : std::move(next);
    }

    void checkAll() const {
        for (const Version& version : versions_) {
            ASSERT_TRUE(agree(version.model, version.tree.node()));
        }
    }

    int collisions = 0;

private:
    std::size_t pick(std::size_t count) { return random_() % count; }
    Version& any() { return versions_[pick(versions_.size())]; }

    Version fresh() {
        ZMutablePropertyTree tree("new");
        tree.handle().addChildValue("a", ++counter_).setObjectType("A");
        return {tree.immutableHandle(), Model{{}, "", {{"a", Model{counter_, "A", {}}}}}};
    }

    ZPropertyHandle randomPlace(const Version& version) {
        Path path;
        const Model* node = &version.model;
        while (!node->children.empty() && pick(3) != 0) {
            const auto step = static_cast<std::ptrdiff_t>(pick(node->children.size()));
            const auto child = std::next(node->children.begin(), step);
            path.push_back(child->first);
            node = &child->second;
        }
        return ZPropertyHandle(version.tree.basis(), path);
    }

    ZPropertyHandle change(const ZPropertyHandle& at, Model& model) {
        static const std::vector<std::string> names{"a", "a10", "a2", "\xC3\xA9", "_x", "B", "", "b"};
        const std::string name = names[pick(names.size())];
        const ZString key(name);
        Model& node = model.at(at.path());
        Version other = any();
        switch (pick(6)) {
        case 0:
            node.children.erase(name);
            return at.removeChild(key);
        case 1:
            if (!at.path().empty()) {
                auto& siblings = model.at(at.parentPath()).children;
                siblings[name] = Model(node);
                siblings.erase(text(at.getName()));
            }
            return at.rename(key);
        case 2:
            return writeMany(at, node, name, other);
        case 3: {
            const ZPropertyHandle graft = randomPlace(other);
            node.children["g" + name] = other.model.at(graft.path());
            return at.insertChild("g" + key, graft);
        }
        default:
            node.children[name] = Model{++counter_, "", {}};
            return at.setChildValue(key, counter_);
        }
    }

    /// Several writes in one version, some of them through a node that another tree brought in.
    ZPropertyHandle writeMany(const ZPropertyHandle& at, Model& node, const std::string& name,
                              const Version& other) {
        node.type = "T";
        node.value = ++counter_;
        node.children[name].children["deep"] = Model{counter_, "", {}};
        node.children["graft"] = other.model;
        node.children["graft"].children["late"] = Model{counter_, "", {}};
        return at.changed([&](ZMutablePropertyHandle& self) {
            self.setObjectType("T");
            self.setValue(counter_);
            self.getOrCreateChild(ZString(name)).setChildValue("deep", counter_);
            self.attachChild("graft", other.tree).addChildValue("late", counter_);
        });
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
    std::vector<Version> versions_ = std::vector<Version>(24);
    int counter_ = 0;
};

TEST(PropertyTreeModel, every_version_stays_as_it_was_through_random_histories) {
    int collisions = 0;
    for (unsigned seed = 1; seed <= 8 && !HasFatalFailure(); ++seed) {
        History history(seed);
        for (int step = 1; step <= 4000 && !HasFatalFailure(); ++step) {
            history.step();
            if (step % 20 == 0) {
                history.checkAll();
            }
        }
        collisions += history.collisions;
    }
    EXPECT_GT(collisions, 20) << "the histories must write below grafts of equal generation";
}

} // namespace
