#pragma once

#include <zelm/text/ZString.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <new>
#include <type_traits>
#include <utility>

namespace Zelm::Private {

/// An ordered map whose copies share what they have in common: a copy costs one count, and a change of one
/// copies no more than a few chunks for each level, whatever the size; the other does not notice.
///
/// It is a B+-tree. Leaves hold the entries; forks above them hold leaves or forks, all of one height, and
/// for each but the first a key that bounds what lies below it. Chunks are counted. One that nobody else
/// holds, and that only such chunks lead to, is changed in place.
///
/// Costs: lookup, insertion and erasure O(log n), a copy and the size O(1), a walk over all entries O(n) with
/// no memory of its own. An empty map is one null pointer. Destruction is linear and does not recurse, even
/// if mapped values hold maps of the same type in turn, however deep.
///
/// Threads: maps that share chunks may be used from different threads freely. One map may be read by several
/// threads at once; changing it needs the usual exclusion.
///
/// If memory runs out, `std::bad_alloc` leaves the map as it was.
///
/// `View` is what keys are sought by: a `Key` converts to it, and `View::compare(View)` is negative, zero or
/// positive. A view stays valid if the key that it shows is moved.
template <class Key, class View, class Mapped>
class PersistentMap {
    static_assert(std::is_nothrow_copy_constructible_v<Key> && std::is_nothrow_copy_constructible_v<Mapped>);
    static_assert(std::is_nothrow_move_constructible_v<Key> && std::is_nothrow_move_constructible_v<Mapped>);

    struct Chunk;
    template <class Slot>
    struct Block;

public:
    struct Entry {
        Key key;
        Mapped mapped;
    };

    /// Knows its place by number, so that it needs no stack: where a leaf ends, the next one is sought from
    /// the root. It does not keep the map alive, and holds until the map is changed.
    class const_iterator {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = Entry;
        using difference_type = std::ptrdiff_t;
        using pointer = const Entry*;
        using reference = const Entry&;

        const_iterator() = default;

        reference operator*() const { return (*leaf_)[index_]; }
        pointer operator->() const { return &**this; }
        const_iterator& operator++() {
            ++rank_;
            if (++index_ == leaf_->count) {
                seek();
            }
            return *this;
        }
        const_iterator operator++(int) {
            const const_iterator before = *this;
            ++*this;
            return before;
        }
        friend bool operator==(const const_iterator& a, const const_iterator& b) {
            return a.rank_ == b.rank_;
        }
        friend bool operator!=(const const_iterator& a, const const_iterator& b) { return !(a == b); }

    private:
        friend class PersistentMap;
        const_iterator(const Chunk* root, std::size_t rank) : root_(root), rank_(rank) {}

        void seek();

        const Chunk* root_ = nullptr;
        std::size_t rank_ = 0;
        const Block<Entry>* leaf_ = nullptr;
        unsigned index_ = 0;
    };

    bool empty() const noexcept { return !root_; }
    std::size_t size() const noexcept { return root_ ? root_->size : 0; }
    const_iterator begin() const noexcept {
        const_iterator first(root_.get(), 0);
        first.seek();
        return first;
    }
    const_iterator end() const noexcept { return const_iterator(root_.get(), size()); }

    /// The value of `key`, or null. The pointer holds until the map is changed.
    const Mapped* find(View key) const noexcept;
    /// Stores `mapped` under `key`. A key that is there already stays and gets the new value.
    void insert(const Key& key, Mapped mapped);
    /// Erases the entry of `key`, if there is one.
    void erase(View key);

private:
    /// The most slots of a chunk: small enough to be copied for one change, large enough to keep the tree
    /// low.
    static constexpr unsigned kMost = 16;
    /// A chunk of that many slots is made larger before anything below it is erased. Well below half of the
    /// most, so that no chunk is split and joined in turns.
    static constexpr unsigned kFew = 4;
    /// Heights are below this: a fork has at least two branches.
    static constexpr unsigned kHeights = 64;

    /// Owns one count of a chunk, or nothing.
    class Share {
    public:
        Share() noexcept = default;
        /// Takes over the count that a new chunk starts with.
        explicit Share(Chunk* chunk) noexcept : chunk_(chunk) {}
        Share(const Share& other) noexcept : chunk_(other.chunk_) {
            if (chunk_) {
                chunk_->addReference();
            }
        }
        Share(Share&& other) noexcept : chunk_(std::exchange(other.chunk_, nullptr)) {}
        Share& operator=(Share other) noexcept {
            std::swap(chunk_, other.chunk_);
            return *this;
        }
        ~Share() {
            if (chunk_ && chunk_->dropsLastReference()) {
                discard(chunk_);
            }
        }

