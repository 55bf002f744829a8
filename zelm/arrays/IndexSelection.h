#pragma once

#include <zelm/arrays/IndexSet.h>

#include <cstdint>
#include <typeinfo>
#include <utility>
#include <vector>

namespace Zelm::details {

/// The numbers `first`, `first + step`, ..., `count` of them.
struct IndexRun {
    std::uint64_t first = 0;
    std::uint64_t step = 1;
    std::uint64_t count = 0;

    std::uint64_t last() const noexcept { return first + (count - 1) * step; }

    /// Writes the numbers to `out` and returns the place behind them.
    std::uint64_t* writeTo(std::uint64_t* out) const noexcept {
        std::uint64_t next = first;
        for (std::uint64_t i = 0; i < count; ++i, next += step) {
            out[i] = next;
        }
        return out + count;
    }
};

/// The item if it is of the class `Item` itself, so that what it does is known without asking it. Types are
/// told by address: should there be a second copy of one, its items are asked as those of users are, with the
/// same outcome.
template <class Item>
const Item* exactly(const IndexItem& item) noexcept {
    return &typeid(item) == &typeid(Item) ? static_cast<const Item*>(&item) : nullptr;
}

/// @throws std::length_error "vector<T> too long", always.
[[noreturn]] void throwVectorTooLong();

/// The indices of a range over a dimension of that extent, without a list of them. Fails as
/// `IndexRange::values` does.
IndexRun runOf(const IndexRange& range, std::uint64_t extent);

/// The indices of one dimension that an `IndexSet` selects: ascending, without doubles, and stored as runs.
/// A selection that is one run, as a single index or a range is, takes no memory and no loop.
class IndexSelection {
public:
    /// @throws what the `values` of the items throw, in the order of the items.
    IndexSelection(const IndexSet& set, std::uint64_t extent);

    /// The number of indices.
    std::uint64_t size() const noexcept { return size_; }
    bool isOneRun() const noexcept { return runs_.empty(); }

    /// The indices as a list.
    std::vector<std::uint64_t> list() const;

    /// The runs, ascending.
    const IndexRun* begin() const noexcept { return isOneRun() ? &only_ : runs_.data(); }
    const IndexRun* end() const noexcept { return isOneRun() ? &only_ + 1 : runs_.data() + runs_.size(); }
    IndexRun* begin() noexcept { return const_cast<IndexRun*>(std::as_const(*this).begin()); }
    IndexRun* end() noexcept { return const_cast<IndexRun*>(std::as_const(*this).end()); }

private:
    void setOnly(const IndexRun& run) noexcept;
    void setSorted(const std::vector<std::uint64_t>& indices);

    IndexRun only_;
    std::uint64_t size_;
    std::vector<IndexRun> runs_;
};

} // namespace Zelm::details
