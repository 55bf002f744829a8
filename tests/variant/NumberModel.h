#pragma once

#include <zelm/variant/VariantAccess.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <vector>

namespace Zelm::Testing {

/// All numbers of all types are exact in it: 64-bit integers as well as doubles.
using Real = long double;
static_assert(LDBL_MANT_DIG >= 64, "the model of the number types wants an exact 64-bit integer");

struct Number {
    Real re = 0;
    Real im = 0;
};
using NumberList = std::vector<Number>;

/// A type of the model: one part or two that are 'f' floating, 'i' signed, 'u' unsigned or 'b' boolean.
struct NumberType {
    WellKnownType tag;
    char kind;
    int bits;
    bool isComplex;
};

template <class T>
NumberType numberType() {
    using Part = details::RealPartOf<T>;
    const bool isBool = std::is_same_v<Part, bool>;
    const char kind = std::is_floating_point_v<Part> ? 'f' : std::is_signed_v<Part> ? 'i' : 'u';
    return {details::wellKnownTypeOf<T>, isBool ? 'b' : kind, isBool ? 1 : 8 * int(sizeof(Part)),
            details::isComplexElement<T>};
}
inline const std::vector<NumberType> kNumberTypes = {
#define ZELM_NUMBER_TYPE(type, Name, value, keyword) numberType<type>(),
    ZELM_FOR_EACH_REAL_TYPE(ZELM_NUMBER_TYPE) ZELM_FOR_EACH_COMPLEX_TYPE(ZELM_NUMBER_TYPE)
#undef ZELM_NUMBER_TYPE
};

/// What becomes of a number of type `from`, or of one part of it, in type `to`.
inline Real convertedReal(Real value, const NumberType& from, const NumberType& to) {
    // An integer counted round the circle of the target.
    const auto wrapped = [&to](Real integer) {
        const Real circle = std::ldexp(Real(1), to.bits);
        Real n = std::fmod(integer, circle);
        n = n < 0 ? n + circle : n;
        return (to.kind == 'i' && n >= circle / 2 ? n - circle : n) + 0.0L;
    };
    if (to.kind == 'b') {
        return value == 0 ? 0 : 1;
    }
    if (to.kind == 'f') {
        return to.bits == 64 ? static_cast<double>(value) : static_cast<float>(value);
    }
    if (from.kind != 'f') {
        return wrapped(value);
    }
    const int width = std::max(to.bits, 32);
    const Real lowest = to.kind == 'i' || to.bits < 32 ? -std::ldexp(Real(1), width - 1) : 0;
    const Real whole = std::trunc(value);
    return wrapped(whole >= lowest && whole < lowest + std::ldexp(Real(1), width) ? whole : lowest);
}

inline Number converted(const Number& value, const NumberType& from, const NumberType& to) {
    const bool bothParts = from.isComplex && to.isComplex;
    return {convertedReal(value.re, from, to), bothParts ? convertedReal(value.im, from, to) : 0};
}

/// Whether both are the same number; of a NaN that can never be said.
inline bool areEqual(const Number& a, const Number& b) {
    return a.re == b.re && a.im == b.im;
}

/// Whether the pair is one of those that are tested where a value may be lost.
inline bool mayLose(const NumberType& from, const NumberType& to) {
    const bool kept = (from.kind == to.kind && from.bits <= to.bits) || from.kind == 'b' ||
                      (to.kind == 'f' && from.kind != 'f') ||
                      (from.kind == 'u' && to.kind == 'i' && from.bits < to.bits);
    return (from.isComplex && !to.isComplex) || !kept;
}

/// Tells two zeros apart, but no NaNs.
inline bool isSame(const Number& a, const Number& b) {
    const auto same = [](Real x, Real y) {
        return (std::isnan(x) && std::isnan(y)) || (x == y && std::signbit(x) == std::signbit(y));
    };
    return same(a.re, b.re) && same(a.im, b.im);
}

/// Every number of `type` that stands at an edge of any type.
inline NumberList edgeNumbers(const NumberType& type) {
    const auto two = [](int power) { return std::ldexp(Real(1), power); };
    std::vector<Real> edges = {0.0L, -0.0L, 0.5L, -0.5L, 1.5L, -1.5L, 200, 300.7L, -300.7L, 1e300L, -1e300L};
    edges.insert(edges.end(), {FLT_MAX, DBL_MAX, -DBL_MAX, FLT_MIN, DBL_MIN, 5e-324L, -1e-45L, INFINITY});
    edges.insert(edges.end(), {-INFINITY, NAN, two(60) + two(36) + 1, two(31) - 0.5L, -two(31) - 0.5L});
    edges.insert(edges.end(), {two(63) - 1024, two(64) - 2048, two(63) - two(39), two(64) - two(40)});
    for (const int power : {0, 7, 8, 15, 16, 24, 31, 32, 53, 63, 64}) {
        for (const int offset : {-1, 0, 1}) {
            edges.insert(edges.end(), {two(power) + offset, -two(power) + offset});
        }
    }
    std::vector<Real> reals;
    for (const Real edge : edges) {
        const Real value = convertedReal(edge, {{}, 'f', 0, false}, type);
        if (type.kind == 'f' || value == edge) {
            reals.push_back(value);
        }
    }
    NumberList numbers;
    for (std::size_t i = 0; i < reals.size(); ++i) {
        numbers.push_back({reals[i], 0});
        if (type.isComplex) {
            numbers.push_back({0, reals[i]});
            numbers.push_back({reals[i], reals[(i * 7 + 3) % reals.size()]});
        }
    }
    return numbers;
}

template <class T>
T elementOf(const Number& number) {
    using Part = details::RealPartOf<T>;
    if constexpr (details::isComplexElement<T>) {
        return T(elementOf<Part>({number.re, 0}), elementOf<Part>({number.im, 0}));
    } else {
        return std::is_same_v<T, bool> ? number.re != 0 : static_cast<T>(number.re);
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

/// The flat numbers of a storage.
inline NumberList numbersOf(const details::AbstractVariantStorage& storage) {
    NumberList numbers;
    visitNumberType(storage.wellKnownType(), [&](auto tag) {
        using T = typename decltype(tag)::type;
        for (const auto& element : details::storageOf<T>(&storage)->elements()) {
            numbers.push_back(numberOf<T>(element));
        }
    });
    return numbers;
}

inline Variant valueOf(WellKnownType type, const NumberList& numbers, ArrayDimensions shape = {},
                       DataOrdering ordering = RowMajor) {
    Variant value;
    visitNumberType(type, [&](auto tag) {
        using T = typename decltype(tag)::type;
        std::vector<T> elements;
        for (const Number& number : numbers) {
            elements.push_back(elementOf<T>(number));
        }
        value = Variant(std::move(elements), shape, ordering);
    });
    return value;
}

} // namespace Zelm::Testing