        explicit operator bool() const noexcept { return chunk_ != nullptr; }
        Chunk* get() const noexcept { return chunk_; }
        Chunk* operator->() const noexcept { return chunk_; }

    private:
        Chunk* chunk_ = nullptr;
    };

    /// A slot of a fork. No key below `chunk` is less than `key`; that of a fork's first branch is not looked
    /// at.
    struct Branch {
        Key key;
        Share chunk;
    };

    struct Chunk {
        Chunk(unsigned ownHeight, unsigned ownCapacity) noexcept
            : height(static_cast<std::uint8_t>(ownHeight)), capacity(static_cast<std::uint8_t>(ownCapacity)) {
        }

        void addReference() noexcept { Zelm::details::addOwner(references); }
        bool dropsLastReference() noexcept { return isHeldOnce() || Zelm::details::removeOwner(references); }
        /// Acquire: what other holders have read before they let go has to come before our writing.
        bool isHeldOnce() const noexcept { return references.load(std::memory_order_acquire) == 1; }

        std::atomic<std::uint32_t> references{1};
        /// 0 for a leaf.
        const std::uint8_t height;
        const std::uint8_t capacity;
        /// Slots in use.
        std::uint8_t count = 0;
        union {
            /// Entries in all leaves below, or in this leaf.
            std::size_t size = 0;
            /// The next one to be destroyed, once nobody holds this any more.
            Chunk* next;
        };
    };

    /// A chunk with its slots, which stand right behind it.
    template <class Slot>
    struct Block : Chunk {
        using Chunk::Chunk;

        Slot* at(unsigned index) noexcept { return reinterpret_cast<Slot*>(this + 1) + index; }
        Slot& operator[](unsigned index) noexcept { return *at(index); }
        const Slot& operator[](unsigned index) const noexcept {
            return reinterpret_cast<const Slot*>(this + 1)[index];
        }

        void insert(unsigned index, Slot slot) noexcept {
            open(index, 1);
            new (at(index)) Slot(std::move(slot));
        }
        void erase(unsigned index) noexcept {
            at(index)->~Slot();
            close(index, 1);
        }
        /// Moves `n` slots of `source` to `index`.
        void take(unsigned index, Block& source, unsigned first, unsigned n) noexcept {
            open(index, n);
            for (unsigned i = 0; i < n; ++i) {
                relocate(source.at(first + i), at(index + i));
            }
            source.close(first, n);
        }

        static void relocate(Slot* from, Slot* to) noexcept {
            new (to) Slot(std::move(*from));
            from->~Slot();
        }
        /// Makes room for `n` slots, which are to be constructed.
        void open(unsigned index, unsigned n) noexcept {
            for (unsigned i = this->count; i > index; --i) {
                relocate(at(i - 1), at(i - 1 + n));
            }
            this->count = static_cast<std::uint8_t>(this->count + n);
        }
        /// Closes the gap of `n` slots that have been destroyed.
        void close(unsigned index, unsigned n) noexcept {
            for (unsigned i = index + n; i < this->count; ++i) {
                relocate(at(i), at(i - n));
            }
            this->count = static_cast<std::uint8_t>(this->count - n);
        }
    };
    using Leaf = Block<Entry>;
    using Fork = Block<Branch>;

    static Leaf& leafOf(Chunk* chunk) noexcept { return static_cast<Leaf&>(*chunk); }
    static Fork& forkOf(Chunk* chunk) noexcept { return static_cast<Fork&>(*chunk); }

    /// Where a key was sought: the slot in the chunk of each height.
    struct Way {
        const Leaf* leaf;
        bool found;
        /// How many chunks at the end of the way are full, one above the other.
        unsigned full = 0;
        std::uint8_t slot[kHeights];

        template <class Slot>
        void pass(const Block<Slot>& block, unsigned index) noexcept {
            slot[block.height] = static_cast<std::uint8_t>(index);
            full = block.count == kMost ? full + 1 : 0;
        }
    };

    struct Place {
        unsigned index;
        bool found;
    };

