#pragma once

#include <zelm/Export.h>
#include <zelm/arrays/ArrayDimensions.h>
#include <zelm/arrays/DataOrdering.h>
#include <zelm/arrays/IndexSet.h>

#include <cstdint>
#include <utility>
#include <vector>

namespace Zelm {

/// A choice of elements by their numbers over the whole array, as a list of flat offsets into the source.
/// Everything is computed by the constructor. Ask `validList()` before using the offsets.
class ZELM_EXPORT IndexMapper {
public:
    /// The numbers of `set` count the elements of an array of the shape `dims` in `targetOrdering`; the
    /// offsets are those of the same elements in `sourceOrdering`, by ascending number. A set that does not
    /// fit the element count makes an invalid object, no exception.
    /// @throws what `IndexSet::values` throws for a set that fits.
    IndexMapper(const IndexSet& set, const ArrayDimensions& dims, DataOrdering sourceOrdering,
                DataOrdering targetOrdering);

    /// The flat offsets: a copy, or from an expiring mapper the list itself.
    std::vector<std::uint64_t> offsets() const& { return offsets_; }
    std::vector<std::uint64_t> offsets() && { return std::move(offsets_); }

    /// One entry, the number of chosen elements; `{}` of an invalid mapper.
    ArrayDimensions sliceDimension() const { return sliceDimension_; }

    /// Whether the set fits the element count.
    bool validList() const noexcept { return valid_; }

private:
    std::vector<std::uint64_t> offsets_;
    ArrayDimensions sliceDimension_;
    bool valid_ = false;
};

} // namespace Zelm
