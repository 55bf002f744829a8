// Searches, comparisons, case, replacement and trims against std::string and plain models.

#include <zelm/text/ZString.h>

#include <support/ExpectThrow.h>
#include <support/RandomTexts.h>

#include <array>

using namespace Zelm;
using namespace Zelm::Testing;

namespace {

constexpr std::size_t npos = ZString::npos;

/// All six searches, by one list for our texts and for the oracle.
template <class Text, class... Arguments>
std::array<std::size_t, 6> searches(const Text& text, const Arguments&... arguments) {
    return {text.find(arguments...),          text.rfind(arguments...),
            text.find_first_of(arguments...), text.find_first_not_of(arguments...),
            text.find_last_of(arguments...),  text.find_last_not_of(arguments...)};
}

std::string lower(std::string text) {
    for (char& c : text) {
        c = static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
    }
    return text;
}

/// Replaces one occurrence after another in a growing result, each searched behind the last replacement.
std::string replaceOneByOne(std::string text, const std::string& from, const std::string& to,
                            std::string (*fold)(std::string)) {
    for (std::size_t pos = from.empty() ? npos : 0; (pos = fold(text).find(fold(from), pos)) != npos;
         pos += to.size()) {
        text.replace(pos, from.size(), to);
    }
    return text;
}

} // namespace

TEST(Search, AgreesOnSmallTextsInEveryForm) {
    std::mt19937 random(1);
    for (int round = 0; round < 30000; ++round) {
        const std::string text = randomText(random, random() % 6, "ab\xFF"),
                          needle = randomText(random, random() % 4, "ab\xFF");
        const std::size_t pos = random() % 8 ? random() % 7 : npos;
        const ZString ours(text);
        const auto expected = searches(text, needle, pos);
        ASSERT_EQ(searches(ours, needle, pos), expected) << text << '/' << needle << pos;
        ASSERT_EQ(searches(ZStringView(text), needle.c_str(), pos), expected);
        ASSERT_EQ(searches(ours, (needle + "zz").c_str(), pos, needle.size()), expected);
        ASSERT_EQ(searches(ours, 'a'), searches(text, 'a'));
        ASSERT_EQ(ours.starts_with(needle), text.rfind(needle, 0) == 0);
        ASSERT_EQ(ours.ends_with(needle), ours.right(needle.size()) == needle);
        ASSERT_EQ(ours.compare(needle.c_str()) < 0, text < needle);
        const std::size_t start = random() % (text.size() + 1), start2 = random() % (needle.size() + 1);
        ASSERT_EQ(ours.compare(start, pos, needle, start2, pos) > 0,
                  text.compare(start, pos, needle, start2, pos) > 0);
    }
    EXPECT_EQ(searches(ZString("abc"), static_cast<const char*>(nullptr), npos),
              searches(std::string("abc"), "", npos));
}

TEST(Search, AgreesOnLongNeedlesThatNearlyMatch) {
    std::mt19937 random(2);
    for (int round = 0; round < 10000; ++round) {
        const std::string text = nearlyPeriodicText(random, random() % 500, round % 2 ? "aAb" : "[{aAb");
        std::string needle = text.substr(random() % (text.size() + 1), random() % 300);
        if (!needle.empty() && random() % 2) {
            needle[random() % needle.size()] = 'b';
        }
        const std::size_t pos = random() % 4 ? random() % 505 : npos;
        const ZString ours(text), folded(lower(text));
        ASSERT_EQ(searches(ours, needle, pos), searches(text, needle, pos)) << text << '/' << needle;
        ASSERT_EQ(ours.find_ignore_case(needle, pos), folded.find(lower(needle), pos));
        ASSERT_EQ(ours.count_occurrences('b'), std::count(text.begin(), text.end(), 'b'));
        ASSERT_EQ(ours.equal_ignore_case(needle), folded == lower(needle));
        ASSERT_EQ(ours.starts_with_ignore_case(needle), folded.starts_with(lower(needle)));
        ASSERT_EQ(ours.ends_with_ignore_case(needle), folded.ends_with(lower(needle)));
    }
    for (std::size_t before = 0; before < 300; ++before) {
        const ZString text(std::string(before, '.') + "aXb.");
        ASSERT_TRUE(text.find("aXb") == before && text.find_ignore_case("AxB") == before);
    }
}

