#pragma once

#include <zelm/Export.h>
#include <zelm/arrays/IndexItem.h>

#include <cstdint>
#include <memory>
#include <set>
#include <type_traits>
#include <vector>

namespace Zelm {

namespace details {
class IndexSelection;
}

/// The indices meant in one dimension, told by any number of items. Items may overlap and stand in any
/// order: the set of indices is their union. The set owns copies of its items.
class ZELM_EXPORT IndexSet {
public:
    /// No items: valid for every extent, and selects nothing.
    IndexSet() noexcept = default;

    /// The given items, copied. A single item converts to a set, so `{IndexRange::all, IndexValue(1, false)}`
    /// is a list of two sets.
    template <class... Items, class = std::enable_if_t<(sizeof...(Items) > 0) &&
                                                       (std::is_base_of_v<IndexItem, Items> && ...)>>
    IndexSet(const Items&... items) {
        items_.reserve(sizeof...(Items));
        (add(items), ...);
    }

    IndexSet(const IndexSet& other);
    IndexSet(IndexSet&&) noexcept = default;
    IndexSet& operator=(const IndexSet& other);
    IndexSet& operator=(IndexSet&&) noexcept = default;
    ~IndexSet();

    /// Adds a copy of `item`.
    void add(const IndexItem& item);

    /// Whether every item fits a dimension of that extent.
    bool isValid(std::uint64_t extent) const;

    /// The union of the indices of all items.
    /// @throws what the `values` of the items throw; a valid set may fail too, see `IndexRange::values`.
    std::set<std::uint64_t> values(std::uint64_t extent) const;

    /// The number of elements of `values(extent)`, which fails alike. Cheap for a single index or range.
    std::uint64_t size(std::uint64_t extent) const;

private:
    friend class details::IndexSelection;

    std::vector<std::unique_ptr<const IndexItem>> items_;
};

/// The slice of the one element at `indices`: a set for each dimension, of that index from the start.
ZELM_EXPORT std::vector<IndexSet> ArraySliceFromIndices(const std::vector<std::uint64_t>& indices);

} // namespace Zelm
