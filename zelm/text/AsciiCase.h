#pragma once

namespace Zelm::details {

/// Letters by ASCII alone, whatever the locale; all other bytes stay.
constexpr char toLowerAscii(char c) noexcept {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}
constexpr char toUpperAscii(char c) noexcept {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - ('a' - 'A')) : c;
}

} // namespace Zelm::details