// Trying each position would take minutes here.
TEST(Search, IsLinearWhereNeedlesNearlyMatchEverywhere) {
    const std::string text(2'000'000, 'a'), half(1'000'000, 'a');
    EXPECT_EQ(ZStringView(text).find(half + 'b'), npos);
    EXPECT_EQ(ZStringView(text).rfind('b' + half), npos);
    EXPECT_EQ(ZString(text + 'b').find_ignore_case(half + 'B'), half.size());
}

TEST(Case, FoldsAsciiAloneComparesSignedBytesAndReadsNeedlesUpToTheirNul) {
    std::string all(256, ' ');
    std::generate(all.begin(), all.end(), [c = '\0']() mutable { return c++; });
    const ZString upper = ZString(all).to_upper();
    EXPECT_TRUE(ZString(all).to_lower() == lower(all) && upper.to_lower() == lower(all));
    EXPECT_EQ(upper.find_first_of("abcdefghijklmnopqrstuvwxyz"), npos);
    EXPECT_EQ(ZString("abf").compare_ignore_case("ABC"), 3);
    EXPECT_EQ(ZString("\xC3").compare_ignore_case("a"), -158);
    EXPECT_EQ(ZString("_").compare_ignore_case("A"), -2);
    const ZString text("abcd");
    EXPECT_EQ(text.replace_ignore_case(ZStringView("bc", 1), "-"), "a-cd");
}

TEST(ReplaceAndTrim, AgreeWithChangingOneByOne) {
    const std::string whitespace = " \t\n\v\f\r";
    std::mt19937 random(5);
    for (int round = 0; round < 5000; ++round) {
        const std::string text = randomText(random, random() % (round % 9 ? 13 : 300), "aAb"),
                          from = randomText(random, random() % 4, "aAb"),
                          to = randomText(random, random() % (round % 5 ? 4 : 40), "aAb");
        ASSERT_EQ(ZString(text).replace(from, to),
                  replaceOneByOne(text, from, to, [](std::string same) { return same; }));
        ASSERT_EQ(ZString(text).replace_ignore_case(from, to), replaceOneByOne(text, from, to, lower));
        const ZString spaced(randomText(random, random() % 7, whitespace + "ab"));
        const std::string set = randomText(random, random() % 4, " \tab");
        const ZString left = spaced.mid(spaced.find_first_not_of(set));
        ASSERT_EQ(spaced.trim_left(set), left);
        ASSERT_EQ(spaced.trim_right(set), spaced.left(spaced.find_last_not_of(set) + 1));
        ASSERT_EQ(spaced.trim(set), left.left(left.find_last_not_of(set) + 1));
        ASSERT_EQ(spaced.trim_space(), spaced.trim(" "));
        ASSERT_EQ(spaced.trim_whitespace(), spaced.trim(whitespace));
    }
    ZString text("aXbxc");
    EXPECT_EQ(text.replace(text, text + text), "aXbxcaXbxc");
    EXPECT_EQ(text.replace("X", ZString()).replace_ignore_case("X", ZStringView()), "abc");
}

TEST(Access, ThrowsBehindTheEndAlone) {
    const ZString text("abc");
    char buffer[4] = "---";
    EXPECT_THROW_MSG(text.at(3), std::out_of_range, "ZStringView range error");
    EXPECT_THROW_MSG(text.substr(4), std::out_of_range, "ZStringView range error");
    EXPECT_EQ(text.copy(buffer, npos, 1) + ZString().copy(nullptr, 5), 2u);
    EXPECT_EQ(text.at(2) + std::string(buffer) + std::string(text.crbegin(), text.crend()), "cbc-cba");
}
