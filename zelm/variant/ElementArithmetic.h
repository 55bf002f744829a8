#pragma once

#include <zelm/variant/ElementTypes.h>

#include <complex>
#include <functional>
#include <type_traits>

namespace Zelm::details {

/// The type in which elements of type `T` are added and multiplied, `void` if they are not: their own type
/// where it is one of arithmetic, `std::complex<double>` for complex numbers with integer or boolean parts.
template <class T>
using ArithmeticTypeOf =
    std::conditional_t<isArithmeticElement<T>, T,
                       std::conditional_t<isComplexElement<T>, std::complex<double>, void>>;

/// The unsigned type in which integers of type `T` wrap around. Narrow types are calculated in 32 bits:
/// promoted to `int`, a product of two `unsigned short` would overflow.
template <class T>
using WrappingTypeOf =
    std::conditional_t<(sizeof(T) < sizeof(unsigned int)), unsigned int, std::make_unsigned_t<T>>;

/// `operation(a, b)` with integers wrapping around, as two's complement does.
template <class T, class Operation>
constexpr T wrapped(const T& a, const T& b, Operation operation) {
    if constexpr (std::is_integral_v<T>) {
        using Wide = WrappingTypeOf<T>;
        return static_cast<T>(operation(static_cast<Wide>(a), static_cast<Wide>(b)));
    } else {
        return operation(a, b);
    }
}

/// The sum of two elements. Commutes in every type.
struct ElementSum {
    template <class T>
    constexpr T operator()(const T& a, const T& b) const {
        return wrapped(a, b, std::plus<>());
    }
};

/// The product of two elements. Commutes in every type.
struct ElementProduct {
    template <class T>
    constexpr T operator()(const T& a, const T& b) const {
        return wrapped(a, b, std::multiplies<>());
    }
};

} // namespace Zelm::details
