#pragma once

#include <zelm/Export.h>
#include <zelm/arrays/ArrayDimensions.h>
#include <zelm/variant/ElementTypes.h>

#include <functional>

namespace Zelm {

/// How strictly two values are compared.
enum ComparisonLevel : int {
    Equivalent = 0, ///< the same values, allowing for type, trailing 1s of the shape, and data ordering
    Identical = 1,  ///< the same element type, shape entry by entry, ordering and elements
};

namespace details {

class AbstractVariantStorage;

/// Compares the first `shape.countAllElements()` elements of two storages of one element type, by flat
/// offset.
using StorageComparison = bool(const AbstractVariantStorage& a, const AbstractVariantStorage& b,
                               ArrayDimensions shape, ComparisonLevel level);

/// The comparison for element type `T`, exact and without tolerance: a NaN differs from everything, itself
/// included. False if either storage holds another element type or fewer elements than the shape says.
template <class T>
ZELM_EXPORT bool compareStorages(const AbstractVariantStorage& a, const AbstractVariantStorage& b,
                                 ArrayDimensions shape, ComparisonLevel level);

/// The comparison of null values: true if the shape is empty.
ZELM_EXPORT bool compareNullStorages(const AbstractVariantStorage& a, const AbstractVariantStorage& b,
                                     ArrayDimensions shape, ComparisonLevel level);

#define ZELM_EXTERN(type, Name, value, keyword)                                                              \
    extern template ZELM_EXPORT bool compareStorages<type>(                                                  \
        const AbstractVariantStorage&, const AbstractVariantStorage&, ArrayDimensions, ComparisonLevel);
ZELM_FOR_EACH_ELEMENT_TYPE(ZELM_EXTERN)
#undef ZELM_EXTERN

} // namespace details
} // namespace Zelm
