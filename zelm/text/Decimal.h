#pragma once

#include <zelm/text/Padding.h>

#include <charconv>
#include <iterator>

namespace Zelm::details {

constexpr bool isDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}

/// The digits of an integer, filled up as padded() does.
template <class Integer>
ZString decimal(Integer value, int width) {
    char digits[24];
    const auto result = std::to_chars(std::begin(digits), std::end(digits), value);
    return padded({digits, static_cast<std::size_t>(result.ptr - digits)}, width);
}

} // namespace Zelm::details
