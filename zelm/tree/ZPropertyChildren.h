#pragma once

#include <zelm/text/ZStringView.h>

#include <cstddef>
#include <iterator>
#include <map>
#include <memory>
#include <utility>

namespace Zelm::Private {

/// Orders names by their bytes.
struct ZPropertyNameOrder {
    using is_transparent = void;
    bool operator()(ZStringView a, ZStringView b) const { return a.compare(b) < 0; }
};

/// The children of a tree node: shared nodes by name, in byte order of the names whatever the order of
/// insertion. A copy shares the nodes. Children are read-only here; only the node that holds them hands out
/// one to be written (see `ZPropertyTreeNode::ownedChild`).
template <class Key, class Node>
class ZPropertyChildren {
    using Map = std::map<Key, std::shared_ptr<const Node>, ZPropertyNameOrder>;

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

        Entry operator*() const { return {position_->first, position_->second}; }
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

    /// The child of this name, or null. The pointer holds until the child is replaced or erased.
    const NodePointer* find(ZStringView name) const {
        const auto position = map_.find(name);
        return position == map_.end() ? nullptr : &position->second;
    }

    /// Stores `node` under `name` in place of what was there.
    void insert(const Key& name, NodePointer node) { map_.insert_or_assign(name, std::move(node)); }

    /// Erases the child of this name, if there is one.
    void erase(ZStringView name) {
        const auto position = map_.find(name);
        if (position != map_.end()) {
            map_.erase(position);
        }
    }

private:
    Map map_;
};

} // namespace Zelm::Private
