#pragma once

#include <cstdint>
#include <limits>

namespace Zelm::details {

/// The value that stands for every count or offset too large for 64 bits. No storage reaches it.
inline constexpr std::uint64_t kSaturated = std::numeric_limits<std::uint64_t>::max();

inline std::uint64_t saturatingProduct(std::uint64_t a, std::uint64_t b) noexcept {
    std::uint64_t product = 0;
    return __builtin_mul_overflow(a, b, &product) ? kSaturated : product;
}

inline std::uint64_t saturatingSum(std::uint64_t a, std::uint64_t b) noexcept {
    std::uint64_t sum = 0;
    return __builtin_add_overflow(a, b, &sum) ? kSaturated : sum;
}

} // namespace Zelm::details