    template <class Slot>
    static Place search(const Block<Slot>& block, unsigned from, View key) noexcept;
    static unsigned branchFor(const Fork& fork, View key) noexcept;
    Way locate(View key) const noexcept;

    template <class Slot>
    static Share makeBlock(unsigned height, unsigned room);
    template <class Slot>
    static Block<Slot>& writable(Share& share, unsigned room);
    Entry& writableEntry(const Way& way);

    static Branch insertBelow(Share& share, const Way& way, Entry& entry);
    template <class Slot>
    static Branch place(Block<Slot>& block, Share right, unsigned index, Slot slot) noexcept;
    static Mapped eraseBelow(Share& share, View key);
    template <class Slot>
    static void joinNeighbours(Fork& fork, unsigned left);

    /// The key that bounds a right neighbour. A fork's own first key is of no more use to it.
    static Key boundOf(Leaf& leaf) noexcept { return leaf[0].key; }
    static Key boundOf(Fork& fork) noexcept { return std::move(fork[0].key); }
    static void giveBackBound(Leaf&, Key&) noexcept {}
    static void giveBackBound(Fork& fork, Key& bound) noexcept { fork[0].key = std::move(bound); }
    static void measure(Leaf& leaf) noexcept { leaf.size = leaf.count; }
    static void measure(Fork& fork) noexcept;

    static void discard(Chunk* chunk) noexcept;
    template <class Slot>
    static void destroy(Block<Slot>& block) noexcept;

    static inline thread_local Chunk* s_discarded = nullptr;
    static inline thread_local bool s_isDiscarding = false;

