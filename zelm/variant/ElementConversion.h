#pragma once

#include <zelm/variant/ElementTypes.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

namespace Zelm::details {

/// Whether an element of type `from` can become one of type `to`. Everything goes into a cell, numbers become
/// numbers, and text becomes other text by way of `String()`; for the rest there is no type but their own.
constexpr bool hasConversion(WellKnownType from, WellKnownType to) noexcept {
    if (from.isUnknown() || to.isUnknown()) {
        return false;
    }
    if (from == to || to.isCellArray()) {
        return true;
    }
    if (from.isNumeric() || to.isNumeric()) {
        return from.isNumeric() && to.isNumeric();
    }
    const auto isText = [](WellKnownType type) {
        return type.isString() || type == WellKnownType::ZString();
    };
    return isText(from) && isText(to) && (from == WellKnownType::String() || to == WellKnownType::String());
}

/// The low four bits of a numeric type: 3 boolean, 4 to 7 integers by growing width.
constexpr int numericKind(WellKnownType type) noexcept {
    return static_cast<int>(type.value()) & 0xF;
}

/// isLossyConversion() of two different real types; `Bool()` is the narrowest of the unsigned integers.
constexpr bool isLossyBetweenReals(WellKnownType from, WellKnownType to) noexcept {
    const auto isFloating = [](WellKnownType type) {
        return type == WellKnownType::Double() || type == WellKnownType::Float();
    };
    if (isFloating(to)) {
        return from == WellKnownType::Double();
    }
    if (isFloating(from)) {
        return true;
    }
    if (from.isUnsigned() == to.isUnsigned()) {
        return numericKind(to) < numericKind(from);
    }
    return to.isUnsigned() || numericKind(to) <= numericKind(from);
}

/// Whether a pair that has a conversion is one of those that CheckLossy tests. An integer that becomes a
/// floating number does not count as lost, however much of a 64-bit one is rounded away.
constexpr bool isLossyConversion(WellKnownType from, WellKnownType to) noexcept {
    if (from == to || to.isCellArray()) {
        return false;
    }
    if (!from.isNumeric()) {
        return from == WellKnownType::ZString() || to == WellKnownType::ZString();
    }
    if (from.isComplex() && !to.isComplex()) {
        return true;
    }
    return from.baseType() != to.baseType() && isLossyBetweenReals(from.baseType(), to.baseType());
}

/// A floating number without its fraction. NaN and what lies outside the range of `To` become its lowest
/// value, which none of them equals on the way back; the highest one would let 2^63 pass for an `int64`.
/// Integers narrower than 32 bits take the low bits of the 32-bit result.
template <class To, class From>
constexpr To truncateNumber(From value) noexcept {
    if constexpr (sizeof(To) < sizeof(int)) {
        return static_cast<To>(truncateNumber<int>(value));
    } else {
        constexpr From lowest = static_cast<From>(std::numeric_limits<To>::min());
        constexpr From end = static_cast<From>(std::numeric_limits<To>::max() / 2 + 1) * 2;
        // What is truncated to `lowest` may fall out of the range: it becomes the same.
        const bool inRange = (value > lowest) & (value < end);
        return static_cast<To>(inRange ? value : lowest);
    }
}

/// A real number as one of another type: integers wrap, floating ones are rounded to nearest, `bool` tells
/// whether a number differs from zero, as a NaN does.
template <class To, class From>
constexpr To convertNumber(From value) noexcept {
    if constexpr (std::is_same_v<From, To>) {
        return value;
    } else if constexpr (std::is_same_v<To, bool>) {
        return value != From(0);
    } else if constexpr (std::is_floating_point_v<From> && std::is_integral_v<To>) {
        return truncateNumber<To>(value);
    } else {
        return static_cast<To>(value);
    }
}

template <class T>
using BitsOf =
    std::conditional_t<sizeof(T) == 8, std::uint64_t,
                       std::conditional_t<sizeof(T) == 4, std::uint32_t,
                                          std::conditional_t<sizeof(T) == 2, std::uint16_t, std::uint8_t>>>;

/// The bits of a number, as wide as the number.
template <class T>
BitsOf<T> bitsOf(T value) noexcept {
    BitsOf<T> bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

template <class T>
constexpr bool isNegative([[maybe_unused]] T value) noexcept {
    if constexpr (std::is_signed_v<T>) {
        return value < T(0);
    } else {
        return false;
    }
}

/// What `from` lost when it became `to`, for isLost(). Between integers the sign has to last as well: -56
/// comes back as the 200 that it was, but it is another number.
///
/// The result is made for loops that OR it over an array: it is as wide as the number, and no comparison that
/// SSE2 lacks (that of 64-bit integers, and a road from one of doubles to integers) stands in its way.
template <class From, class To>
BitsOf<From> lossOf(From from, To to) noexcept {
    const From back = convertNumber<From>(to);
    if constexpr (std::is_integral_v<From> && std::is_integral_v<To>) {
        constexpr bool mayChangeSign = std::is_signed_v<From> != std::is_signed_v<To>;
        const BitsOf<From> hasChangedSign = mayChangeSign && isNegative(from) != isNegative(to);
        return static_cast<BitsOf<From>>((bitsOf(from) ^ bitsOf(back)) | hasChangedSign);
    } else if constexpr (std::is_integral_v<To>) {
        return bitsOf(back - from);
    } else {
        return bitsOf(from == back ? From(0) : From(1));
    }
}

/// Whether any of the losses that were ORed is one. What comes back from an integer is finite, so that its
/// difference from the same number is a zero, of either sign.
template <class From, class To>
constexpr bool isLost(BitsOf<From> losses) noexcept {
    constexpr bool isDifference = std::is_floating_point_v<From> && std::is_integral_v<To>;
    return static_cast<BitsOf<From>>(isDifference ? losses << 1 : losses) != 0;
}

/// Whether every `From` survives, so that no test is worth its time. No floating type is among them: a NaN
/// never equals what comes back.
template <class From, class To>
constexpr bool alwaysSurvives() noexcept {
    using Source = std::numeric_limits<From>;
    using Target = std::numeric_limits<To>;
    return Source::is_integer && (Target::is_signed || !Source::is_signed) &&
           Source::digits <= Target::digits;
}

} // namespace Zelm::details
