#pragma once

#include <zelm/Export.h>
#include <zelm/arrays/ArrayDimensions.h>
#include <zelm/arrays/DataOrdering.h>

#include <cstdint>
#include <vector>

namespace Zelm {

/// The arithmetic between the indices of an element and its offset in flat storage.
///
/// Offsets are computed over the canonical form of a shape, so that trailing extents of 1 need no index;
/// indices are computed over the stored extents and have one entry a dimension. Strides and offsets of 2^64
/// or more become 2^64-1.
class ZELM_EXPORT ArrayIndexing {
public:
    /// The product of the extents after `dimension`; 0 for a dimension that the shape does not have.
    static std::uint64_t CalculateDimStrideRowMajor(std::uint64_t dimension, const ArrayDimensions& dims);
    /// The product of the extents before `dimension`; 0 for a dimension that the shape does not have.
    static std::uint64_t CalculateDimStrideColumnMajor(std::uint64_t dimension, const ArrayDimensions& dims);

    /// Writes the flat offset of the element at `indices`. Indices beyond the canonical form are allowed and
    /// do not count.
    /// @throws std::invalid_argument "Too few indices" for fewer indices than the canonical form has entries.
    /// @throws std::out_of_range "Indices out of bounds", with `check` only, for an index at or past its
    ///         extent or a non-zero one beyond the canonical form.
    static void CalculateOffsetRowMajor(std::uint64_t* offset, const std::vector<std::uint64_t>& indices,
                                        const ArrayDimensions& dims, bool check);
    static void CalculateOffsetColumnMajor(std::uint64_t* offset, const std::vector<std::uint64_t>& indices,
                                           const ArrayDimensions& dims, bool check);

    /// Replaces `indices` by those of the element at `offset`, one for each stored dimension. An index whose
    /// stride is 0 is 0. `indices` has been cleared when an exception leaves.
    /// @throws std::invalid_argument "Too few indices", with `check` only, for a shape without dimensions or
    ///         an offset at or past the element count.
    static void CalculateIndicesRowMajor(std::vector<std::uint64_t>& indices, std::uint64_t offset,
                                         const ArrayDimensions& dims, bool check);
    static void CalculateIndicesColumnMajor(std::vector<std::uint64_t>& indices, std::uint64_t offset,
                                            const ArrayDimensions& dims, bool check);
};

namespace details {

/// The strides of all stored dimensions, for loops that would otherwise compute them for each element.
ZELM_EXPORT std::vector<std::uint64_t> stridesOf(const ArrayDimensions& dims, DataOrdering ordering);

} // namespace details

} // namespace Zelm
