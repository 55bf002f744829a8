// Case folding, replacement and trims against plain models.

#include <zelm/text/ZString.h>

#include <text/RandomTexts.h>

#include <gtest/gtest.h>

using namespace Zelm;
using namespace Zelm::Testing;

namespace {

constexpr std::size_t npos = ZString::npos;
const std::string kWhitespace = " \t\n\v\f\r";

std::string lower(std::string text) {
    for (char& c : text) {
        const std::size_t letter = std::string("ABCDEFGHIJKLMNOPQRSTUVWXYZ").find(c);
        c = letter == npos ? c : "abcdefghijklmnopqrstuvwxyz"[letter];
    }
    return text;
}

/// Replaces one occurrence after another in a growing result, each searched behind the last replacement.
std::string replaceOneByOne(std::string text, const std::string& from, const std::string& to,
                            bool ignoreCase) {
    const auto find = [&](std::size_t pos) {
        return ignoreCase ? lower(text).find(lower(from), pos) : text.find(from, pos);
    };
    for (std::size_t pos = from.empty() ? npos : find(0); pos != npos; pos = find(pos + to.size())) {
        text = text.substr(0, pos) + to + text.substr(pos + from.size());
    }
    return text;
}

std::string trimmed(std::string text, const std::string& chars, bool left, bool right) {
    while (right && !text.empty() && chars.find(text.back()) != npos) {
        text.pop_back();
    }
    while (left && !text.empty() && chars.find(text.front()) != npos) {
        text.erase(0, 1);
    }
    return text;
}

} // namespace

TEST(Case, FoldsAsciiLettersAlone) {
    std::string all(256, ' ');
    std::generate(all.begin(), all.end(), [c = '\0']() mutable { return c++; });
    EXPECT_EQ(ZString(all).to_lower(), lower(all));
    const ZString upper = ZString(all).to_upper();
    EXPECT_EQ(upper.to_lower(), lower(all));
    EXPECT_EQ(upper.find_first_of("abcdefghijklmnopqrstuvwxyz"), npos);
}

TEST(Case, ComparesFoldedSignedBytes) {
    const auto compare = [](ZStringView a, ZStringView b) { return ZString(a).compare_ignore_case(b); };
    EXPECT_EQ(compare("ab", "ABC"), -1);
    EXPECT_EQ(compare("abcde", "ABC"), 1);
    EXPECT_EQ(compare("abf", "ABC"), 3);
    EXPECT_EQ(compare("\xC3", "a"), -158);
    EXPECT_EQ(compare("_", "A"), -2);
    EXPECT_EQ(compare("", ZStringView()), 0);
    std::mt19937 random(3);
    for (int round = 0; round < 3000; ++round) {
        const std::string a = randomText(random, random() % 5, "aAbB_"),
                          b = randomText(random, random() % 5, "aAbB_");
        ASSERT_EQ(ZString(a).equal_ignore_case(b), lower(a) == lower(b));
        ASSERT_EQ(ZString(a).compare_ignore_case(b) < 0, lower(a) < lower(b));
        ASSERT_EQ(ZString(a).starts_with_ignore_case(b), ZString(lower(a)).starts_with(lower(b)));
        ASSERT_EQ(ZString(a).ends_with_ignore_case(b), ZString(lower(a)).ends_with(lower(b)));
    }
}

TEST(Case, FindsByEitherCaseAndReadsNeedlesUpToTheirNul) {
    std::mt19937 random(4);
    int found = 0;
    for (int round = 0; round < 10000; ++round) {
        const std::string text = nearlyPeriodicText(random, random() % 500, round % 2 ? "aAb" : "[{aAbB");
        const std::string part = text.substr(random() % (text.size() + 1), random() % 300);
        const std::string needle = round % 3 ? lower(part) : part;
        const std::size_t pos = random() % 4 ? random() % 505 : npos;
        const std::size_t expected = lower(text).find(lower(needle), pos);
        ASSERT_EQ(ZString(text).find_ignore_case(needle, pos), expected) << text << '/' << needle;
        found += expected != npos && needle.size() > 100;
    }
    EXPECT_GT(found, 200);
    EXPECT_TRUE(ZString("xaBc").contains_ignore_case("AbC") && !ZString("xaBc").contains_ignore_case("AbCd"));
    EXPECT_EQ(ZString("abd").find_ignore_case(ZStringView("bc", 1)), npos);
    EXPECT_EQ(ZString("xb").find_ignore_case(ZStringView("b\0c", 3)), 1u);
    EXPECT_EQ(ZString("ab").find_ignore_case(ZStringView(), 2), 2u);
    EXPECT_EQ(ZString("abcd").replace_ignore_case(ZStringView("bc", 1), "-"), "a-cd");
    EXPECT_EQ(ZString("abcd").replace_ignore_case(ZStringView("B\0zzzz", 6), "-"), "a-");
    EXPECT_EQ(ZString("abcd").replace_ignore_case(ZStringView("\0x", 2), "-"), "abcd");
    EXPECT_EQ(ZString("abcd").replace_ignore_case(ZStringView("b", 0), "-"), "abcd");
}

TEST(ReplaceAndTrim, AgreeWithChangingOneByOne) {
    std::mt19937 random(5);
    for (int round = 0; round < 5000; ++round) {
        const std::string text = randomText(random, random() % 13, "aAb"),
                          from = randomText(random, random() % 3, "aAb"),
                          to = randomText(random, random() % 4, "aAb");
        ASSERT_EQ(ZString(text).replace(from, to), replaceOneByOne(text, from, to, false));
        ASSERT_EQ(ZString(text).replace_ignore_case(from, to), replaceOneByOne(text, from, to, true));
        const std::string spaced = randomText(random, random() % 7, kWhitespace + "ab"),
                          set = randomText(random, random() % 4, " \tab");
        const ZString ours(spaced);
        ASSERT_EQ(ours.trim(set), trimmed(spaced, set, true, true));
        ASSERT_EQ(ours.trim_left(set), trimmed(spaced, set, true, false));
        ASSERT_EQ(ours.trim_right(set), trimmed(spaced, set, false, true));
        ASSERT_EQ(ours.trim_space(), trimmed(spaced, " ", true, true));
        ASSERT_EQ(ours.trim_space_left(), trimmed(spaced, " ", true, false));
        ASSERT_EQ(ours.trim_space_right(), trimmed(spaced, " ", false, true));
        ASSERT_EQ(ours.trim_whitespace(), trimmed(spaced, kWhitespace, true, true));
        ASSERT_EQ(ours.trim_whitespace_left(), trimmed(spaced, kWhitespace, true, false));
        ASSERT_EQ(ours.trim_whitespace_right(), trimmed(spaced, kWhitespace, false, true));
    }
    ZString text("aXbxc");
    EXPECT_EQ(text.replace_ignore_case("x", "--"), "a--b--c");
    EXPECT_EQ(text.replace(text, text + text), "aXbxcaXbxc");
    EXPECT_EQ(text.count_occurrences('x') + ZString().count_occurrences('x'), 1u);
}
