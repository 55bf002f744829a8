#include <zelm/text/DoubleDigits.h>

#include <zelm/text/PowersOfTen.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>

namespace Zelm::details {

namespace {

constexpr int kMostDigits = 17;
constexpr int kMantissaBits = 52;
constexpr int kExponentBias = 1023;
constexpr std::uint64_t kImplicitBit = std::uint64_t{1} << kMantissaBits;

/// The zeros above the first bit that is set.
int leadingZeros(std::uint64_t bits) noexcept {
    return __builtin_clzll(bits);
}

/// A positive double as `significand` * 2^(`exponent` - 63), its first bit set.
struct Binary {
    std::uint64_t significand;
    int exponent;

    explicit Binary(double value) noexcept {
        std::uint64_t bits = 0;
        std::memcpy(&bits, &value, sizeof bits);
        const std::uint64_t mantissa = bits & (kImplicitBit - 1);
        const int biased = static_cast<int>(bits >> kMantissaBits & 0x7FF);
        const std::uint64_t full = biased ? mantissa | kImplicitBit : mantissa;
        const int zeros = leadingZeros(full);
        significand = full << zeros;
        exponent = std::max(biased, 1) - kExponentBias + (63 - kMantissaBits) - zeros;
    }
};

/// The integer nearest to a double times a power of ten.
class ScaledDouble {
public:
    ScaledDouble(Binary value, int power) noexcept
        : product_(timesPowerOfTen(value.significand, power)),
          // The two significands have their points behind the first bit, the product behind the second.
          fractionBits_(62 - value.exponent - floorLog2OfPowerOfTen(power)) {}

