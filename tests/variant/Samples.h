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

/// An element for each number; the numbers can be told apart but for `bool`.
template <class T>
T sample(std::uint64_t n) {
    using Part = details::RealPartOf<T>;
    if constexpr (details::isComplexElement<T>) {
        return T(static_cast<Part>(n), static_cast<Part>(n % 3));
    } else if constexpr (std::is_same_v<T, bool>) {
        return n % 3 == 1;
    } else if constexpr (details::isNumericElement<T>) {
        return static_cast<T>(n);
    } else if constexpr (std::is_same_v<T, Struct>) {
        return record({{"n", n}});
    } else if constexpr (std::is_same_v<T, Variant>) {
        return Variant(n);
    } else {
        const std::string text = "an element on the heap, " + std::to_string(n);
        if constexpr (std::is_same_v<T, ZString>) {
            return ZString(text);
        } else {
            return T(text.begin(), text.end());
        }
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

template <class T>
bool same(const T& a, const T& b) {
    if constexpr (std::is_same_v<T, Variant>) {
        return a.isIdenticalTo(b);
    } else if constexpr (std::is_same_v<T, Struct>) {
        return a.isEqual(b, Identical);
    } else {
        return a == b;
    }
}

/// Calls `visit(ElementTag<T>())` for each of the 27 element types.
template <class Visit>
void forEachElementType(Visit&& visit) {
#define ZELM_VISIT_EACH(type, Name, value, keyword) visit(details::ElementTag<type>());
    ZELM_FOR_EACH_ELEMENT_TYPE(ZELM_VISIT_EACH)
#undef ZELM_VISIT_EACH
}

/// The same for one type for each way in which elements are copied, and for all that own memory.
template <class Visit>
void forEachKindOfElement(Visit&& visit) {
    const auto visitAll = [&](auto... tags) { (visit(tags), ...); };
    visitAll(details::ElementTag<bool>(), details::ElementTag<short>(), details::ElementTag<double>(),
             details::ElementTag<std::complex<double>>(), details::ElementTag<std::u16string>(),
             details::ElementTag<ZString>(), details::ElementTag<Variant>(), details::ElementTag<Struct>());
}

template <class T>
Storage storageOf(std::vector<T> elements, ArrayDimensions shape = {}, DataOrdering ordering = RowMajor) {
    return Storage(VariantOps::constructVariantStorage<T>(std::move(elements), std::move(shape), ordering));
}

/// Expects these elements and no more, read one by one through the interface.
template <class T>
void expectHolds(const details::AbstractVariantStorage& storage, const std::vector<T>& elements,
                 const ArrayDimensions& shape, DataOrdering ordering = RowMajor) {
    bool equal = storage.typeInfo() == typeid(T);
    for (std::uint64_t i = 0; equal && i < elements.size(); ++i) {
        equal = same<T>(*static_cast<const T*>(storage.element(i)), elements[i]);
    }
    EXPECT_TRUE(equal && storage.dimensions().isIdenticalTo(shape)) << storage.wellKnownType().ToString();
    EXPECT_EQ(storage.dataOrdering(), ordering);
    EXPECT_OUT_OF_BOUNDS(storage.element(elements.size()));
}

} // namespace Zelm::Testing
