// Numbers against std::regex, strtod, lround and snprintf; padding, tokens, quotes and UTF-16.

#include <zelm/text/TextConversions.h>

#include <support/ExpectThrow.h>
#include <support/RandomTexts.h>

#include <utf8.h>

#include <climits>
#include <cmath>
#include <cstring>
#include <regex>

using namespace Zelm;
using namespace Zelm::Testing;

namespace {

/// What a conversion gives, or which exception it throws.
template <class Convert>
auto outcomeOf(Convert convert) -> std::pair<decltype(convert()), std::string> {
    try {
        return {convert(), ""};
    } catch (const utf8::exception& error) {
        return {{}, typeid(error).name() + std::string(error.what())};
    }
}

} // namespace

TEST(Numbers, AreReadByTheirGrammarAsTheNearest) {
    const std::regex integer("[ \t]*[-+]?[0-9]+[ \t]*\n?");
    const std::regex number("[ \t]*[-+]?([0-9]+\\.?[0-9]*|\\.[0-9]+)([eE][-+]?[0-9]+)?[ \t]*\n?");
    const std::string zeros(400, '0');
    std::vector<std::string> texts{"0." + zeros + "1e401", "1" + zeros + "e-400", "1" + zeros + "e-900",
                                   "0." + zeros + "1e901", "-." + zeros + "1",    std::string("1\0", 2)};
    std::istringstream edges(
        "nan inf 0x10 1,5 1e400 -1e400 -1e-400 -0 1e999999999999999999999 1e18446744073709551619 "
        "-1e-99999999999999999999 0e99999999999999999999 10e9223372036854775807 "
        "4.9e-324 -4.9e-324 2.4703282292062327e-324 1.7976931348623159e308 2.5 -2.5 "
        "2147483647.4 2147483647.5 -2147483648.4 -2147483648.5 4294967295.4 "
        "4294967295.5 -0.2 -1");
    texts.insert(texts.end(), std::istream_iterator<std::string>(edges), {});
    std::mt19937 random(1);
    for (int round = 0; round < 30000; ++round) {
        texts.push_back(randomText(random, random() % 7, "001.5 e+\n-E\t"));
    }
    for (std::uint64_t whole = std::uint64_t{1} << 52; whole < std::uint64_t{1} << 54; whole += whole / 99) {
        for (const char* const end : {"", ".5", ".49999999999999999", "5e-1", ".500e+00", "e-320"}) {
            texts.push_back(std::to_string(whole | 1) + end); // half-way or next to it
        }
    }
    for (const std::string& text : texts) {
        SCOPED_TRACE('"' + text + '"');
        const bool valid = std::regex_match(text, number);
        ASSERT_EQ(isValidInt(text), std::regex_match(text, integer));
        ASSERT_EQ(isValidNumber(text), valid);
        // Cut out of digits, which must not count.
        const ZString cut = ZString("9" + text + "9").mid(1, text.size());
        const double value = valid ? std::strtod(text.c_str(), nullptr) : 0.0;
        bool ok = !valid;
        ASSERT_EQ(1 / toDouble_nothrow(cut, &ok), 1 / value); // tells the zeros apart
        ASSERT_TRUE(ok == valid && cut.testing_get_ref_count() == 1);
        const bool fits = valid && value > -2147483648.5 && value < 2147483647.5;
        ASSERT_TRUE(toInt_nothrow(cut, &ok) == (fits ? std::lround(value) : 0) && ok == fits);
        const bool fitsUnsigned = valid && value >= 0 && value < 4294967295.5;
        const int bits = static_cast<int>(fitsUnsigned ? std::lround(value) : 0);
        ASSERT_TRUE(toUnsignedInt_nothrow(cut, &ok) == bits && ok == fitsUnsigned);
    }
    EXPECT_EQ(toInt("0.49999999999999994") + toUnsignedInt("2") + toDouble("\t+1.5E+3 \n"), 1503);
}

