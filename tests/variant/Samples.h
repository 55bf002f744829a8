#pragma once

#include <zelm/variant/Struct.h>
#include <zelm/variant/Variant.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace Zelm::Testing {

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
        Struct record;
        record.set(ZString("n"), n);
        return record;
    } else if constexpr (std::is_same_v<T, Variant>) {
        return Variant(n);
    } else {
        const std::string text = "element " + std::to_string(n);
        return T(text.begin(), text.end());
    }
}
template <>
inline ZString sample<ZString>(std::uint64_t n) {
    return ZString(sample<std::string>(n));
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
#define ZELM_VISIT_EACH(type, Name, value, keyword)                                                          \
    {                                                                                                        \
        SCOPED_TRACE(keyword);                                                                               \
        visit(details::ElementTag<type>());                                                                  \
    }
    ZELM_FOR_EACH_ELEMENT_TYPE(ZELM_VISIT_EACH)
#undef ZELM_VISIT_EACH
}

} // namespace Zelm::Testing
