#pragma once

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace Zelm::details {

/// The bytes that writeDouble() may touch where the precision is 17 or less, save those of large numbers in
/// fixed form.
constexpr std::size_t kShortDoubleRoom = 48;

/// Writes the bytes of `std::to_chars` with a precision, several times as fast up to 17 digits, and returns
/// their end. The room must hold kShortDoubleRoom bytes and the text.
char* writeDouble(char* begin, char* end, double value, std::chars_format format, int precision) noexcept;

/// The double that is nearest to `digits` times 10^`power`; nothing where telling it takes more than a
/// multiplication: next to a tie, among subnormals, out of range.
std::optional<double> nearestDouble(std::uint64_t digits, std::int64_t power) noexcept;

} // namespace Zelm::details