TEST(Numbers, FailWithTheirTexts) {
    const char* const invalid = "Expected a string containing a number";
    EXPECT_THROW_MSG(toDouble("12 3"), std::runtime_error, invalid);
    EXPECT_THROW_MSG(toUnsignedInt(""), std::runtime_error, invalid);
    const char* const overflow = "Overflow occured while rounding double precision value to 32-bit integer";
    EXPECT_THROW_MSG(toInt("1e20"), std::range_error, overflow);
    EXPECT_THROW_MSG(toUnsignedInt("-0.2"), std::range_error, overflow);
    EXPECT_THROW_MSG(throw_checked_truncate_range_error(), std::range_error,
                     "Overflow occured while truncating double precision value to 32-bit integer");
}

TEST(Numbers, AreWrittenAsPrintfDoes) {
    std::mt19937_64 random(2);
    for (int round = 0; round < 40000; ++round) {
        const std::uint64_t bits = random();
        const double powerOfTen =
            std::strtod(("1e" + std::to_string(static_cast<int>(bits % 640) - 325)).c_str(), nullptr);
        const double powerOfTwo = std::ldexp(1, static_cast<int>(bits % 2098) - 1074);
        double any = 0;
        std::memcpy(&any, &bits, sizeof any);
        const double values[] = {any,
                                 static_cast<double>(static_cast<std::int32_t>(bits)) / 1000,
                                 std::ldexp(bits >> 44, -static_cast<int>(bits % 64)), // of few bits: ties
                                 std::nextafter(powerOfTen, any),
                                 powerOfTen,
                                 std::nextafter(powerOfTwo, any),
                                 powerOfTwo};
        const double value = values[random() % std::size(values)];
        const char format = "eEfGg"[random() % 5];
        const int precision = static_cast<int>(random() % (round % 100 ? 25 : 1200)) - 1;
        const char pattern[] = {'%', '.', '*', format, '\0'};
        char expected[2000];
        std::snprintf(expected, sizeof expected, pattern, precision < 0 ? 6 : precision, value);
        ASSERT_EQ(fromDouble(value, format, precision), expected);
        ASSERT_TRUE(!std::isfinite(value) || toDouble(expected) == std::strtod(expected, nullptr))
            << expected;
        ASSERT_EQ(fromDouble(value, format, precision, 30), padString(expected, 30));
    }
    EXPECT_EQ(fromDouble(HUGE_VAL, 'E', 2) + fromDouble(NAN, 'G', 2, 5) + fromDouble(1500, 'g', 2, -9) + '|',
              "INF  NAN1.5e+03  |");
    EXPECT_EQ(fromInt(INT_MIN, 12) + fromUnsignedInt(UINT_MAX), " -21474836484294967295");
}

TEST(Conversions, PadBytesAndTakeQuotesInPairs) {
    EXPECT_EQ(padString("ab", 5) + padString("ab", -5) + padString("\xC2\xB5", 3), "   abab    \xC2\xB5");
    EXPECT_EQ(padString("abcdef", 3) + repeatChar('x', 3) + add_quotes("a\"b"), "abcdefxxx\"a\"b\"");
    EXPECT_EQ(strip_quotes("\"\"a\"\"") + strip_quotes("\"") + strip_quotes("\"b"), "\"a\"\"\"b");
    EXPECT_TRUE(enclosed_in_quotes("\"\"") && !enclosed_in_quotes("\"") && !enclosed_in_quotes("b\""));
}

