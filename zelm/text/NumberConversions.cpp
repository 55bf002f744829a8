#include <zelm/text/AsciiCase.h>
#include <zelm/text/Decimal.h>
#include <zelm/text/DoubleDigits.h>
#include <zelm/text/TextConversions.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <stdexcept>

namespace Zelm {

namespace {

/// Goes over a text from the front, one part of a number's grammar at a time.
class Scanner {
public:
    explicit Scanner(ZStringView text) noexcept : at_(text.begin()), end_(text.end()) {}

    const char* position() const noexcept { return at_; }

    bool take(char c) noexcept {
        const bool taken = at_ != end_ && *at_ == c;
        at_ += taken;
        return taken;
    }
    /// Appends digits to a value, which wraps around where there are too many, and returns their number.
    std::size_t takeDigits(std::uint64_t& value) noexcept {
        const char* const start = at_;
        for (; at_ != end_ && details::isDigit(*at_); ++at_) {
            value = 10 * value + static_cast<std::uint64_t>(*at_ - '0');
        }
        return static_cast<std::size_t>(at_ - start);
    }
    /// Takes one sign or none and tells whether it is a minus.
    bool takeMinus() noexcept { return !take('+') && take('-'); }
    void takeBlanks() noexcept {
        while (take(' ') || take('\t')) {}
    }
    /// What may follow a number: blanks and tabs, then one newline at the very end.
    bool takeRest() noexcept {
        takeBlanks();
        take('\n');
        return at_ == end_;
    }

private:
    const char* at_;
    const char* end_;
};

/// A number as it stands in a text.
struct Number {
    /// Without a plus sign, as `std::from_chars` wants it.
    std::string_view text;
    bool negative = false;
    /// Whether the magnitude is `digits` times 10^`power`; there may be too many digits to tell.
    bool isShort = false;
    std::uint64_t digits = 0;
    std::int64_t power = 0;
};

/// The number in a text; nothing if the text is not valid.
std::optional<Number> numberIn(ZStringView text) noexcept {
    constexpr std::size_t kDigitsThatFit = 19;
    constexpr std::size_t kPowerDigitsThatFit = 9;
    Number number;
    Scanner scanner(text);
    scanner.takeBlanks();
    number.negative = scanner.takeMinus();
    const char* const start = scanner.position();
    const std::size_t whole = scanner.takeDigits(number.digits);
    const std::size_t fraction = scanner.take('.') ? scanner.takeDigits(number.digits) : 0;
    if (whole + fraction == 0) {
        return std::nullopt;
    }
    std::uint64_t power = 0;
    std::size_t powerDigits = 0;
    if (scanner.take('e') || scanner.take('E')) {
        const bool negativePower = scanner.takeMinus();
        powerDigits = scanner.takeDigits(power);
        if (powerDigits == 0) {
            return std::nullopt;
        }
        power = negativePower ? 0 - power : power;
    }
    number.isShort = whole + fraction <= kDigitsThatFit && powerDigits <= kPowerDigitsThatFit;
    number.power = static_cast<std::int64_t>(power - fraction);
    number.text = {start - number.negative,
                   static_cast<std::size_t>(scanner.position() - start) + number.negative};
    return scanner.takeRest() ? std::optional(number) : std::nullopt;
}

/// The decimal exponent behind an 'e', held within bounds that no length of a text reaches.
std::int64_t exponentIn(std::string_view digits) noexcept {
    constexpr std::int64_t limit = std::int64_t{1} << 62;
    if (!digits.empty() && digits.front() == '+') {
        digits.remove_prefix(1);
    }
    std::int64_t exponent = 0;
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), exponent);
    if (result.ec == std::errc::result_out_of_range) {
        exponent = digits.front() == '-' ? -limit : limit;
    }
    return std::clamp(exponent, -limit, limit);
}

/// The infinity or zero of a number that no double comes near: the power of ten of its first digit that is
/// not zero tells them apart.
double beyondRange(std::string_view number) noexcept {
    const bool negative = number.front() == '-';
    number.remove_prefix(negative);
    const std::size_t mantissaLength = std::min(number.find_first_of("eE"), number.size());
    const std::string_view mantissa = number.substr(0, mantissaLength);
    const auto point = static_cast<std::int64_t>(std::min(mantissa.find('.'), mantissa.size()));
    const std::size_t firstDigit = mantissa.find_first_not_of("0.");
    double magnitude = 0.0;
    if (firstDigit != std::string_view::npos) {
        const std::int64_t shift = point - static_cast<std::int64_t>(firstDigit);
        const std::string_view exponent = number.substr(std::min(mantissaLength + 1, number.size()));
        magnitude = shift + exponentIn(exponent) > 0 ? std::numeric_limits<double>::infinity() : 0.0;
    }
    return negative ? -magnitude : magnitude;
}

