// Numbers against std::regex, strtod and snprintf.

#include <zelm/text/TextConversions.h>

#include <support/ExpectThrow.h>

#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>
#include <regex>

using namespace Zelm;

namespace {

/// Same sign of zero and same NaN too.
bool identical(double a, double b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

std::string printed(double value, char format, int precision) {
    const char pattern[] = {'%', '.', '*', format, '\0'};
    std::string text(static_cast<std::size_t>(std::snprintf(nullptr, 0, pattern, precision, value)), ' ');
    std::snprintf(text.data(), text.size() + 1, pattern, precision, value);
    return text;
}

} // namespace

TEST(Numbers, AreValidByTheirGrammarAndTheNearestDoubles) {
    const std::regex integer("[ \t]*[-+]?[0-9]+[ \t]*\n?");
    const std::regex number("[ \t]*[-+]?([0-9]+\\.?[0-9]*|\\.[0-9]+)([eE][-+]?[0-9]+)?[ \t]*\n?");
    const std::string letters = "001. e+\n-E\t", zeros(400, '0');
    std::vector<std::string> texts{"",
                                   "nan",
                                   "inf",
                                   "0x10",
                                   "1,5",
                                   "1.2.3",
                                   "12\n ",
                                   "1 2",
                                   "12\n\n",
                                   "-+1",
                                   "1e400",
                                   "-1e400",
                                   "1e-400",
                                   "-0",
                                   "1e999999999999999999999",
                                   "-1e-99999999999999999999",
                                   "0e99999999999999999999",
                                   "10e9223372036854775807",
                                   "4.9e-324",
                                   "2.4703282292062327e-324",
                                   "2.4703282292062328e-324",
                                   "1.7976931348623158e308",
                                   "1.7976931348623159e308",
                                   "0." + zeros + "1e401",
                                   "1" + zeros + "e-400",
                                   "1" + zeros + "e-900",
                                   "0." + zeros + "1e901",
                                   "1" + zeros,
                                   "-." + zeros + "1",
                                   std::string("1\0", 2)};
    std::mt19937 random(1);
    for (int round = 0; round < 30000; ++round) {
        std::string& text = texts.emplace_back(random() % 7, ' ');
        std::generate(text.begin(), text.end(), [&] { return letters[random() % letters.size()]; });
    }
    int validIntegers = 0, validNumbers = 0;
    for (const std::string& text : texts) {
        const bool isInteger = std::regex_match(text, integer), isNumber = std::regex_match(text, number);
        ASSERT_EQ(isValidInt(text), isInteger) << '"' << text << '"';
        ASSERT_EQ(isValidNumber(text), isNumber) << '"' << text << '"';
        // Cut out of digits, which must not count.
        const ZString cut = ZString("9" + text + "9").mid(1, text.size());
        bool ok = !isNumber;
        const double value = toDouble_nothrow(cut, &ok);
        ASSERT_TRUE(identical(value, isNumber ? std::strtod(text.c_str(), nullptr) : 0.0))
            << '"' << text << '"';
        ASSERT_TRUE(ok == isNumber && cut.testing_get_ref_count() == 1);
        validIntegers += isInteger;
        validNumbers += isNumber;
    }
    EXPECT_TRUE(validIntegers > 1500 && validNumbers > 3000);
    EXPECT_EQ(toDouble("\t+1.5E+3 \n"), 1500);
}

TEST(Numbers, RoundHalvesAwayFromZeroOrFailWithTheirTexts) {
    const std::pair<const char*, int> rounded[] = {{"2.5", 3},
                                                   {"-2.5", -3},
                                                   {"0.49", 0},
                                                   {"-0.49", 0},
                                                   {"1.5e3", 1500},
                                                   {"2147483647", INT_MAX},
                                                   {"2147483647.4", INT_MAX},
                                                   {"-2147483648.4", INT_MIN},
                                                   {"0.49999999999999994", 1}};
    for (const auto& [text, value] : rounded) {
        bool ok = false;
        EXPECT_TRUE(toInt(text) == value && toInt_nothrow(text, &ok) == value && ok) << text;
    }
    const std::pair<const char*, unsigned> unsignedRounded[] = {
        {"4294967295", UINT_MAX}, {"4294967295.4", UINT_MAX},
        {"2147483648", 1u << 31}, {"-0", 0},
        {"-1e-400", 0},           {"0.5", 1}};
    for (const auto& [text, value] : unsignedRounded) {
        bool ok = false;
        EXPECT_EQ(static_cast<unsigned>(toUnsignedInt(text)), value) << text;
        EXPECT_TRUE(static_cast<unsigned>(toUnsignedInt_nothrow(text, &ok)) == value && ok) << text;
    }
    const char* const overflow = "Overflow occured while rounding double precision value to 32-bit integer";
    bool ok = true;
    for (const char* text : {"2147483648", "2147483647.5", "-2147483648.5", "1e20", "-1e400"}) {
        EXPECT_THROW_MSG(toInt(text), std::range_error, overflow);
        EXPECT_TRUE(toInt_nothrow(text, &(ok = true)) == 0 && !ok && toInt_nothrow(text, nullptr) == 0);
    }
    for (const char* text : {"-1", "-0.2", "-4.9e-324", "4294967295.5", "1e400"}) {
        EXPECT_THROW_MSG(toUnsignedInt(text), std::range_error, overflow);
        EXPECT_TRUE(toUnsignedInt_nothrow(text, &(ok = true)) == 0 && !ok);
    }
    for (const char* text : {"x", "", "12 3"}) {
        const char* const invalid = "Expected a string containing a number";
        EXPECT_THROW_MSG(toDouble(text), std::runtime_error, invalid);
        EXPECT_THROW_MSG(toInt(text), std::runtime_error, invalid);
        EXPECT_THROW_MSG(toUnsignedInt(text), std::runtime_error, invalid);
        EXPECT_TRUE(toInt_nothrow(text, &(ok = true)) == 0 && !ok);
        EXPECT_TRUE(toUnsignedInt_nothrow(text, &(ok = true)) == 0 && !ok &&
                    toDouble_nothrow(text, nullptr) == 0);
    }
    EXPECT_THROW_MSG(throw_checked_round_range_error(), std::range_error, overflow);
    EXPECT_THROW_MSG(throw_checked_truncate_range_error(), std::range_error,
                     "Overflow occured while truncating double precision value to 32-bit integer");
}

TEST(Numbers, AreWrittenAsPrintfDoes) {
    std::mt19937_64 random(2);
    for (int round = 0; round < 40000; ++round) {
        const std::uint64_t bits = random();
        double value = static_cast<double>(static_cast<std::int32_t>(bits)) / 1000;
        if (random() % 3) {
            std::memcpy(&value, &bits, sizeof value);
        }
        const char format = "eEfGg"[random() % 5];
        const int precision =
            round % 100 ? static_cast<int>(random() % 25) - 1 : static_cast<int>(random() % 1200);
        const std::string expected = printed(value, format, precision < 0 ? 6 : precision);
        ASSERT_EQ(fromDouble(value, format, precision), expected);
        ASSERT_EQ(fromDouble(value, format, precision, 30), padString(expected, 30));
        ASSERT_TRUE(format == 'f' || precision < 17 || !std::isfinite(value) ||
                    identical(toDouble(expected), value));
    }
    EXPECT_EQ(fromDouble(-HUGE_VAL, 'f', 2) + fromDouble(HUGE_VAL, 'E', 2) + fromDouble(NAN, 'G', 2, 5),
              "-infINF  NAN");
    EXPECT_EQ(fromDouble(1500, 'g', 2, -9) + fromDouble(1e-10, 'F', 3) + fromDouble(0.1, '\b', -1),
              "1.5e+03  1e-100.1");
    EXPECT_EQ(fromDouble(0.5, 'f', 10'000'000), "0.5" + std::string(9'999'999, '0'));
    EXPECT_EQ(fromDouble(0.5, 'G', INT_MAX), "0.5");
    EXPECT_EQ(fromInt(INT_MIN) + fromInt(0) + fromInt(-7, 4) + fromInt(7, -3) + '|', "-21474836480  -77  |");
    EXPECT_EQ(fromUnsignedInt(UINT_MAX, 12) + fromUnsignedInt(0), "  42949672950");
}
