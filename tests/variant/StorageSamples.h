#pragma once

#include <support/ExpectThrow.h>
#include <variant/Samples.h>

#include <zelm/variant/VariantOps.h>

#include <memory>
#include <stdexcept>

namespace Zelm::Testing {

using Storage = std::shared_ptr<details::AbstractVariantStorage>;

template <class T>
Storage storageOf(std::vector<T> elements, ArrayDimensions shape = {}, DataOrdering ordering = RowMajor) {
    return Storage(VariantOps::constructVariantStorage<T>(std::move(elements), std::move(shape), ordering));
}

inline void expectNothingAt(const details::AbstractVariantStorage& storage, std::uint64_t offset) {
    EXPECT_THROW_MSG(storage.element(offset), std::out_of_range, "Offset out of bounds");
}

/// Whether the storage holds these elements and no more, read one by one through the interface.
template <class T>
bool holds(const details::AbstractVariantStorage& storage, const std::vector<T>& expected) {
    for (std::uint64_t i = 0; i < expected.size(); ++i) {
        if (!same<T>(*static_cast<const T*>(storage.element(i)), expected[i])) {
            return false;
        }
    }
    expectNothingAt(storage, expected.size());
    return storage.typeInfo() == typeid(T);
}

inline bool hasShape(const details::AbstractVariantStorage& storage, const ArrayDimensions& shape) {
    return storage.dimensions().isIdenticalTo(shape);
}

template <class T>
void expectHolds(const details::AbstractVariantStorage& storage, const std::vector<T>& elements,
                 const ArrayDimensions& shape, DataOrdering ordering = RowMajor) {
    EXPECT_TRUE(holds<T>(storage, elements) && hasShape(storage, shape));
    EXPECT_EQ(storage.dataOrdering(), ordering);
}

/// One type for each way in which elements are copied, and all that own memory.
template <class Visit>
void forEachKindOfElement(Visit&& visit) {
    visit(details::ElementTag<bool>());
    visit(details::ElementTag<short>());
    visit(details::ElementTag<float>());
    visit(details::ElementTag<double>());
    visit(details::ElementTag<std::complex<double>>());
    visit(details::ElementTag<std::u16string>());
    visit(details::ElementTag<ZString>());
    visit(details::ElementTag<Variant>());
    visit(details::ElementTag<Struct>());
}

} // namespace Zelm::Testing
