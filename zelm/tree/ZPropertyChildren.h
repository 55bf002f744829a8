#pragma once

#include <zelm/text/ZStringView.h>
#include <zelm/tree/PersistentMap.h>

#include <cstddef>
#include <iterator>
#include <memory>
#include <utility>

namespace Zelm::Private {

/// The children of a tree node: shared nodes by name, in byte order of the names whatever the order of
/// insertion. A copy costs one count and shares the nodes; a change costs O(log n), however many copies there
/// are. Children are read-only here; only the node that holds them hands out one to be written (see
/// `ZPropertyTreeNode::ownedChild`).
template <class Key, class Node>
class ZPropertyChildren {
    using Map = PersistentMap<Key, ZStringView, std::shared_ptr<const Node>>;

public:
    using NodePointer = std::shared_ptr<const Node>;

    /// One child, for `for (const auto& [name, node] : children)`.
    struct Entry {
        const Key& name;
        const NodePointer& node;
    };

    class const_iterator {
    public:
        using iterator_category = std::input_iterator_tag;
        using value_type = Entry;
        using difference_type = std::ptrdiff_t;
        using pointer = void;
        using reference = Entry;

        const_iterator() = default;

        Entry operator*() const { return {position_->key, position_->mapped}; }
        const_iterator& operator++() {
            ++position_;
            return *this;
        }
        const_iterator operator++(int) { return const_iterator(position_++); }
        friend bool operator==(const const_iterator& a, const const_iterator& b) {
            return a.position_ == b.position_;
        }
        friend bool operator!=(const const_iterator& a, const const_iterator& b) { return !(a == b); }

    private:
        friend class ZPropertyChildren;
        explicit const_iterator(typename Map::const_iterator position) : position_(position) {}

        typename Map::const_iterator position_;
    };

    bool empty() const noexcept { return map_.empty(); }
    std::size_t size() const noexcept { return map_.size(); }
    const_iterator begin() const noexcept { return const_iterator(map_.begin()); }
    const_iterator end() const noexcept { return const_iterator(map_.end()); }

    /// The child of this name, or null. The pointer holds until any child is stored or erased.
    const NodePointer* find(ZStringView name) const noexcept { return map_.find(name); }

    /// Stores `node` under `name` in place of what was there.
    void insert(const Key& name, NodePointer node) { map_.insert(name, std::move(node)); }

    /// Erases the child of this name, if there is one.
    void erase(ZStringView name) { map_.erase(name); }

private:
    Map map_;
};

} // namespace Zelm::Private
