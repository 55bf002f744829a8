#pragma once

#include <zelm/Export.h>
#include <zelm/arrays/ArrayDimensions.h>
#include <zelm/arrays/DataOrdering.h>

#include <cstdint>

namespace Zelm {

namespace details {

/// The column-major offset of the element whose row-major offset is `position`, and the converse. Positions
/// beyond the shape give an offset without meaning. No allocation; a division a dimension.
ZELM_EXPORT std::uint64_t columnMajorOffsetAt(std::uint64_t position, const ArrayDimensions& dims) noexcept;
ZELM_EXPORT std::uint64_t rowMajorOffsetAt(std::uint64_t position, const ArrayDimensions& dims) noexcept;

} // namespace details

/// Walks the elements of an array in a logical order, however they are stored.
///
/// `data` points to the first of `dims.countAllElements()` elements, stored in `ordering`; `position` counts
/// the elements passed. Vectors are stored alike in both orderings and pay for no index arithmetic.
template <class T>
struct VariantElementIterator {
    T* data = nullptr;
    DataOrdering ordering = RowMajor;
    ArrayDimensions dims;
    std::uint64_t position = 0;

    /// The element at `position` of the walk in which the last index runs fastest.
    T* rowMajorElement() const {
        return data + (ordering == ColumnMajor && !dims.isVector()
                           ? details::columnMajorOffsetAt(position, dims)
                           : position);
    }
    /// The element at `position` of the walk in which the first index runs fastest.
    T* columnMajorElement() const {
        return data + (ordering == RowMajor && !dims.isVector() ? details::rowMajorOffsetAt(position, dims)
                                                                : position);
    }

    VariantElementIterator& operator++() noexcept {
        ++position;
        return *this;
    }
};

} // namespace Zelm
