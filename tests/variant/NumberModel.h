#pragma once

#include <zelm/variant/VectorVariantStorage.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <memory>
#include <vector>

namespace Zelm::Testing {

/// All numbers of all types are exact in it: 64-bit integers as well as doubles.
using Real = long double;
static_assert(LDBL_MANT_DIG >= 64, "the model of the number types wants an exact 64-bit integer");

struct Number {
    Real re = 0;
    Real im = 0;
};

/// What a real type is: 'f' floating, 'i' signed, 'u' unsigned, 'b' boolean.
struct NumberKind {
    WellKnownType real;
    WellKnownType complex;
    char kind;
    int bits;
};

inline const std::vector<NumberKind> kNumberKinds = {
    {WellKnownType("double"), WellKnownType("complexDouble"), 'f', 64},
    {WellKnownType("float"), WellKnownType("complexFloat"), 'f', 32},
    {WellKnownType("bool"), WellKnownType("complexBool"), 'b', 1},
    {WellKnownType("int8"), WellKnownType("complexInt8"), 'i', 8},
    {WellKnownType("int16"), WellKnownType("complexInt16"), 'i', 16},
    {WellKnownType("int32"), WellKnownType("complexInt32"), 'i', 32},
    {WellKnownType("int64"), WellKnownType("complexInt64"), 'i', 64},
    {WellKnownType("unsignedInt8"), WellKnownType("complexUnsignedInt8"), 'u', 8},
    {WellKnownType("unsignedInt16"), WellKnownType("complexUnsignedInt16"), 'u', 16},
    {WellKnownType("unsignedInt32"), WellKnownType("complexUnsignedInt32"), 'u', 32},
    {WellKnownType("unsignedInt64"), WellKnownType("complexUnsignedInt64"), 'u', 64},
};

/// A type of the model: a kind, and whether there are two parts of it.
struct NumberType {
    NumberKind part;
    bool isComplex;

