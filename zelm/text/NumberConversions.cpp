#include <zelm/text/AsciiCase.h>
#include <zelm/text/TextConversions.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <system_error>

namespace Zelm {

namespace {

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}
bool isDigit(char c) {
    return c >= '0' && c <= '9';
}
bool isSign(char c) {
    return c == '+' || c == '-';
}

/// Walks over a text and takes what it is asked for.
class Scanner {
public:
    explicit Scanner(ZStringView text) noexcept : position_(text.begin()), end_(text.end()) {}

    const char* position() const noexcept { return position_; }
    bool atEnd() const noexcept { return position_ == end_; }

    template <class Accept>
    bool takeOne(Accept accept) noexcept {
        const bool accepted = !atEnd() && accept(*position_);
        position_ += accepted;
        return accepted;
    }
    template <class Accept>
    bool takeAll(Accept accept) noexcept {
        const char* const before = position_;
        while (takeOne(accept)) {}
        return position_ != before;
    }
    bool takeDigits() noexcept { return takeAll(isDigit); }
    /// Blanks, then one newline at the very end of the text.
    bool takeRest() noexcept {
        takeAll(isBlank);
        takeOne([](char c) { return c == '\n'; });
        return atEnd();
    }

private:
    const char* position_;
    const char* end_;
};

/// Takes a number with its sign, which from_chars() refuses if it is a plus.
bool takeNumber(Scanner& scanner) noexcept {
    scanner.takeOne(isSign);
    bool hasDigits = scanner.takeDigits();
    if (scanner.takeOne([](char c) { return c == '.'; })) {
        hasDigits |= scanner.takeDigits();
    }
    if (!hasDigits) {
        return false;
    }
    if (scanner.takeOne([](char c) { return c == 'e' || c == 'E'; })) {
        scanner.takeOne(isSign);
        return scanner.takeDigits();
    }
    return true;
}

/// Whether a number that is out of the range of double is so for being too large: by the decimal exponent of
/// its first digit that is not 0.
bool isTooLarge(const char* begin, const char* end) {
    constexpr std::int64_t limit = std::numeric_limits<std::int64_t>::max() / 4;
    const char* const exponentMark = std::find_if(begin, end, [](char c) { return c == 'e' || c == 'E'; });
    const char* const point = std::find(begin, exponentMark, '.');
    const char* const leading =
        std::find_if(begin, exponentMark, [](char c) { return c >= '1' && c <= '9'; });
    std::int64_t magnitude = point - leading;
    if (exponentMark != end) {
        const char* digits = exponentMark + 1 + (exponentMark[1] == '+');
        std::int64_t exponent = 0;
        if (std::from_chars(digits, end, exponent).ec == std::errc::result_out_of_range) {
            exponent = *digits == '-' ? -limit : limit;
        }
        magnitude += std::clamp(exponent, -limit, limit);
    }
    return magnitude > 0;
}

/// The number between `begin` and `end`, which takeNumber() has accepted.
double parseNumber(const char* begin, const char* end) {
    begin += *begin == '+';
    double value = 0.0;
    if (std::from_chars(begin, end, value).ec != std::errc::result_out_of_range) {
        return value;
    }
    const bool isNegative = *begin == '-';
    const double magnitude = isTooLarge(begin, end) ? std::numeric_limits<double>::infinity() : 0.0;
    return isNegative ? -magnitude : magnitude;
}

bool tryDouble(ZStringView text, double& value) noexcept {
    Scanner scanner(text);
    scanner.takeAll(isBlank);
    const char* const begin = scanner.position();
    if (!takeNumber(scanner)) {
        return false;
    }
    const char* const end = scanner.position();
    if (!scanner.takeRest()) {
        return false;
    }
    value = parseNumber(begin, end);
    return true;
}

bool tryRound(double value, std::int64_t& rounded) noexcept {
    const bool fits = value > -2147483648.5 && value < 2147483647.5;
    if (fits) {
        rounded = static_cast<std::int64_t>(value < 0 ? value - 0.5 : value + 0.5);
    }
    return fits;
}

bool tryRoundUnsigned(double value, std::int64_t& rounded) noexcept {
    const bool fits = value >= 0 && value < 4294967295.5;
    if (fits) {
        rounded = static_cast<std::int64_t>(value + 0.5);
    }
    return fits;
}

int low32Bits(std::int64_t value) noexcept {
    return static_cast<int>(static_cast<std::uint32_t>(value));
}

template <class Round>
int toRounded(const ZString& text, Round tryRounding) {
    const double value = toDouble(text);
    std::int64_t rounded = 0;
    if (!tryRounding(value, rounded)) {
        throw_checked_round_range_error();
    }
    return low32Bits(rounded);
}

template <class Round>
int toRoundedNothrow(const ZString& text, bool* ok, Round tryRounding) noexcept {
    double value = 0.0;
    std::int64_t rounded = 0;
    const bool valid = tryDouble(text, value) && tryRounding(value, rounded);
    if (ok) {
        *ok = valid;
    }
    return low32Bits(rounded);
}

template <class Integer>
ZString fromInteger(Integer value, int width) {
    char digits[16];
    const auto end = std::to_chars(std::begin(digits), std::end(digits), value).ptr;
    return padString(ZString(digits, static_cast<std::size_t>(end - digits)), width);
}

std::chars_format formatOf(char format) noexcept {
    switch (format) {
    case 'e':
    case 'E':
        return std::chars_format::scientific;
    case 'f':
        return std::chars_format::fixed;
    default:
        return std::chars_format::general;
    }
}

} // namespace

