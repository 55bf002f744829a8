#include "Number.h"

#include <array>
#include <charconv>
#include <cmath>

namespace measurement {
namespace {

/// True if all of `text` is a number that T holds.
template <class T>
bool readWith(std::string_view text, T& value, bool& isOutOfRange) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    isOutOfRange = error == std::errc::result_out_of_range;
    return error == std::errc() && end == text.data() + text.size();
}

} // namespace

std::optional<double> parseNumber(std::string_view text) {
    if (text.size() > 1 && text[0] == '+' && text[1] != '-') {
        text.remove_prefix(1);
    }
    double value = 0.0;
    bool isOutOfRange = false;
    if (readWith(text, value, isOutOfRange)) {
        return std::isfinite(value) ? std::optional(value) : std::nullopt;
    }
    // from_chars reports too large and too small alike; the wider type tells them apart.
    long double wide = 0.0L;
    if (isOutOfRange && readWith(text, wide, isOutOfRange) && std::abs(wide) < 1.0L) {
        return 0.0;
    }
    return std::nullopt;
}

std::string shortestText(double value) {
    std::array<char, 32> buffer;
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    return std::string(buffer.data(), result.ptr);
}

} // namespace measurement
