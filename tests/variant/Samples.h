#pragma once

#include <support/ExpectThrow.h>

#include <zelm/variant/Struct.h>
#include <zelm/variant/VariantOps.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#define EXPECT_OUT_OF_BOUNDS(statement) EXPECT_THROW_MSG(statement, std::out_of_range, "Offset out of bounds")

namespace Zelm::Testing {

using Storage = std::shared_ptr<details::AbstractVariantStorage>;

inline Struct record(std::initializer_list<std::pair<const char*, Variant>> fields) {
    Struct result;
    for (const auto& field : fields) {
        result.set(field.first, field.second);
    }
    return result;
}

inline Variant cell(std::vector<Variant> elements, ArrayDimensions shape = {},
                    DataOrdering ordering = RowMajor) {
    return Variant(std::move(elements), std::move(shape), ordering);
}

inline Variant movedFrom() {
    Variant value(1.5);
    const Variant taken(std::move(value));
    return value;
}

/// An element for each number; small numbers can be told apart but for `bool`.
template <class T>
T sample(std::uint64_t n) {
    if constexpr (details::isComplexElement<T>) {
        return T(sample<details::RealPartOf<T>>(n), sample<details::RealPartOf<T>>(n + 1));
    } else if constexpr (details::isNumericElement<T>) {
        return static_cast<T>(std::is_same_v<T, bool> ? n % 3 == 1 : n);
    } else if constexpr (std::is_same_v<T, Struct>) {
        return record({{"n", n}});
    } else if constexpr (std::is_same_v<T, Variant>) {
        return Variant(n);
    } else if constexpr (std::is_same_v<T, std::u16string>) {
        return T(30, static_cast<char16_t>(u'a' + n));
    } else {
        return "an element on the heap, " + std::to_string(n);
    }
}

template <class T>
std::vector<T> samples(std::uint64_t count, std::uint64_t first = 0) {
    std::vector<T> list;
    for (std::uint64_t n = first; n < first + count; ++n) {
        list.push_back(sample<T>(n));
    }
    return list;
}

/// Call `visit(ElementTag<T>())` for each of the 22 types of numbers and for each of the 27 element types.
#define ZELM_VISIT_EACH(type, Name, value, keyword) visit(details::ElementTag<type>());
template <class Visit>
void forEachNumberType(Visit&& visit) {
    ZELM_FOR_EACH_REAL_TYPE(ZELM_VISIT_EACH)
    ZELM_FOR_EACH_COMPLEX_TYPE(ZELM_VISIT_EACH)
}
template <class Visit>
void forEachElementType(Visit&& visit) {
    ZELM_FOR_EACH_ELEMENT_TYPE(ZELM_VISIT_EACH)
}
#undef ZELM_VISIT_EACH

template <class T>
Storage storageOf(std::vector<T> elements, ArrayDimensions shape = {}, DataOrdering ordering = RowMajor) {
    return Storage(VariantOps::constructVariantStorage<T>(std::move(elements), std::move(shape), ordering));
}

/// Expects these elements and no more, read one by one through the interface.
template <class T>
void expectHolds(const details::AbstractVariantStorage& storage, const std::vector<T>& elements,
                 const ArrayDimensions& shape, DataOrdering ordering = RowMajor) {
    std::vector<T> read;
    ASSERT_EQ(storage.wellKnownType(), details::wellKnownTypeOf<T>);
    for (std::uint64_t i = 0; i < elements.size(); ++i) {
        read.push_back(*static_cast<const T*>(storage.element(i)));
    }
    EXPECT_OUT_OF_BOUNDS(storage.element(elements.size()));
    EXPECT_TRUE(Variant(read).isIdenticalTo(Variant(elements))) << storage.wellKnownType().ToString();
    EXPECT_TRUE(storage.dimensions().isIdenticalTo(shape) && storage.dataOrdering() == ordering);
    EXPECT_TRUE(storage.typeInfo() == typeid(T));
}

} // namespace Zelm::Testing
