// Padding, tokens, quotes and UTF-16.

#include <zelm/text/TextConversions.h>

#include <support/ExpectThrow.h>

#include <utf8.h>

#include <random>

using namespace Zelm;

namespace {

/// Pieces by one walk over the characters.
std::vector<std::string> pieces(const std::string& text, const std::string& delimiters, bool keepEmpty) {
    std::vector<std::string> result{""};
    for (const char c : text) {
        if (delimiters.find(c) == std::string::npos) {
            result.back() += c;
        } else if (keepEmpty || !result.back().empty()) {
            result.emplace_back();
        }
    }
    if (!keepEmpty && result.back().empty()) {
        result.pop_back();
    }
    return result;
}

/// UTF-8 of one code point by its definition: as many leading ones as bytes, six bits in each further byte.
std::string encoded(char32_t code) {
    if (code < 0x80) {
        return std::string(1, static_cast<char>(code));
    }
    const int tails = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
    std::string text(1, static_cast<char>((0xFF00 >> (tails + 1)) | code >> (6 * tails)));
    for (int tail = tails - 1; tail >= 0; --tail) {
        text += static_cast<char>(0x80 | (code >> (6 * tail) & 0x3F));
    }
    return text;
}

} // namespace

TEST(Conversions, PadBytesAndTakeQuotesInPairs) {
    EXPECT_EQ(padString("ab", 5) + padString("ab", -5) + padString("\xC2\xB5", 3), "   abab    \xC2\xB5");
    EXPECT_EQ(padString("abcdef", 3) + padString("abcdef", -6) + padString(ZString(), -2), "abcdefabcdef  ");
    EXPECT_EQ(repeatChar('x', 3) + repeatChar('y', 0) + ZString::from_char('z'), "xxxz");
    EXPECT_EQ(add_quotes("a\"b") + add_quotes(ZString()), "\"a\"b\"\"\"");
    for (const char* bare : {"", "\"", "\"a", "a\"", "a\"\"b"}) {
        EXPECT_TRUE(!enclosed_in_quotes(bare) && strip_quotes(bare) == bare) << bare;
    }
    EXPECT_TRUE(enclosed_in_quotes("\"\"") && strip_quotes("\"\"").empty());
    const ZString quoted(std::string("\"\"text\"\""));
    EXPECT_TRUE(strip_quotes(quoted) == "\"text\"" && strip_quotes(quoted).data() == quoted.data() + 1);
}

TEST(Conversions, CutTokensAsAWalkDoesAndShareTheText) {
    std::mt19937 random(7);
    for (int round = 0; round < 3000; ++round) {
        std::string text(random() % 10, ' ');
        std::generate(text.begin(), text.end(), [&] { return "ab,; "[random() % 5]; });
        const ZString ours(text);
        const std::string delimiters = std::string(",; ").substr(0, random() % 4);
        for (const bool keepEmpty : {false, true}) {
            const auto expected = pieces(text, delimiters, keepEmpty);
            const std::vector<ZString> tokens = tokenize(ours, delimiters, keepEmpty);
            ASSERT_EQ(static_cast<std::size_t>(ours.testing_get_ref_count()), tokens.size() + 1);
            ASSERT_EQ(convertZStringVectorToStd(tokens), expected) << text;
            ASSERT_EQ(tokenize_to_std(ours, delimiters, keepEmpty), expected);
        }
    }
    EXPECT_EQ(tokenize(std::string(1'000'000, ','), ",", true).size(), 1'000'001u);
}

TEST(Conversions, CarryEveryCodePointToUtf16AndBack) {
    std::string all8;
    std::u16string all16;
    for (char32_t code = 0; code <= 0x10FFFF; code += code < 0x3000 ? 1 : 97) {
        if (code < 0xD800 || (code >= 0xE000 && code < 0x10000)) {
            all16 += static_cast<char16_t>(code);
        } else if (code >= 0x10000) {
            all16 += static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10));
            all16 += static_cast<char16_t>(0xDC00 + (code & 0x3FF));
        } else {
            continue;
        }
        all8 += encoded(code);
    }
    EXPECT_TRUE(convertZStringToUtf16(all8) == all16);
    EXPECT_TRUE(convertUtf16ToZString(all16) == all8);
    for (std::size_t length = 0; length < 40; ++length) {
        const ZString cut = ZString(all8).left(length);
        EXPECT_TRUE(convertZStringToUtf16(cut) == all16.substr(0, length));
        EXPECT_EQ(convertUtf16ToZString(all16.substr(0, length)), cut);
    }
}

TEST(Conversions, RefuseWhatIsNoText) {
    const std::string front(20, 'a');
    for (const char* bytes : {"\xFF", "\x80", "\xC2\x41", "\xC0\x80", "\xF8\x88\x80\x80\x80"}) {
        EXPECT_THROW_MSG(convertZStringToUtf16(front + bytes), utf8::invalid_utf8, "Invalid UTF-8");
    }
    for (const char* bytes : {"\xED\xA0\x80", "\xF4\x90\x80\x80"}) {
        EXPECT_THROW_MSG(convertZStringToUtf16(front + bytes), utf8::invalid_code_point,
                         "Invalid code point");
    }
    for (const ZString whole : {"\xC2\xB5", "\xE2\x82\xAC", "\xF0\x9F\x98\x80"}) {
        const ZString cut = (front + whole).left(front.size() + whole.size() - 1);
        EXPECT_THROW_MSG(convertZStringToUtf16(cut), utf8::not_enough_room, "Not enough space");
    }
    for (const std::u16string surrogates : {u"\xD800", u"a\xDC00", u"\xDC00\xD800", u"\xD800x"}) {
        EXPECT_THROW_MSG(convertUtf16ToZString(surrogates), utf8::invalid_utf16, "Invalid UTF-16");
    }
}
