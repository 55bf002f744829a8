#pragma once

#include <zelm/Export.h>
#include <zelm/arrays/ArrayDimensions.h>
#include <zelm/arrays/DataOrdering.h>
#include <zelm/arrays/IndexSet.h>

#include <cstdint>
#include <utility>
#include <vector>

namespace Zelm {

/// A slice of an array, given by one `IndexSet` a dimension, as a list of flat offsets into the source.
/// Everything is computed by the constructor. Ask `validSlice()` before using the offsets.
class ZELM_EXPORT SliceFlattener {
public:
    /// Flattens the slice of an array of the shape `dims`, which is laid out in `sourceOrdering`. Position
    /// `k` of the offsets belongs to the `k`-th element of the slice in `sliceOrdering`. A description that
    /// does not fit makes an invalid object, no exception.
    /// @throws what `IndexSet::values` throws for a set that fits; std::length_error "vector<T> too long" for
    ///         more elements than a vector can hold.
    SliceFlattener(const std::vector<IndexSet>& indexSets, const ArrayDimensions& dims,
                   DataOrdering sourceOrdering, DataOrdering sliceOrdering);

    /// The flat offsets: a copy, or from an expiring flattener the list itself.
    std::vector<std::uint64_t> offsets() const& { return offsets_; }
    std::vector<std::uint64_t> offsets() && { return std::move(offsets_); }

    /// The shape of the slice. Of an invalid one, the extents of the dimensions before the first that does
    /// not fit; `{}` if the number of sets is not that of the dimensions.
    ArrayDimensions sliceDimension() const { return sliceDimension_; }

    /// Whether there is one set for each dimension and each set fits its extent.
    bool validSlice() const noexcept { return valid_; }

private:
    void computeOffsets(const std::vector<IndexSet>& indexSets, const ArrayDimensions& dims,
                        DataOrdering sourceOrdering, DataOrdering sliceOrdering);

    std::vector<std::uint64_t> offsets_;
    ArrayDimensions sliceDimension_;
    bool valid_ = false;
};

} // namespace Zelm
