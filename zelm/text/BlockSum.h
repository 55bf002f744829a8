#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace Zelm::details {

/// The sum of `term(i)`, each from 0 to 3, for all `i` below `count`: in blocks whose sums fit 16 bits, which
/// vectorise.
template <class Term>
std::size_t blockSum(std::size_t count, Term term) noexcept {
    constexpr std::size_t kBlock = 0x4000;
    std::size_t sum = 0;
    for (std::size_t start = 0; start < count; start += kBlock) {
        const std::size_t end = std::min(count, start + kBlock);
        std::uint16_t part = 0;
        for (std::size_t i = start; i < end; ++i) {
            part = static_cast<std::uint16_t>(part + term(i));
        }
        sum += part;
    }
    return sum;
}

} // namespace Zelm::details
