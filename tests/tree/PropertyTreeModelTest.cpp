#include <zelm/tree/ZObject.h>
#include <zelm/tree/ZPropertyTree.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <vector>

using namespace Zelm;

namespace {

std::string text(const ZString& name) {
    return std::string(name.data(), name.size());
}

/// The tree as plain nested maps, copied whole for each version.
struct Model {
    Variant value;
    std::string type;
    std::map<std::string, Model> children;

    Model& at(const ZPropertyHandle::Path& path) {
        Model* node = this;
        for (const ZString& name : path) {
            node = &node->children.at(text(name));
        }
        return *node;
    }
};

bool agree(const Model& model, const ZPropertyTreeNode& node) {
    const auto sameChild = [](const auto& child, const auto& expected) {
        return text(child.name) == expected.first && agree(expected.second, *child.node);
    };
    return text(node.objectType()) == model.type && node.value().isEquivalentTo(model.value) &&
           std::equal(node.children().begin(), node.children().end(), model.children.begin(),
                      model.children.end(), sameChild);
}

/// A tree, what it must hold, and about how many nodes it has.
struct Version {
    ZPropertyHandle tree;
    Model model;
    std::size_t size = 2;
};

/// Random changes on versions of several lineages.
struct History {
    std::mt19937 random;
    std::vector<Version> versions;
    int counter = 0;
    int collisions = 0;

    std::size_t pick(std::size_t count) { return random() % count; }

    Version fresh() {
        ZMutablePropertyTree tree("new");
        tree.handle().addChildValue("a", ++counter).setObjectType("A");
        return {tree.immutableHandle(), {{}, "", {{"a", {counter, "A", {}}}}}};
    }

    ZPropertyHandle randomPlace(ZPropertyHandle place) {
        while (place.begin() != place.end() && pick(3) != 0) {
            place = *std::next(place.begin(), static_cast<int>(pick(place.childrenCopy().size())));
        }
        return ZPropertyHandle(place.basis(), place.path());
    }

    ZPropertyHandle change(const ZPropertyHandle& at, Version& version, const std::string& name) {
        const ZString key(name);
        const Version other = versions[pick(versions.size())];
        const ZPropertyHandle graft = randomPlace(other.tree);
        Model& node = version.model.at(at.path());
        version.size += 1;
        switch (pick(6)) {
        case 0:
            node.children.erase(name);
            return at.removeChild(key);
        case 1:
            if (!at.path().empty()) {
                auto& siblings = version.model.at(at.parentPath()).children;
                siblings[name] = Model(node);
                siblings.erase(text(at.getName()));
            }
            return at.rename(key);
        case 2:
            node.children["g" + name] = Model(other.model).at(graft.path());
            version.size += other.size;
            return at.insertChild("g" + key, graft);
        case 3:
            node = {++counter, "T", node.children};
            node.children[name].children["deep"] = {counter, "", {}};
            node.children["graft"] = other.model;
            node.children["graft"].children["late"] = {counter, "", {}};
            version.size += other.size;
            return at.changed([&](ZMutablePropertyHandle& self) {
                self.setObjectType("T");
                self.setValue(counter);
                self.getOrCreateChild(key).setChildValue("deep", counter);
                self.attachChild("graft", other.tree).addChildValue("late", counter);
            });
        default:
            node.children[name] = {++counter, "", {}};
            return at.setChildValue(key, counter);
        }
    }

    void step() {
        static const std::vector<std::string> names{"a", "a10", "a2", "\xC3\xA9", "_x", "B", "", "b"};
        Version next = versions[pick(versions.size())];
        const ZPropertyHandle at = randomPlace(next.tree);
        next.tree = ZPropertyHandle(change(at, next, names[pick(names.size())]).basis());
        const Private::ZPropertyVersion version = next.tree.node().version();
        collisions += at.node().generation() == version.generation && at.node().version() != version;
        if (pick(12) == 0) {
            // What constructing an object on a node does.
            const ZPropertyHandle place = randomPlace(next.tree);
            next.tree = ZObject(place, place.getObjectType()).propertyHandle();
            next.model = Model(next.model.at(place.path()));
        }
        versions[pick(versions.size())] = next.size > 100 || pick(8) == 0 ? fresh() : std::move(next);
    }
};

TEST(PropertyTreeModel, every_version_stays_as_it_was_through_random_histories) {
    History history;
    history.versions.assign(24, history.fresh());
    for (int step = 1; step <= 30000; ++step) {
        history.step();
        for (const Version& version : history.versions) {
            ASSERT_TRUE(step % 20 || agree(version.model, version.tree.node())) << step;
        }
    }
    EXPECT_GT(history.collisions, 20) << "the histories must write grafts of equal generation";
}

} // namespace
