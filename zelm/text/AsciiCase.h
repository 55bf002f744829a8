#pragma once

#include <cstddef>
#include <type_traits>

namespace Zelm::details {

/// The case of 'A' to 'Z' and 'a' to 'z' alone, in every locale; without branches, so that loops vectorise.
constexpr bool isBetween(char c, char first, char last) noexcept {
    return static_cast<unsigned char>(c - first) <= static_cast<unsigned char>(last - first);
}
constexpr char toLower(char c) noexcept {
    return static_cast<char>(c ^ (isBetween(c, 'A', 'Z') << 5));
}
constexpr char toUpper(char c) noexcept {
    return static_cast<char>(c ^ (isBetween(c, 'a', 'z') << 5));
}

/// Whether every unit is below 128: block by block, since a loop without a way out vectorises.
template <class Unit>
bool isAscii(const Unit* text, std::size_t count) noexcept {
    using Bits = std::make_unsigned_t<Unit>;
    const auto isAll = [](const Unit* block, std::size_t size) {
        Bits bits = 0;
        for (std::size_t i = 0; i < size; ++i) {
            bits = static_cast<Bits>(bits | static_cast<Bits>(block[i]));
        }
        return bits < 128;
    };
    constexpr std::size_t kBlock = 64;
    for (; count >= kBlock; text += kBlock, count -= kBlock) {
        if (!isAll(text, kBlock)) {
            return false;
        }
    }
    return isAll(text, count);
}

} // namespace Zelm::details