bool isValidInt(const ZString& text) noexcept {
    Scanner scanner(text);
    scanner.takeAll(isBlank);
    scanner.takeOne(isSign);
    return scanner.takeDigits() && scanner.takeRest();
}

bool isValidNumber(const ZString& text) noexcept {
    Scanner scanner(text);
    scanner.takeAll(isBlank);
    return takeNumber(scanner) && scanner.takeRest();
}

double toDouble(const ZString& text) {
    double value = 0.0;
    if (!tryDouble(text, value)) {
        throw std::runtime_error("Expected a string containing a number");
    }
    return value;
}

double toDouble_nothrow(const ZString& text, bool* ok) {
    double value = 0.0;
    const bool valid = tryDouble(text, value);
    if (ok) {
        *ok = valid;
    }
    return value;
}

int toInt(const ZString& text) {
    return toRounded(text, tryRound);
}
int toInt_nothrow(const ZString& text, bool* ok) noexcept {
    return toRoundedNothrow(text, ok, tryRound);
}
int toUnsignedInt(const ZString& text) {
    return toRounded(text, tryRoundUnsigned);
}
int toUnsignedInt_nothrow(const ZString& text, bool* ok) noexcept {
    return toRoundedNothrow(text, ok, tryRoundUnsigned);
}

ZString fromInt(int value, int width) {
    return fromInteger(value, width);
}
ZString fromUnsignedInt(unsigned int value, int width) {
    return fromInteger(value, width);
}

ZString fromDouble(double value, char format, int precision, int width) {
    const int digits = precision < 0 ? 6 : precision;
    // 309 digits before the point, sign, point and exponent, beside the precision. A general format never
    // needs more than the 767 digits of the longest double, since it drops zeros at the end.
    constexpr std::size_t kOverhead = 330;
    constexpr int kLongestGeneral = 800;
    const std::chars_format charsFormat = formatOf(format);
    const int needed = charsFormat == std::chars_format::general ? std::min(digits, kLongestGeneral) : digits;
    std::string text(kOverhead + static_cast<std::size_t>(needed), '\0');
    const auto result = std::to_chars(text.data(), text.data() + text.size(), value, charsFormat, needed);
    text.resize(static_cast<std::size_t>(result.ptr - text.data()));
    if (format == 'E' || format == 'G') {
        std::transform(text.begin(), text.end(), text.begin(), details::toUpperAscii);
    }
    return padString(ZString(std::move(text)), width);
}

void throw_checked_round_range_error() {
    throw std::range_error("Overflow occured while rounding double precision value to 32-bit integer");
}

void throw_checked_truncate_range_error() {
    throw std::range_error("Overflow occured while truncating double precision value to 32-bit integer");
}

} // namespace Zelm
