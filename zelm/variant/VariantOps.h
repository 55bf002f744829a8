#pragma once

#include <zelm/Export.h>
#include <zelm/arrays/ArrayDimensions.h>
#include <zelm/arrays/DataOrdering.h>
#include <zelm/variant/AbstractVariantStorage.h>
#include <zelm/variant/ElementTypes.h>

#include <initializer_list>
#include <vector>

namespace Zelm::VariantOps {

/// Makes a storage of the 27 element types; the caller owns the result. A shape of no elements is replaced by
/// the one-entry shape of the element count, so an omitted shape makes a vector. A shape that is not empty
/// and does not fit the count throws `std::length_error` "Dimensions don't match size".
template <class T, class = details::RequireElementType<T>>
ZELM_EXPORT details::AbstractVariantStorage* constructVariantStorage(T&& element);
template <class T, class = details::RequireElementType<T>>
ZELM_EXPORT details::AbstractVariantStorage* constructVariantStorage(std::initializer_list<T>&& elements);
template <class T, class = details::RequireElementType<T>>
ZELM_EXPORT details::AbstractVariantStorage* constructVariantStorage(std::initializer_list<T>&& elements,
                                                                     ArrayDimensions dimensions,
                                                                     DataOrdering ordering);
template <class T, class = details::RequireElementType<T>>
ZELM_EXPORT details::AbstractVariantStorage* constructVariantStorage(std::vector<T>&& elements);
template <class T, class = details::RequireElementType<T>>
ZELM_EXPORT details::AbstractVariantStorage*
constructVariantStorage(std::vector<T>&& elements, ArrayDimensions dimensions, DataOrdering ordering);

/// A new storage that holds nothing.
ZELM_EXPORT details::AbstractVariantStorage* constructNullVariantStorage();

#define ZELM_EXTERN(type, Name, value, keyword)                                                              \
    extern template ZELM_EXPORT details::AbstractVariantStorage* constructVariantStorage<type>(type &&);     \
    extern template ZELM_EXPORT details::AbstractVariantStorage* constructVariantStorage<type>(              \
        std::initializer_list<type> &&);                                                                     \
    extern template ZELM_EXPORT details::AbstractVariantStorage* constructVariantStorage<type>(              \
        std::initializer_list<type>&&, ArrayDimensions, DataOrdering);                                       \
    extern template ZELM_EXPORT details::AbstractVariantStorage* constructVariantStorage<type>(              \
        std::vector<type> &&);                                                                               \
    extern template ZELM_EXPORT details::AbstractVariantStorage* constructVariantStorage<type>(              \
        std::vector<type>&&, ArrayDimensions, DataOrdering);
ZELM_FOR_EACH_ELEMENT_TYPE(ZELM_EXTERN)
#undef ZELM_EXTERN

} // namespace Zelm::VariantOps
