#include <zelm/json/JsonSinks.h>

#include <zelm/text/DoubleDigits.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

namespace Zelm::details {

namespace {

/// Room for every number of 64 bits and for a comma.
constexpr std::size_t kIntegerRoom = 24;

template <class Integer>
void writeInteger(ChunkedText& text, Integer value) {
    char* const out = text.room(kIntegerRoom);
    char* const end = std::to_chars(out, out + kIntegerRoom, value).ptr;
    *end = ',';
    text.endAt(end + 1);
}

/// Whether the digits of a double are those of an integer, which come several times as fast. Those of -0.0
/// are not.
bool isExactInteger(double value) {
    constexpr double kAllIntegersBelow = 9007199254740992.0; // 2^53
    return std::abs(value) < kAllIntegersBelow && std::trunc(value) == value &&
           (value != 0 || !std::signbit(value));
}

bool needsEscape(char character) {
    return static_cast<unsigned char>(character) < 0x20 || character == '"' || character == '\\';
}

/// Whether any of eight bytes needs an escape: a byte is below `n` (up to 0x80) if subtracting `n` sets its
/// first bit, which it did not have. A borrow from the next byte can only come from one that is below too.
bool anyNeedsEscape(std::uint64_t bytes) {
    constexpr std::uint64_t kEach = 0x0101010101010101;
    const auto below = [](std::uint64_t x, std::uint64_t n) { return (x - n * kEach) & ~x; };
    const std::uint64_t found =
        below(bytes, 0x20) | below(bytes ^ '"' * kEach, 1) | below(bytes ^ '\\' * kEach, 1);
    return (found & 0x80 * kEach) != 0;
}

const char* findEscape(const char* begin, const char* end) {
    std::uint64_t bytes = 0;
    for (; end - begin >= 8; begin += 8) {
        std::memcpy(&bytes, begin, 8);
        if (anyNeedsEscape(bytes)) {
            break;
        }
    }
    return std::find_if(begin, end, needsEscape);
}

/// The character behind the backslash; 'u' if it takes a number.
char escapeOf(char character) {
    switch (character) {
    case '\b':
        return 'b';
    case '\f':
        return 'f';
    case '\n':
        return 'n';
    case '\r':
        return 'r';
    case '\t':
        return 't';
    default:
        return static_cast<unsigned char>(character) < 0x20 ? 'u' : character;
    }
}

} // namespace

void JsonTextSink::integer(std::int64_t value) {
    writeInteger(text_, value);
}

void JsonTextSink::unsignedInteger(std::uint64_t value) {
    writeInteger(text_, value);
}

void JsonTextSink::real(double value) {
    if (isExactInteger(value)) {
        integer(static_cast<std::int64_t>(value));
    } else if (std::isfinite(value)) {
        char* const out = text_.room(kShortDoubleRoom);
        char* const end = writeDouble(out, out + kShortDoubleRoom, value, std::chars_format::general, 17);
        *end = ',';
        text_.endAt(end + 1);
    } else if (std::isnan(value)) {
        null();
    } else if (value > 0) {
        word("1e+9999");
    } else {
        word("-1e+9999");
    }
}

void JsonTextSink::string(ZStringView value) {
    const char* const escape = findEscape(value.begin(), value.end());
    if (escape == value.end()) {
        plainString(value);
    } else {
        writeEscaped(value, escape);
    }
}

void JsonTextSink::writeEscaped(ZStringView text, const char* escape) {
    constexpr char kHexDigits[] = "0123456789abcdef";
    append("\"", 1);
    const char* plain = text.begin();
    for (; escape != text.end(); escape = findEscape(plain, text.end())) {
        append(plain, static_cast<std::size_t>(escape - plain));
        const char letter = escapeOf(*escape);
        const char escaped[] = {
            '\\', letter, '0', '0', kHexDigits[*escape >> 4 & 1], kHexDigits[*escape & 0xF]};
        append(escaped, letter == 'u' ? 6 : 2);
        plain = escape + 1;
    }
    append(plain, static_cast<std::size_t>(text.end() - plain));
    append("\",", 2);
}

} // namespace Zelm::details
