#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace Zelm::details {

/// A number of 128 bits.
struct WideNumber {
    std::uint64_t high = 0;
    std::uint64_t low = 0;
};

/// Every power of ten that makes an integer of up to 17 digits of a double, or a double that is not subnormal
/// of up to 19 digits.
constexpr int kLowestPowerOfTen = -330;
constexpr int kHighestPowerOfTen = 340;
/// Their leading 128 bits, the first of which is set; the bits below are cut off.
extern const std::array<WideNumber, kHighestPowerOfTen - kLowestPowerOfTen + 1> kPowersOfTen;

/// 10^0 to 10^19, exactly.
constexpr auto kSmallPowersOfTen = [] {
    std::array<std::uint64_t, 20> powers{1};
    for (std::size_t i = 1; i < powers.size(); ++i) {
        powers[i] = 10 * powers[i - 1];
    }
    return powers;
}();

/// The largest n with 2^n <= 10^power, for the powers of the table.
constexpr int floorLog2OfPowerOfTen(int power) noexcept {
    return (power * 1741647) >> 19;
}
/// The largest n with 10^n <= 2^exponent, for the exponents of doubles.
constexpr int floorLog10OfPowerOfTwo(int exponent) noexcept {
    return (exponent * 1262611) >> 22;
}

constexpr WideNumber product(std::uint64_t a, std::uint64_t b) noexcept {
#ifdef __SIZEOF_INT128__
    __extension__ using Wide = unsigned __int128;
    const Wide wide = static_cast<Wide>(a) * b;
    return {static_cast<std::uint64_t>(wide >> 64), static_cast<std::uint64_t>(wide)};
#else
    const auto half = [](std::uint64_t x) { return x & 0xFFFFFFFF; };
    const std::uint64_t low = half(a) * half(b);
    const std::uint64_t middle = (a >> 32) * half(b) + (low >> 32);
    const std::uint64_t middleToo = half(a) * (b >> 32) + half(middle);
    return {(a >> 32) * (b >> 32) + (middle >> 32) + (middleToo >> 32), middleToo << 32 | half(low)};
#endif
}

/// The leading 128 of the 192 bits of `significand` times a power of the table. Two bits are cut off here and
/// in the table, each worth less than one unit of the last place: the exact product lies in
/// [result, result + 2).
inline WideNumber timesPowerOfTen(std::uint64_t significand, int power) noexcept {
    const WideNumber& ten = kPowersOfTen[static_cast<std::size_t>(power - kLowestPowerOfTen)];
    WideNumber result = product(significand, ten.high);
    const std::uint64_t carried = product(significand, ten.low).high;
    result.low += carried;
    result.high += result.low < carried;
    return result;
}

/// The upper word of timesPowerOfTen() without its last `bits` bits, 1 to 63, rounded by all that is below
/// them. Nothing if the exact product may be half-way or on the other side of it: this never decides a tie.
inline std::optional<std::uint64_t> rounded(WideNumber number, int bits) noexcept {
    const std::uint64_t half = std::uint64_t{1} << (bits - 1);
    const std::uint64_t rest = number.high & (2 * half - 1);
    const bool atHalf = rest == half && number.low == 0;
    const bool oneUnitBelow = rest == half - 1 && number.low == UINT64_MAX;
    if (atHalf || oneUnitBelow) {
        return std::nullopt;
    }
    return (number.high >> bits) + (rest >= half);
}

} // namespace Zelm::details
