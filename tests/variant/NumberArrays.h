#pragma once

#include <arrays/ArrayModel.h>
#include <variant/NumberModel.h>

#include <zelm/variant/MutableVariant.h>
#include <zelm/variant/Variant.h>

#include <algorithm>
#include <random>
#include <utility>
#include <vector>

namespace Zelm::Testing {

/// An array as it stands on paper: the numbers in the order of their indices, the last index fastest,
/// whatever the ordering in which they are to be stored.
struct NumberArray {
    NumberType type;
    Numbers extents;
    DataOrdering ordering;
    std::vector<Number> numbers;
};

template <class T>
T elementOf(const Number& number) {
    using Part = details::RealPartOf<T>;
    if constexpr (details::isComplexElement<T>) {
        return T(asPart<Part>(number.re), asPart<Part>(number.im));
    } else {
        return asPart<T>(number.re);
    }
}

template <class T>
Number numberOf(const T& element) {
    if constexpr (details::isComplexElement<T>) {
        return {static_cast<Real>(element.real()), static_cast<Real>(element.imag())};
    } else {
        return {static_cast<Real>(element), 0};
    }
}

/// Calls `visit(ElementTag<T>())` if the type is numeric.
template <class Visit>
void visitNumberType(WellKnownType type, Visit&& visit) {
    details::visitElementType(type, [&](auto tag) {
        if constexpr (details::isNumericElement<typename decltype(tag)::type>) {
            visit(tag);
        }
    });
}

inline Variant variantOf(const NumberArray& array) {
    const auto places = storagePlaces(array.extents, array.ordering);
    std::vector<Number> stored(array.numbers.size());
    auto number = array.numbers.begin();
    for (const Numbers& indices : allIndices(array.extents, RowMajor)) {
        stored[places.at(indices)] = *number++;
    }
    Variant value;
    visitNumberType(array.type.tag(), [&](auto tag) {
        using T = typename decltype(tag)::type;
        std::vector<T> elements;
        std::transform(stored.begin(), stored.end(), std::back_inserter(elements), elementOf<T>);
        value = Variant(std::move(elements), ArrayDimensions(array.extents), array.ordering);
    });
    return value;
}

/// The numbers of a value in the order of their indices, each read by its indices.
inline std::vector<Number> numbersByIndex(const Variant& value) {
    std::vector<Number> numbers;
    visitNumberType(value.wellKnownType(), [&](auto tag) {
        using T = typename decltype(tag)::type;
        MutableVariant elements{Variant(value)};
        for (const Numbers& indices : allIndices(value.dimensions().asVector(), RowMajor)) {
            numbers.push_back(numberOf(elements.element<T>(indices)));
        }
    });
    return numbers;
}

inline bool areSame(const std::vector<Number>& a, const std::vector<Number>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), isSame);
}

/// The type in which two numbers meet: the smallest one that holds both ranges, a float for all integers.
inline NumberType commonTypeOf(const NumberType& a, const NumberType& b) {
    const auto find = [&](char kind, int bits) {
        return NumberType{
            *std::find_if(kNumberKinds.begin(), kNumberKinds.end(),
                          [&](const NumberKind& k) { return k.kind == kind && k.bits == bits; }),
            a.isComplex || b.isComplex};
    };
    NumberKind x = a.part;
    NumberKind y = b.part;
    if (x.kind == 'b' || y.kind == 'b' || x.kind == y.kind) {
        const bool takeY = x.kind == 'b' || (y.kind != 'b' && y.bits > x.bits);
        return takeY ? find(y.kind, y.bits) : find(x.kind, x.bits);
    }
    if (x.kind == 'f' || y.kind == 'f') {
        return find('f', x.kind == 'f' ? x.bits : y.bits);
    }
    if (x.kind == 'u') {
        std::swap(x, y);
    }
    return x.bits > y.bits ? find('i', x.bits) : y.bits < 64 ? find('i', 2 * y.bits) : find('f', 64);
}

/// Whether an element of type `from` can take part as one of type `to`.
inline bool survives(const Number& number, const NumberType& from, const NumberType& to) {
    return from.tag() == to.tag() || isKept(number, converted(number, from, to));
}

/// Some numbers of `type` that stand at the edges of all types, only those that `to` holds if `tame`.
inline std::vector<Number> drawNumbers(std::mt19937& random, std::size_t count, const NumberType& type,
                                       const NumberType& to, bool tame) {
    static std::map<WellKnownType, std::vector<Number>> edges;
    std::vector<Number>& known = edges[type.tag()];
    if (known.empty()) {
        known = edgeNumbers(type);
    }
    std::vector<Number> pool;
    std::copy_if(known.begin(), known.end(), std::back_inserter(pool),
                 [&](const Number& n) { return !tame || survives(n, type, to); });
    std::vector<Number> drawn(count);
    std::generate(drawn.begin(), drawn.end(), [&] { return pool[draw(random, 0, pool.size() - 1)]; });
    return drawn;
}

inline Numbers drawExtents(std::mt19937& random) {
    Numbers extents(draw(random, 1, 4));
    for (std::uint64_t& extent : extents) {
        extent = draw(random, draw(random, 0, 15) == 0 ? 0 : 1, 4);
    }
    return extents;
}

inline std::size_t countOf(const Numbers& extents) {
    return allIndices(extents, RowMajor).size();
}

} // namespace Zelm::Testing