    WellKnownType tag() const { return isComplex ? part.complex : part.real; }
};

inline std::vector<NumberType> allNumberTypes() {
    std::vector<NumberType> types;
    for (const NumberKind& kind : kNumberKinds) {
        types.push_back({kind, false});
        types.push_back({kind, true});
    }
    return types;
}

/// An integer counted round the circle of a type of `bits` bits.
inline Real wrapped(Real integer, char kind, int bits) {
    const Real circle = std::ldexp(Real(1), bits);
    Real n = std::fmod(integer, circle);
    n = n < 0 ? n + circle : n;
    return (kind == 'i' && n >= circle / 2 ? n - circle : n) + 0.0L;
}

/// What becomes of a number of kind `from` in kind `to`.
inline Real convertedReal(Real value, const NumberKind& from, const NumberKind& to) {
    if (to.kind == 'b') {
        return value == 0 ? 0 : 1;
    }
    if (to.kind == 'f') {
        return to.bits == 64 ? static_cast<double>(value) : static_cast<float>(value);
    }
    if (from.kind != 'f') {
        return wrapped(value, to.kind, to.bits);
    }
    const bool isSigned = to.kind == 'i' || to.bits < 32;
    const int width = std::max(to.bits, 32);
    const Real lowest = isSigned ? -std::ldexp(Real(1), width - 1) : 0;
    const Real whole = std::trunc(value);
    const bool fits = whole >= lowest && whole < lowest + std::ldexp(Real(1), width);
    return wrapped(fits ? whole : lowest, to.kind, to.bits);
}

inline Number converted(const Number& value, const NumberType& from, const NumberType& to) {
    return {convertedReal(value.re, from.part, to.part),
            from.isComplex && to.isComplex ? convertedReal(value.im, from.part, to.part) : 0};
}

/// A conversion keeps a number if what comes out is the same number; of a NaN that can never be said.
inline bool isKept(const Number& value, const Number& result) {
    return value.re == result.re && value.im == result.im;
}

inline bool mayLose(const NumberType& fromType, const NumberType& toType) {
    const NumberKind& from = fromType.part;
    const NumberKind& to = toType.part;
    if (fromType.isComplex && !toType.isComplex) {
        return true;
    }
    const bool kept = (from.kind == to.kind && from.bits <= to.bits) || from.kind == 'b' ||
                      (to.kind == 'f' && from.kind != 'f') ||
                      (from.kind == 'u' && to.kind == 'i' && from.bits < to.bits);
    return !kept;
}

inline bool isSameReal(Real a, Real b) {
    return (std::isnan(a) && std::isnan(b)) || (a == b && std::signbit(a) == std::signbit(b));
}
inline bool isSame(const Number& a, const Number& b) {
    return isSameReal(a.re, b.re) && isSameReal(a.im, b.im);
}

/// Every number of `type` that stands at an edge of any type.
inline std::vector<Number> edgeNumbers(const NumberType& type) {
    const auto two = [](int power) { return std::ldexp(Real(1), power); };
    std::vector<Real> edges = {0.0L, -0.0L, 0.5L, -0.5L, 1.5L, -1.5L, 200, 300.7L, -300.7L, 1e300L, -1e300L};
    edges.insert(edges.end(), {FLT_MAX, DBL_MAX, -DBL_MAX, FLT_MIN, DBL_MIN, 5e-324L, -1e-45L, INFINITY});
    edges.insert(edges.end(), {-INFINITY, NAN, two(60) + two(36) + 1, two(31) - 0.5L, -two(31) - 0.5L});
    edges.insert(edges.end(), {two(63) - 1024, two(64) - 2048, two(63) - two(39), two(64) - two(40)});
    for (const int power : {0, 7, 8, 15, 16, 24, 31, 32, 53, 63, 64}) {
        for (const int offset : {-1, 0, 1}) {
            edges.push_back(two(power) + offset);
            edges.push_back(-two(power) + offset);
        }
    }
    static const NumberKind kExact{{}, {}, 'f', 0};
    std::vector<Real> reals;
    for (const Real edge : edges) {
        const Real value = convertedReal(edge, kExact, type.part);
        if (type.part.kind == 'f' || value == edge) {
            reals.push_back(value);
        }
    }
    std::vector<Number> numbers;
    for (std::size_t i = 0; i < reals.size(); ++i) {
        numbers.push_back({reals[i], 0});
        if (type.isComplex) {
            numbers.push_back({0, reals[i]});
            numbers.push_back({reals[i], reals[(i * 7 + 3) % reals.size()]});
        }
    }
    return numbers;
}

template <class Part>
Part asPart(Real value) {
    return std::is_same_v<Part, bool> ? value != 0 : static_cast<Part>(value);
}

/// A storage of these numbers, and the numbers of a storage.
inline std::shared_ptr<details::AbstractVariantStorage> storageOfNumbers(WellKnownType type,
                                                                         const std::vector<Number>& numbers,
                                                                         ArrayDimensions shape,
                                                                         DataOrdering ordering = RowMajor) {
    std::shared_ptr<details::AbstractVariantStorage> storage;
    details::visitElementType(type, [&](auto tag) {
        using T = typename decltype(tag)::type;
        using Part = details::RealPartOf<T>;
        if constexpr (details::isNumericElement<T>) {
            std::vector<details::StoredElement<T>> elements;
            for (const Number& number : numbers) {
                if constexpr (details::isComplexElement<T>) {
                    elements.push_back(T(asPart<Part>(number.re), asPart<Part>(number.im)));
                } else {
                    elements.push_back(asPart<T>(number.re));
                }
            }
            storage =
                std::make_shared<details::VectorVariantStorage<T>>(std::move(elements), shape, ordering);
        }
    });
    return storage;
}

inline std::vector<Number> numbersOf(const details::AbstractVariantStorage& storage) {
    std::vector<Number> numbers;
    details::visitStorage(storage, [&](const auto& typed) {
        for (const auto& element : typed.elements()) {
            if constexpr (details::isComplexElement<std::decay_t<decltype(element)>>) {
                numbers.push_back({static_cast<Real>(element.real()), static_cast<Real>(element.imag())});
            } else if constexpr (std::is_convertible_v<decltype(element), Real>) {
                numbers.push_back({static_cast<Real>(element), 0});
            }
        }
    });
    return numbers;
}

} // namespace Zelm::Testing