TEST(Conversions, CutTokensThatLieSideBySide) {
    std::mt19937 random(7);
    for (int round = 0; round < 3000; ++round) {
        const ZString text = randomText(random, random() % 10, "ab,; ");
        const ZString set = ZString(",; ").left(random() % 4);
        std::vector<ZString> tokens = tokenize(text, set, true);
        const char* at = text.begin();
        for (const ZString& token : tokens) {
            ASSERT_TRUE(token.begin() == at && token.find_first_of(set) == ZString::npos);
            ASSERT_TRUE(token.end() == text.end() || set.contains(ZStringView(token.end(), 1)));
            at = token.end() + 1;
        }
        ASSERT_EQ(at, text.end() + 1);
        ASSERT_TRUE(set.size() != 1 || tokens.capacity() == tokens.size());
        tokens.erase(std::remove(tokens.begin(), tokens.end(), ZString()), tokens.end());
        const std::vector<ZString> kept = tokenize(text, set, false);
        ASSERT_TRUE(kept == tokens && (set.size() != 1 || kept.capacity() == kept.size()));
        ASSERT_EQ(tokenize_to_std(text, set, false), convertZStringVectorToStd(tokens));
    }
}

TEST(Conversions, CarryTextToUtf16AndBackOrRefuseItAsUtf8CppDoes) {
    const std::vector<std::string> bytePieces =
        tokenize_to_std("a \xC2\x80 \xDF\xBF \xE0\xA0\x80 \xED\x9F\xBF \xEE\x80\x80 \xEF\xBF\xBF "
                        "\xF0\x90\x80\x80 \xF4\x8F\xBF\xBF \x80 \xC1\xBF \xC2 \xE0\x9F\xBF \xE2\x82 "
                        "\xED\xA0\x80 \xF0\x8F\xBF\xBF \xF0\x9F\x98 \xF4\x90\x80\x80 \xF8\x88\x80\x80\x80",
                        " ", false);
    const std::vector<std::u16string> unitPieces = {
        u"a",      u"\x80",   u"\x7FF",        u"\x800",        u"\xD7FF",
        u"\xE000", u"\xFFFF", u"\xD800\xDC00", u"\xDBFF\xDFFF", u"\xD800",
        u"\xDBFF", u"\xDC00", u"\xDFFF"};
    std::mt19937 random(8);
    for (int round = 0; round < 20000; ++round) {
        std::string bytes;
        std::u16string units;
        for (auto count = round ? random() % 9 : 40000; count > 0; --count) {
            const std::size_t run = random() % 3 ? 0 : random() % (random() % 8 ? 20 : 150);
            bytes.append(run, '\x7F') += bytePieces[random() % (round % 2 ? bytePieces.size() : 9)];
            units.append(run, u'\x7F') += unitPieces[random() % (round % 2 ? unitPieces.size() : 9)];
        }
        // Cut from bytes that must not count.
        const ZString cut = ZString(bytes + "\x80\x80\x80").left(bytes.size());
        ASSERT_EQ(outcomeOf([&] { return convertZStringToUtf16(cut); }), outcomeOf([&] {
                      std::u16string result;
                      utf8::utf8to16(bytes.begin(), bytes.end(), std::back_inserter(result));
                      return result;
                  }));
        ASSERT_EQ(outcomeOf([&] { return convertUtf16ToZString(units).to_string(); }), outcomeOf([&] {
                      std::string result;
                      utf8::utf16to8(units.begin(), units.end(), std::back_inserter(result));
                      return result;
                  }));
    }
    EXPECT_EQ(convertUtf16ToZString(std::u16string(40000, u'\x800')).size(), 120000u);
    EXPECT_THROW_MSG(convertZStringToUtf16("a\xFF"), utf8::invalid_utf8, "Invalid UTF-8");
    EXPECT_THROW_MSG(convertZStringToUtf16("\xED\xA0\x80"), utf8::invalid_code_point, "Invalid code point");
    EXPECT_THROW_MSG(convertZStringToUtf16(ZString("\xC2\xB5").left(1)), utf8::not_enough_room,
                     "Not enough space");
    EXPECT_THROW_MSG(convertUtf16ToZString(u"a\xDC00"), utf8::invalid_utf16, "Invalid UTF-16");
}
