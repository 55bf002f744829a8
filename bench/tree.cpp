// Trees of many children: versions, lookup and walks beside nodes that hold a std::map and copy it on change.

#include "Compare.h"

#include <zelm/tree/ZPropertyTree.h>

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Zelm::Bench {
namespace {

/// The peer's node: what is changed is copied with its map, all other nodes are shared.
struct MapNode {
    double value = 0.0;
    std::map<std::string, std::shared_ptr<const MapNode>> children;
};
using MapTree = std::shared_ptr<const MapNode>;

MapTree leafOf(double value) {
    return std::make_shared<const MapNode>(MapNode{value, {}});
}

MapTree withLeaf(const MapTree& node, const std::string* name, const std::string* last, double value) {
    auto copy = std::make_shared<MapNode>(*node);
    MapTree& child = copy->children[*name];
    child = name == last ? leafOf(value) : withLeaf(child, name + 1, last, value);
    return copy;
}

/// The numbers below are multiplied by a number prime to their count, so that names come in no order.
template <class Name>
std::vector<Name> namesOf(std::size_t count) {
    std::vector<Name> names;
    for (std::size_t i = 0; i < count; ++i) {
        names.push_back(Name("child" + std::to_string(i * 7919 % count)));
    }
    return names;
}

ZPropertyHandle treeOf(const std::vector<ZString>& names) {
    const ZMutablePropertyTree tree("tree");
    ZMutablePropertyHandle root = tree.handle();
    for (std::size_t i = 0; i < names.size(); ++i) {
        root.setChildValue(names[i], static_cast<double>(i));
    }
    return tree.immutableHandle();
}

MapTree mapTreeOf(const std::vector<std::string>& names) {
    auto root = std::make_shared<MapNode>();
    for (std::size_t i = 0; i < names.size(); ++i) {
        root->children.insert_or_assign(names[i], leafOf(static_cast<double>(i)));
    }
    return root;
}

struct SameTree {
    bool operator()(const ZPropertyHandle& ours, const MapTree& peer) const {
        return alike(*ours.basis()->root(), *peer);
    }
    static bool alike(const ZPropertyTreeNode& ours, const MapNode& peer) {
        if (ours.children().size() != peer.children.size() ||
            (peer.children.empty() && ours.value().value<double>() != peer.value)) {
            return false;
        }
        auto expected = peer.children.begin();
        for (const auto& [name, node] : ours.children()) {
            if (ZStringView(name) != expected->first || !alike(*node, *expected->second)) {
                return false;
            }
            ++expected;
        }
        return true;
    }
};

constexpr std::size_t kLevels = 5;

/// `kLevels` levels of `count` children each below one child of the level above; one leaf is changed.
template <std::size_t count>
auto changesOfOurs() {
    const std::vector<ZString> names = namesOf<ZString>(count);
    ZPropertyHandle tree = treeOf(names);
    for (std::size_t level = 1; level < kLevels; ++level) {
        tree = treeOf(names).insertChild(names[count / 2], tree);
    }
    const std::vector<ZString> path(kLevels - 1, names[count / 2]);
    return [parent = ZPropertyHandle(tree.basis(), path), leaf = names[count / 3], value = 0.0]() mutable {
        parent = parent.setChildValue(leaf, value += 1.0);
        return parent;
    };
}

template <std::size_t count>
auto changesOfPeer() {
    const std::vector<std::string> names = namesOf<std::string>(count);
    MapTree tree = mapTreeOf(names);
    for (std::size_t level = 1; level < kLevels; ++level) {
        MapNode above = *mapTreeOf(names);
        above.children[names[count / 2]] = tree;
        tree = std::make_shared<const MapNode>(std::move(above));
    }
    std::vector<std::string> path(kLevels, names[count / 2]);
    path.back() = names[count / 3];
    return [tree, path, value = 0.0]() mutable {
        tree = withLeaf(tree, &path.front(), &path.back(), value += 1.0);
        return tree;
    };
}

const Comparison changeOf10("change a leaf below 5 levels of 10 children / copied maps", 1.0,
                            changesOfOurs<10>, changesOfPeer<10>, SameTree());
const Comparison changeOf100("change a leaf below 5 levels of 100 children / copied maps", 0.15,
                             changesOfOurs<100>, changesOfPeer<100>, SameTree());
const Comparison changeOf10000("change a leaf below 5 levels of 10,000 children / copied maps", 0.003,
                               changesOfOurs<10000>, changesOfPeer<10000>, SameTree());

const Comparison versions(
    "10,000 children by one version each / copied maps", 0.01,
    [] {
        return [names = namesOf<ZString>(10000)] {
            ZPropertyHandle tree = ZMutablePropertyTree("tree").immutableHandle();
            for (std::size_t i = 0; i < names.size(); ++i) {
                tree = tree.setChildValue(names[i], static_cast<double>(i));
            }
            return tree;
        };
    },
    [] {
        return [names = namesOf<std::string>(10000)] {
            MapTree tree = std::make_shared<const MapNode>();
            for (std::size_t i = 0; i < names.size(); ++i) {
                tree = withLeaf(tree, &names[i], &names[i], static_cast<double>(i));
            }
            return tree;
        };
    },
    SameTree());

template <std::size_t count>
auto buildingOfOurs() {
    return [names = namesOf<ZString>(count)] { return treeOf(names); };
}

template <std::size_t count>
auto buildingOfPeer() {
    return [names = namesOf<std::string>(count)] { return mapTreeOf(names); };
}

const Comparison buildingOf10("10 children in one version / std::map", kNoGoal, buildingOfOurs<10>,
                              buildingOfPeer<10>, SameTree());
const Comparison buildingOf10000("10,000 children in one version / std::map", kNoGoal, buildingOfOurs<10000>,
                                 buildingOfPeer<10000>, SameTree());

template <std::size_t count>
auto lookupInOurs() {
    return [tree = treeOf(namesOf<ZString>(count)), names = namesOf<ZString>(count)] {
        std::size_t found = 0;
        for (const ZString& name : names) {
            found += tree.node().findChild(name) != nullptr;
        }
        return found;
    };
}

template <std::size_t count>
auto lookupInPeer() {
    return [tree = mapTreeOf(namesOf<std::string>(count)), names = namesOf<std::string>(count)] {
        std::size_t found = 0;
        for (const std::string& name : names) {
            found += tree->children.find(name) != tree->children.end();
        }
        return found;
    };
}

const Comparison lookupIn10("look up each of 10 children / std::map", kNoGoal, lookupInOurs<10>,
                            lookupInPeer<10>);
const Comparison lookupIn10000("look up each of 10,000 children / std::map", kNoGoal, lookupInOurs<10000>,
                               lookupInPeer<10000>);

const Comparison walk(
    "walk over 10,000 children / std::map", kNoGoal,
    [] {
        return [tree = treeOf(namesOf<ZString>(10000))] {
            std::size_t sum = 0;
            for (const auto& [name, node] : tree.node().children()) {
                sum += name.size() + node->children().size();
            }
            return sum;
        };
    },
    [] {
        return [tree = mapTreeOf(namesOf<std::string>(10000))] {
            std::size_t sum = 0;
            for (const auto& [name, node] : tree->children) {
                sum += name.size() + node->children.size();
            }
            return sum;
        };
    });

} // namespace
} // namespace Zelm::Bench
