#pragma once

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

} // namespace Zelm::details
