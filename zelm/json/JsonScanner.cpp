#include <zelm/json/JsonScanner.h>

#include <zelm/text/Decimal.h>
#include <zelm/text/Utf16.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>

namespace Zelm::details {

namespace {

/// Whether the parser, too, reads `digits` as this number. It takes what has neither point nor exponent for
/// an integer of 64 bits first and rounds it in steps of its own if no double is equal to it.
bool isReadAlike(std::string_view digits, double magnitude) noexcept {
    constexpr double kAllIntegersBelow = 9007199254740992.0;   // 2^53
    constexpr double kNoIntegersFrom = 18446744073709551616.0; // 2^64
    if (magnitude < kAllIntegersBelow || magnitude > kNoIntegersFrom) {
        return true;
    }
    std::uint64_t integer = 0;
    const char* const end = digits.data() + digits.size();
    const std::from_chars_result result = std::from_chars(digits.data(), end, integer);
    const bool isInteger = result.ec == std::errc() && result.ptr == end;
    return !isInteger || (magnitude < kNoIntegersFrom && static_cast<std::uint64_t>(magnitude) == integer);
}

} // namespace

bool JsonScanner::skipBehind(std::string_view text) noexcept {
    const std::string_view rest(position_, static_cast<std::size_t>(end_ - position_));
    const std::size_t found = rest.find(text);
    if (found == std::string_view::npos) {
        return false;
    }
    position_ += found + text.size();
    return true;
}

bool JsonScanner::string(std::string& text) {
    return anyString(text);
}

bool JsonScanner::string(ZString& text) {
    return anyString(text);
}

template <class Text>
bool JsonScanner::anyString(Text& text) {
    if (!accept("\"")) {
        return false;
    }
    const auto find = [this](char character, const char* end) {
        return static_cast<const char*>(
            std::memchr(position_, character, static_cast<std::size_t>(end - position_)));
    };
    const char* const quote = find('"', end_);
    if (!quote) {
        return false;
    }
    if (!find('\\', quote)) {
        text = Text(position_, static_cast<std::size_t>(quote - position_));
        position_ = quote + 1;
        return true;
    }
    std::string unescaped;
    const bool isRead = escapedString(unescaped);
    text = std::move(unescaped);
    return isRead;
}

bool JsonScanner::escapedString(std::string& text) {
    while (true) {
        const char* const plain = position_;
        while (position_ != end_ && *position_ != '"' && *position_ != '\\') {
            ++position_;
        }
        text.append(plain, position_);
        if (accept("\"")) {
            return true;
        }
        if (!accept("\\") || !escape(text)) {
            return false;
        }
    }
}

bool JsonScanner::escape(std::string& text) {
    constexpr std::string_view kEscapes = "\"\\/bfnrt";
    constexpr std::string_view kCharacters = "\"\\/\b\f\n\r\t";
    if (accept("u")) {
        return codeUnit(text);
    }
    const std::size_t index = kEscapes.find(*position_);
    if (index == std::string_view::npos) {
        return false;
    }
    text += kCharacters[index];
    ++position_;
    return true;
}

/// Surrogates, which the writer does not escape and parsers take in ways of their own, are not expected.
bool JsonScanner::codeUnit(std::string& text) {
    constexpr std::ptrdiff_t kDigits = 4;
    if (end_ - position_ < kDigits) {
        return false;
    }
    unsigned int unit = 0;
    if (std::from_chars(position_, position_ + kDigits, unit, 16).ptr != position_ + kDigits ||
        (unit >= 0xd800 && unit < 0xe000)) {
        return false;
    }
    position_ += kDigits;
    const auto character = static_cast<char16_t>(unit);
    text += utf16ToUtf8({&character, 1});
    return true;
}

bool JsonScanner::real(double& value) noexcept {
    const char* const start = position_;
    const bool isNegative = *start == '-';
    if (!isDigit(start[isNegative])) {
        value = 0;
        return accept("null");
    }
    const std::from_chars_result result = std::from_chars(start, end_, value);
    position_ = result.ptr;
    const std::string_view digits(start + isNegative,
                                  static_cast<std::size_t>(result.ptr - start) - isNegative);
    if (result.ec != std::errc()) {
        const double infinity = std::numeric_limits<double>::infinity();
        value = isNegative ? -infinity : infinity;
        return digits == kJsonInfinity;
    }
    if (isNegative && value == 0) {
        value = 0; // the integer -0 has no sign
        return digits == "0";
    }
    return isReadAlike(digits, std::abs(value));
}

/// By way of a double, as for the parser.
bool JsonScanner::real(float& value) noexcept {
    double exact = 0;
    const bool isRead = real(exact);
    value = static_cast<float>(exact);
    return isRead;
}

bool JsonScanner::boolean(bool& value) noexcept {
    value = accept("true");
    return value || accept("false");
}

} // namespace Zelm::details