    /// Whether the integer part has at most 58 bits and takes more than a look at the exponent.
    bool isInReach() const noexcept { return fractionBits_ >= 6 && fractionBits_ <= 63; }
    std::uint64_t integerPart() const noexcept { return product_.high >> fractionBits_; }
    std::optional<std::uint64_t> nearest() const noexcept { return rounded(product_, fractionBits_); }

private:
    WideNumber product_;
    int fractionBits_;
};

/// `count` significant digits, the first of which stands for 10^`exponent`.
struct Decimal {
    std::uint64_t digits;
    int exponent;
};

std::optional<Decimal> roundedTo(int count, double value) noexcept {
    const Binary binary(value);
    int exponent = floorLog10OfPowerOfTwo(binary.exponent);
    ScaledDouble scaled(binary, count - 1 - exponent);
    if (scaled.integerPart() >= kSmallPowersOfTen[static_cast<std::size_t>(count)]) {
        ++exponent;
        scaled = ScaledDouble(binary, count - 1 - exponent);
    }
    const std::optional<std::uint64_t> digits = scaled.nearest();
    if (!digits) {
        return std::nullopt;
    }
    if (*digits == kSmallPowersOfTen[static_cast<std::size_t>(count)]) {
        return Decimal{*digits / 10, exponent + 1};
    }
    return Decimal{*digits, exponent};
}

constexpr auto kPairs = [] {
    std::array<char, 200> pairs{};
    for (std::size_t i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}();

void writePair(char* out, std::uint32_t value) noexcept {
    std::memcpy(out, &kPairs[2 * value], 2);
}

void writeEightDigits(char* out, std::uint32_t value) noexcept {
    const std::uint32_t upper = value / 10000;
    const std::uint32_t lower = value % 10000;
    writePair(out, upper / 100);
    writePair(out + 2, upper % 100);
    writePair(out + 4, lower / 100);
    writePair(out + 6, lower % 100);
}

/// The last `count` digits of a value, with zeros before it.
void writeDigits(char* out, std::uint64_t value, int count) noexcept {
    for (; count >= 8; count -= 8, value /= 100000000) {
        writeEightDigits(out + count - 8, static_cast<std::uint32_t>(value % 100000000));
    }
    auto rest = static_cast<std::uint32_t>(value);
    for (; count >= 2; count -= 2, rest /= 100) {
        writePair(out + count - 2, rest % 100);
    }
    if (count != 0) {
        *out = static_cast<char>('0' + rest % 10);
    }
}

/// Digits with room behind them, so that runs of any length up to the longest can be copied as one block of
/// a fixed size.
struct DigitBuffer {
    static constexpr std::size_t kBlock = 24;
    char digits[2 * kBlock];

    void copyTo(char* out, int from) const noexcept { std::memcpy(out, digits + from, kBlock); }
};

char* writeExponent(char* out, int exponent) noexcept {
    *out++ = 'e';
    *out++ = exponent < 0 ? '-' : '+';
    const auto magnitude = static_cast<std::uint32_t>(std::abs(exponent));
    if (magnitude >= 100) {
        *out++ = static_cast<char>('0' + magnitude / 100);
    }
    writePair(out, magnitude % 100);
    return out + 2;
}

/// The digits with the point behind the first `whole` of them, if any stand there.
char* writeWithPoint(char* out, const DigitBuffer& buffer, int count, int whole) noexcept {
    buffer.copyTo(out, 0);
    if (count <= whole) {
        return out + whole;
    }
    out[whole] = '.';
    buffer.copyTo(out + whole + 1, whole);
    return out + count + 1;
}

char* writeScientific(char* out, const DigitBuffer& buffer, int count, int exponent) noexcept {
    return writeExponent(writeWithPoint(out, buffer, count, 1), exponent);
}

/// The form of "%g": without zeros at the end, scientific for the very small and for what has more digits
/// before the point than are kept.
char* writeGeneral(char* out, const DigitBuffer& buffer, int precision, int exponent) noexcept {
    int count = precision;
    while (count > 1 && buffer.digits[count - 1] == '0') {
        --count;
    }
    if (exponent < -4 || exponent >= precision) {
        return writeScientific(out, buffer, count, exponent);
    }
    if (exponent >= 0) {
        return writeWithPoint(out, buffer, count, exponent + 1);
    }
    std::memcpy(out, "0.000", 5);
    out += 1 - exponent;
    buffer.copyTo(out, 0);
    return out + count;
}

/// "%e" and "%g" of a positive number; null if its digits are not found in this way.
char* writeSignificant(char* out, double value, bool general, int precision) noexcept {
    const int count = general ? std::max(precision, 1) : precision + 1;
    if (count > kMostDigits) {
        return nullptr;
    }
    const std::optional<Decimal> decimal = roundedTo(count, value);
    if (!decimal) {
        return nullptr;
    }
    DigitBuffer buffer;
    writeDigits(buffer.digits, decimal->digits, count);
    return general ? writeGeneral(out, buffer, count, decimal->exponent)
                   : writeScientific(out, buffer, count, decimal->exponent);
}

/// "%f" of a positive number; null if its digits are not found in this way.
char* writeFixed(char* out, double value, int precision) noexcept {
    if (precision > kMostDigits) {
        return nullptr;
    }
    const ScaledDouble scaled(Binary(value), precision);
    const std::optional<std::uint64_t> digits =
        scaled.isInReach() ? scaled.nearest() : std::optional<std::uint64_t>();
    if (!digits) {
        return nullptr;
    }
    int count = precision + 1;
    while (*digits >= kSmallPowersOfTen[static_cast<std::size_t>(count)]) {
        ++count;
    }
    DigitBuffer buffer;
    writeDigits(buffer.digits, *digits, count);
    return writeWithPoint(out, buffer, count, count - precision);
}

} // namespace

char* writeDouble(char* begin, char* end, double value, std::chars_format format, int precision) noexcept {
    const double magnitude = std::abs(value);
    if (magnitude > 0 && magnitude <= std::numeric_limits<double>::max()) {
        *begin = '-';
        char* const start = begin + (value < 0);
        char* const written =
            format == std::chars_format::fixed
                ? writeFixed(start, magnitude, precision)
                : writeSignificant(start, magnitude, format == std::chars_format::general, precision);
        if (written) {
            return written;
        }
    }
    return std::to_chars(begin, end, value, format, precision).ptr;
}

std::optional<double> nearestDouble(std::uint64_t digits, std::int64_t power) noexcept {
    if (digits == 0) {
        return 0.0;
    }
    if (power < kLowestPowerOfTen || power > kHighestPowerOfTen) {
        return std::nullopt;
    }
    const int zeros = leadingZeros(digits);
    const WideNumber product = timesPowerOfTen(digits << zeros, static_cast<int>(power));
    // The product's first bit is that of the upper word or the one below.
    const int upperBit = static_cast<int>(product.high >> 63);
    const int exponent = 63 - zeros + floorLog2OfPowerOfTen(static_cast<int>(power)) + upperBit;
    if (exponent < 1 - kExponentBias || exponent >= kExponentBias) {
        return std::nullopt;
    }
    const std::optional<std::uint64_t> mantissa = rounded(product, 62 - kMantissaBits + upperBit);
    if (!mantissa) {
        return std::nullopt;
    }
    // A mantissa that was rounded up to the next power of two carries into the exponent.
    const std::uint64_t bits =
        (static_cast<std::uint64_t>(exponent + kExponentBias - 1) << kMantissaBits) + *mantissa;
    double value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

} // namespace Zelm::details