double valueOf(const Number& number) noexcept {
    if (number.isShort) {
        if (const auto magnitude = details::nearestDouble(number.digits, number.power)) {
            return number.negative ? -*magnitude : *magnitude;
        }
    }
    double value = 0.0;
    const auto result = std::from_chars(number.text.data(), number.text.data() + number.text.size(), value);
    return result.ec == std::errc::result_out_of_range ? beyondRange(number.text) : value;
}

double validValue(ZStringView text) {
    const auto number = numberIn(text);
    if (!number) {
        throw std::runtime_error("Expected a string containing a number");
    }
    return valueOf(*number);
}

/// Rounded half away from zero; nothing if out of range.
std::optional<int> roundedToInt(double value) noexcept {
    if (value < 0 ? value <= -2147483648.5 : value >= 2147483647.5) {
        return std::nullopt;
    }
    return static_cast<int>(value < 0 ? value - 0.5 : value + 0.5);
}

/// The bits of the rounded unsigned number; nothing if out of range, as every negative number is.
std::optional<int> roundedToUnsignedInt(double value) noexcept {
    if (value < 0 || value >= 4294967295.5) {
        return std::nullopt;
    }
    return static_cast<int>(static_cast<std::uint32_t>(static_cast<std::uint64_t>(value + 0.5)));
}

using Rounding = std::optional<int> (*)(double) noexcept;

int rounded(ZStringView text, Rounding rounding) {
    const std::optional<int> result = rounding(validValue(text));
    if (!result) {
        throw_checked_round_range_error();
    }
    return *result;
}

int roundedOrZero(ZStringView text, Rounding rounding, bool* ok) noexcept {
    const auto number = numberIn(text);
    const std::optional<int> result = number ? rounding(valueOf(*number)) : std::nullopt;
    if (ok) {
        *ok = result.has_value();
    }
    return result.value_or(0);
}

} // namespace

bool isValidInt(const ZString& text) noexcept {
    Scanner scanner(text);
    scanner.takeBlanks();
    scanner.takeMinus();
    std::uint64_t value = 0;
    return scanner.takeDigits(value) != 0 && scanner.takeRest();
}

bool isValidNumber(const ZString& text) noexcept {
    return numberIn(text).has_value();
}

double toDouble(const ZString& text) {
    return validValue(text);
}

double toDouble_nothrow(const ZString& text, bool* ok) noexcept {
    const auto number = numberIn(text);
    if (ok) {
        *ok = number.has_value();
    }
    return number ? valueOf(*number) : 0.0;
}

int toInt(const ZString& text) {
    return rounded(text, roundedToInt);
}

int toInt_nothrow(const ZString& text, bool* ok) noexcept {
    return roundedOrZero(text, roundedToInt, ok);
}

int toUnsignedInt(const ZString& text) {
    return rounded(text, roundedToUnsignedInt);
}

int toUnsignedInt_nothrow(const ZString& text, bool* ok) noexcept {
    return roundedOrZero(text, roundedToUnsignedInt, ok);
}

void throw_checked_round_range_error() {
    throw std::range_error("Overflow occured while rounding double precision value to 32-bit integer");
}

void throw_checked_truncate_range_error() {
    throw std::range_error("Overflow occured while truncating double precision value to 32-bit integer");
}

ZString fromInt(int value, int width) {
    return details::decimal(value, width);
}

ZString fromUnsignedInt(unsigned int value, int width) {
    return details::decimal(value, width);
}

ZString fromDouble(double value, char format, int precision, int width) {
    // The digits before the point of the largest double, its sign, the point, and an exponent.
    constexpr std::size_t kWithoutPrecision = 330;
    // A double has no more significant digits; in the general form zeros at the end are dropped.
    constexpr int kMostDigits = 800;
    const bool upper = format == 'E' || format == 'G';
    const auto style = format == 'f'                    ? std::chars_format::fixed
                       : format == 'e' || format == 'E' ? std::chars_format::scientific
                                                        : std::chars_format::general;
    if (precision < 0) {
        precision = 6;
    } else if (style == std::chars_format::general) {
        precision = std::min(precision, kMostDigits);
    }
    char shortBuffer[kWithoutPrecision + 64];
    std::string longBuffer;
    char* buffer = shortBuffer;
    std::size_t size = kWithoutPrecision + static_cast<std::size_t>(precision);
    if (size > sizeof shortBuffer) {
        longBuffer.resize(size);
        buffer = longBuffer.data();
    }
    const char* const end = details::writeDouble(buffer, buffer + size, value, style, precision);
    size = static_cast<std::size_t>(end - buffer);
    if (upper) {
        std::transform(buffer, buffer + size, buffer, details::toUpper);
    }
    if (buffer == shortBuffer || width != 0) {
        return details::padded({buffer, size}, width);
    }
    longBuffer.resize(size);
    return ZString(std::move(longBuffer));
}

} // namespace Zelm
