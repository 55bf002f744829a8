#include <zelm/json/JsonSinks.h>

#include <charconv>
#include <cmath>

namespace Zelm::details {

namespace {

/// Room for every number of 64 bits and every double of 17 digits: "-2.2250738585072014e-308".
constexpr std::size_t kNumberLength = 32;

template <class... Arguments>
void appendNumber(std::string& text, Arguments... arguments) {
    char digits[kNumberLength];
    const std::to_chars_result end = std::to_chars(digits, digits + kNumberLength, arguments...);
    text.append(digits, end.ptr);
}

/// Whether the digits of a double are those of an integer, which come several times as fast. Those of -0.0
/// are not.
bool isExactInteger(double value) {
    constexpr double kAllIntegersBelow = 9007199254740992.0; // 2^53
    return std::abs(value) < kAllIntegersBelow && std::trunc(value) == value &&
           (value != 0 || !std::signbit(value));
}

bool needsEscape(unsigned char character) {
    return character < 0x20 || character == '"' || character == '\\';
}

} // namespace

void JsonTextSink::integer(std::int64_t value) {
    separate();
    appendNumber(text_, value);
}

void JsonTextSink::unsignedInteger(std::uint64_t value) {
    separate();
    appendNumber(text_, value);
}

void JsonTextSink::real(double value) {
    if (isExactInteger(value)) {
        integer(static_cast<std::int64_t>(value));
    } else if (std::isfinite(value)) {
        separate();
        appendNumber(text_, value, std::chars_format::general, 17);
    } else if (std::isnan(value)) {
        null();
    } else {
        word(value > 0 ? "1e+9999" : "-1e+9999");
    }
}

void JsonTextSink::string(ZStringView value) {
    separate();
    text_ += '"';
    const char* plain = value.begin();
    for (const char* position = plain; position != value.end(); ++position) {
        const auto character = static_cast<unsigned char>(*position);
        if (needsEscape(character)) {
            text_.append(plain, position);
            escaped(character);
            plain = position + 1;
        }
    }
    text_.append(plain, value.end());
    text_ += '"';
}

void JsonTextSink::escaped(unsigned char character) {
    constexpr char kHexDigits[] = "0123456789abcdef";
    text_ += '\\';
    switch (character) {
    case '"':
    case '\\':
        text_ += static_cast<char>(character);
        break;
    case '\b':
        text_ += 'b';
        break;
    case '\f':
        text_ += 'f';
        break;
    case '\n':
        text_ += 'n';
        break;
    case '\r':
        text_ += 'r';
        break;
    case '\t':
        text_ += 't';
        break;
    default:
        text_ += "u00";
        text_ += kHexDigits[character >> 4];
        text_ += kHexDigits[character & 0xF];
    }
}

} // namespace Zelm::details