    Share root_;
};

template <class Key, class View, class Mapped>
void PersistentMap<Key, View, Mapped>::const_iterator::seek() {
    if (!root_ || rank_ == root_->size) {
        return;
    }
    std::size_t rank = rank_;
    const Chunk* chunk = root_;
    while (chunk->height > 0) {
        const Fork& fork = static_cast<const Fork&>(*chunk);
        unsigned branch = 0;
        while (rank >= fork[branch].chunk->size) {
            rank -= fork[branch].chunk->size;
            ++branch;
        }
        chunk = fork[branch].chunk.get();
    }
    leaf_ = static_cast<const Leaf*>(chunk);
    index_ = static_cast<unsigned>(rank);
}

/// The first slot at or after `from` whose key is not less than `key`, and whether it is equal.
template <class Key, class View, class Mapped>
template <class Slot>
auto PersistentMap<Key, View, Mapped>::search(const Block<Slot>& block, unsigned from, View key) noexcept
    -> Place {
    unsigned end = block.count;
    while (from < end) {
        const unsigned middle = (from + end) / 2;
        const int order = View(block[middle].key).compare(key);
        if (order == 0) {
            return {middle, true};
        }
        if (order < 0) {
            from = middle + 1;
        } else {
            end = middle;
        }
    }
    return {from, false};
}

template <class Key, class View, class Mapped>
unsigned PersistentMap<Key, View, Mapped>::branchFor(const Fork& fork, View key) noexcept {
    const Place place = search(fork, 1, key);
    return place.found ? place.index : place.index - 1;
}

/// Seeks `key` in a map that is not empty.
template <class Key, class View, class Mapped>
auto PersistentMap<Key, View, Mapped>::locate(View key) const noexcept -> Way {
    Way way;
    const Chunk* chunk = root_.get();
    while (chunk->height > 0) {
        const Fork& fork = static_cast<const Fork&>(*chunk);
        const unsigned branch = branchFor(fork, key);
        way.pass(fork, branch);
        chunk = fork[branch].chunk.get();
    }
    way.leaf = static_cast<const Leaf*>(chunk);
    const Place place = search(*way.leaf, 0, key);
    way.pass(*way.leaf, place.index);
    way.found = place.found;
    return way;
}

template <class Key, class View, class Mapped>
const Mapped* PersistentMap<Key, View, Mapped>::find(View key) const noexcept {
    if (!root_) {
        return nullptr;
    }
    const Way way = locate(key);
    return way.found ? &(*way.leaf)[way.slot[0]].mapped : nullptr;
}

/// A new chunk for at least `room` slots. Capacities double, so that a small map takes little memory and a
/// growing one few moves.
template <class Key, class View, class Mapped>
template <class Slot>
auto PersistentMap<Key, View, Mapped>::makeBlock(unsigned height, unsigned room) -> Share {
    unsigned capacity = 1;
    while (capacity < room) {
        capacity *= 2;
    }
    void* const memory = ::operator new(sizeof(Block<Slot>) + capacity * sizeof(Slot));
    return Share(new (memory) Block<Slot>(height, capacity));
}

/// The chunk of `share`, replaced by a copy if somebody else holds it or if it has no room for `room` slots.
template <class Key, class View, class Mapped>
template <class Slot>
auto PersistentMap<Key, View, Mapped>::writable(Share& share, unsigned room) -> Block<Slot>& {
    static_assert(sizeof(Chunk) % alignof(Slot) == 0);
    Block<Slot>& old = static_cast<Block<Slot>&>(*share.get());
    const bool isOurs = old.isHeldOnce();
    if (isOurs && room <= old.capacity) {
        return old;
    }
    Share fresh = makeBlock<Slot>(old.height, room);
    Block<Slot>& copy = static_cast<Block<Slot>&>(*fresh.get());
    copy.size = old.size;
    if (isOurs) {
        copy.take(0, old, 0, old.count);
    } else {
        for (; copy.count < old.count; ++copy.count) {
            new (copy.at(copy.count)) Slot(old[copy.count]);
        }
    }
    share = std::move(fresh);
    return copy;
}

template <class Key, class View, class Mapped>
auto PersistentMap<Key, View, Mapped>::writableEntry(const Way& way) -> Entry& {
    Share* share = &root_;
    while ((*share)->height > 0) {
        Fork& fork = writable<Branch>(*share, (*share)->count);
        share = &fork[way.slot[fork.height]].chunk;
    }
    return writable<Entry>(*share, (*share)->count)[way.slot[0]];
}

template <class Key, class View, class Mapped>
void PersistentMap<Key, View, Mapped>::insert(const Key& key, Mapped mapped) {
    if (!root_) {
        root_ = makeBlock<Entry>(0, 1);
        leafOf(root_.get()).insert(0, Entry{key, std::move(mapped)});
        measure(leafOf(root_.get()));
        return;
    }
    const Way way = locate(key);
    if (way.found) {
        std::swap(writableEntry(way).mapped, mapped);
        return;
    }
    Entry entry{key, std::move(mapped)};
    const bool grows = way.full > root_->height;
    Share top = grows ? makeBlock<Branch>(root_->height + 1u, 2) : Share();
    Branch right = insertBelow(root_, way, entry);
    if (grows) {
        Fork& fork = forkOf(top.get());
        fork.insert(0, Branch{Key(), std::move(root_)});
        fork.insert(1, std::move(right));
        measure(fork);
        root_ = std::move(top);
    }
}

/// Inserts `entry` below `share`, and gives back the right half if its chunk was split. All memory is taken
/// on the way down, all changes are made on the way up: a failure leaves the entries as they were.
template <class Key, class View, class Mapped>
auto PersistentMap<Key, View, Mapped>::insertBelow(Share& share, const Way& way, Entry& entry) -> Branch {
    const unsigned height = share->height;
    const unsigned index = way.slot[height];
    const bool splits = height < way.full;
    const bool grows = height <= way.full && !splits;
    const unsigned room = share->count + (grows ? 1u : 0u);
    if (height == 0) {
        Leaf& leaf = writable<Entry>(share, room);
        Share right = splits ? makeBlock<Entry>(height, kMost) : Share();
        return place(leaf, std::move(right), index, std::move(entry));
    }
    Fork& fork = writable<Branch>(share, room);
    Share right = splits ? makeBlock<Branch>(height, kMost) : Share();
    Branch split = insertBelow(fork[index].chunk, way, entry);
    ++fork.size;
    return split.chunk ? place(fork, std::move(right), index + 1, std::move(split)) : Branch();
}

/// Inserts `slot` at `index`. If there is a chunk `right`, the full `block` is split, and `right` takes its
/// upper half; or little of it if `slot` comes last, so that entries that arrive in order fill their chunks.
template <class Key, class View, class Mapped>
template <class Slot>
auto PersistentMap<Key, View, Mapped>::place(Block<Slot>& block, Share right, unsigned index,
                                             Slot slot) noexcept -> Branch {
    if (!right) {
        block.insert(index, std::move(slot));
        if constexpr (std::is_same_v<Slot, Entry>) {
            measure(block);
        }
        return Branch();
    }
    Block<Slot>& upper = static_cast<Block<Slot>&>(*right.get());
    const unsigned kept = index == kMost ? kMost - 1 : kMost / 2;
    upper.take(0, block, kept, kMost - kept);
    if (index > kept) {
        upper.insert(index - kept, std::move(slot));
    } else {
        block.insert(index, std::move(slot));
    }
    measure(block);
    measure(upper);
    return Branch{boundOf(upper), std::move(right)};
}

template <class Key, class View, class Mapped>
void PersistentMap<Key, View, Mapped>::erase(View key) {
    if (!find(key)) {
        return;
    }
    const Mapped erased = eraseBelow(root_, key);
    while (root_->height > 0 && root_->count == 1) {
        root_ = Share(forkOf(root_.get())[0].chunk);
    }
    if (root_->count == 0) {
        root_ = Share();
    }
}

/// Erases the entry of `key`, which is there, and gives back its value. Each step down, chunks with few slots
/// are joined with a neighbour before anything is erased, which a failure may leave so.
template <class Key, class View, class Mapped>
Mapped PersistentMap<Key, View, Mapped>::eraseBelow(Share& share, View key) {
    const unsigned height = share->height;
    if (height == 0) {
        Leaf& leaf = writable<Entry>(share, share->count);
        const unsigned index = search(leaf, 0, key).index;
        Mapped erased = std::move(leaf[index].mapped);
        leaf.erase(index);
        measure(leaf);
        return erased;
    }
    Fork& fork = writable<Branch>(share, share->count);
    unsigned branch = branchFor(fork, key);
    // A single branch is what an earlier failure has left.
    if (fork[branch].chunk->count <= kFew && fork.count > 1) {
        const unsigned left = branch > 0 ? branch - 1 : 0;
        height == 1 ? joinNeighbours<Entry>(fork, left) : joinNeighbours<Branch>(fork, left);
        branch = branchFor(fork, key);
    }
    Mapped erased = eraseBelow(fork[branch].chunk, key);
    --fork.size;
    return erased;
}

/// Makes one of the chunks `left` and `left + 1` of a fork, or shares their slots out evenly if they are too
/// many for one.
template <class Key, class View, class Mapped>
template <class Slot>
void PersistentMap<Key, View, Mapped>::joinNeighbours(Fork& fork, unsigned left) {
    Block<Slot>& lower = writable<Slot>(fork[left].chunk, kMost);
    Block<Slot>& upper = writable<Slot>(fork[left + 1].chunk, kMost);
    giveBackBound(upper, fork[left + 1].key);
    const unsigned total = lower.count + upper.count;
    const unsigned kept = total <= kMost ? total : total / 2;
    if (lower.count < kept) {
        lower.take(lower.count, upper, 0, kept - lower.count);
    } else {
        upper.take(0, lower, kept, lower.count - kept);
    }
    measure(lower);
    if (upper.count == 0) {
        fork.erase(left + 1);
    } else {
        measure(upper);
        fork[left + 1].key = boundOf(upper);
    }
}

template <class Key, class View, class Mapped>
void PersistentMap<Key, View, Mapped>::measure(Fork& fork) noexcept {
    fork.size = 0;
    for (unsigned i = 0; i < fork.count; ++i) {
        fork.size += fork[i].chunk->size;
    }
}

/// Destroys a chunk that nobody holds any more. What it sets off in turn is left to the outermost call on
/// this thread, or deep structures would overflow the stack.
template <class Key, class View, class Mapped>
void PersistentMap<Key, View, Mapped>::discard(Chunk* chunk) noexcept {
    chunk->next = std::exchange(s_discarded, chunk);
    if (s_isDiscarding) {
        return;
    }
    s_isDiscarding = true;
    while (s_discarded) {
        Chunk* const next = std::exchange(s_discarded, s_discarded->next);
        next->height == 0 ? destroy(leafOf(next)) : destroy(forkOf(next));
    }
    s_isDiscarding = false;
}

template <class Key, class View, class Mapped>
template <class Slot>
void PersistentMap<Key, View, Mapped>::destroy(Block<Slot>& block) noexcept {
    for (unsigned i = 0; i < block.count; ++i) {
        block.at(i)->~Slot();
    }
    block.~Block();
    ::operator delete(static_cast<void*>(&block));
}

} // namespace Zelm::Private
