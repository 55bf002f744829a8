#include <zelm/variant/VariantOps.h>

#include <zelm/variant/NullVariantStorage.h>
#include <zelm/variant/Struct.h>
#include <zelm/variant/Variant.h>
#include <zelm/variant/VectorVariantStorage.h>

#include <memory>
#include <type_traits>
#include <utility>

namespace Zelm {

namespace details {

namespace {

/// A shape without elements counts as omitted: it makes a vector.
ArrayDimensions shapeOrVector(ArrayDimensions shape, std::size_t count) {
    return shape.isEmpty() ? ArrayDimensions{count} : std::move(shape);
}

template <class T>
std::vector<StoredElement<T>> oneElement(T&& element) {
    std::vector<StoredElement<T>> elements;
    elements.emplace_back(std::move(element));
    return elements;
}

template <class T>
std::vector<StoredElement<T>> asStored(std::vector<T>&& elements) {
    if constexpr (std::is_same_v<StoredElement<T>, T>) {
        return std::move(elements);
    } else {
        return {elements.begin(), elements.end()};
    }
}

} // namespace

template <class T>
std::shared_ptr<AbstractVariantStorage> makeStorage(std::vector<StoredElement<T>>&& elements,
                                                    ArrayDimensions dimensions, DataOrdering ordering) {
    ArrayDimensions shape = shapeOrVector(std::move(dimensions), elements.size());
    return std::make_shared<VectorVariantStorage<T>>(std::move(elements), std::move(shape), ordering);
}

template <class T>
std::shared_ptr<AbstractVariantStorage> makeScalarStorage(T&& element) {
    return std::make_shared<VectorVariantStorage<T>>(oneElement<T>(std::move(element)), ArrayDimensions{1},
                                                     RowMajor);
}

} // namespace details

namespace VariantOps {

using details::AbstractVariantStorage;
using details::VectorVariantStorage;

template <class T, class>
AbstractVariantStorage* constructVariantStorage(T&& element) {
    return new VectorVariantStorage<T>(details::oneElement<T>(std::move(element)), {1}, RowMajor);
}

template <class T, class>
AbstractVariantStorage* constructVariantStorage(std::initializer_list<T>&& elements) {
    return constructVariantStorage<T>(std::vector<T>(elements), {}, RowMajor);
}

template <class T, class>
AbstractVariantStorage* constructVariantStorage(std::initializer_list<T>&& elements,
                                                ArrayDimensions dimensions, DataOrdering ordering) {
    return constructVariantStorage<T>(std::vector<T>(elements), std::move(dimensions), ordering);
}

template <class T, class>
AbstractVariantStorage* constructVariantStorage(std::vector<T>&& elements) {
    return constructVariantStorage<T>(std::move(elements), {}, RowMajor);
}

template <class T, class>
AbstractVariantStorage* constructVariantStorage(std::vector<T>&& elements, ArrayDimensions dimensions,
                                                DataOrdering ordering) {
    ArrayDimensions shape = details::shapeOrVector(std::move(dimensions), elements.size());
    return new VectorVariantStorage<T>(details::asStored<T>(std::move(elements)), std::move(shape), ordering);
}

AbstractVariantStorage* constructNullVariantStorage() {
    return new details::NullVariantStorage;
}

} // namespace VariantOps

#define ZELM_INSTANTIATE(type, Name, value, keyword)                                                         \
    template std::shared_ptr<details::AbstractVariantStorage> details::makeStorage<type>(                    \
        std::vector<details::StoredElement<type>>&&, ArrayDimensions, DataOrdering);                         \
    template std::shared_ptr<details::AbstractVariantStorage> details::makeScalarStorage<type>(type &&);     \
    template details::AbstractVariantStorage* VariantOps::constructVariantStorage<type>(type &&);            \
    template details::AbstractVariantStorage* VariantOps::constructVariantStorage<type>(                     \
        std::initializer_list<type> &&);                                                                     \
    template details::AbstractVariantStorage* VariantOps::constructVariantStorage<type>(                     \
        std::initializer_list<type>&&, ArrayDimensions, DataOrdering);                                       \
    template details::AbstractVariantStorage* VariantOps::constructVariantStorage<type>(                     \
        std::vector<type> &&);                                                                               \
    template details::AbstractVariantStorage* VariantOps::constructVariantStorage<type>(                     \
        std::vector<type>&&, ArrayDimensions, DataOrdering);
ZELM_FOR_EACH_ELEMENT_TYPE(ZELM_INSTANTIATE)
#undef ZELM_INSTANTIATE

} // namespace Zelm
