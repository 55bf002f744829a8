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

/// Whether every unit is below 128. One pass without a branch, which vectorises.
template <class Unit>
bool isAscii(const Unit* text, std::size_t count) noexcept {
    std::make_unsigned_t<Unit> bits = 0;
    for (std::size_t i = 0; i < count; ++i) {
        bits =
            static_cast<std::make_unsigned_t<Unit>>(bits | static_cast<std::make_unsigned_t<Unit>>(text[i]));
    }
    return bits < 128;
}

} // namespace Zelm::details
