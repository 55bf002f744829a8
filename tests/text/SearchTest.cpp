// Searches and comparisons against std::string.

#include <zelm/text/LinearSearch.h>
#include <zelm/text/ZString.h>

#include <support/ExpectThrow.h>
#include <text/RandomTexts.h>

#include <array>

using namespace Zelm;
using namespace Zelm::Testing;

namespace {

constexpr std::size_t npos = ZString::npos;
static_assert(ZString::npos == 18446744073709551615u && ZStringView::npos == ZString::npos);

/// All six searches, by one list for our texts and for the oracle.
template <class Text, class... Arguments>
std::array<std::size_t, 6> searches(const Text& text, const Arguments&... arguments) {
    return {text.find(arguments...),          text.rfind(arguments...),
            text.find_first_of(arguments...), text.find_first_not_of(arguments...),
            text.find_last_of(arguments...),  text.find_last_not_of(arguments...)};
}

/// All texts of up to `maxLength` letters out of "ab".
std::vector<std::string> smallTexts(std::size_t maxLength) {
    std::vector<std::string> texts{""};
    for (std::size_t i = 0; texts[i].size() < maxLength; ++i) {
        texts.push_back(texts[i] + 'a');
        texts.push_back(texts[i] + 'b');
    }
    return texts;
}

int sign(int value) {
    return (value > 0) - (value < 0);
}

} // namespace

TEST(Search, AgreesOnAllSmallTextsAtEveryPositionInEveryForm) {
    for (const std::string& text : smallTexts(5)) {
        const ZString ours(text);
        for (const std::string& needle : smallTexts(3)) {
            for (const std::size_t pos : {std::size_t{0}, std::size_t{1}, std::size_t{2}, std::size_t{3},
                                          std::size_t{4}, std::size_t{5}, std::size_t{6}, npos}) {
                const auto expected = searches(text, needle, pos);
                ASSERT_EQ(searches(ZStringView(text), needle, pos), expected) << text << '/' << needle << pos;
                ASSERT_EQ(searches(ours, needle.c_str(), pos), expected);
                ASSERT_EQ(searches(ours, (needle + "zz").c_str(), pos, needle.size()), expected);
                if (needle.size() == 1) {
                    ASSERT_EQ(searches(ours, needle[0], pos), expected);
                }
            }
            ASSERT_EQ(searches(ours, needle), searches(text, needle));
            ASSERT_EQ(ours.contains(needle), text.find(needle) != npos);
            ASSERT_EQ(ours.starts_with(needle), text.rfind(needle, 0) == 0);
            ASSERT_EQ(ours.ends_with(needle), ours.right(needle.size()) == needle);
        }
        ASSERT_EQ(ours.starts_with('a'), !text.empty() && text.front() == 'a');
        ASSERT_EQ(ours.ends_with('a'), !text.empty() && text.back() == 'a');
    }
}

TEST(Search, AgreesOnLongNeedlesThatNearlyMatchAndOnSetsOfAnyBytes) {
    std::mt19937 random(1);
    int found = 0;
    for (int round = 0; round < 10000; ++round) {
        const std::string text = nearlyPeriodicText(random, random() % 500, "ab");
        std::string needle = text.substr(random() % (text.size() + 1), random() % 300);
        if (!needle.empty() && random() % 2) {
            needle[random() % needle.size()] = 'b';
        }
        const std::size_t pos = random() % 4 ? random() % 505 : npos;
        ASSERT_EQ(searches(ZStringView(text), needle, pos), searches(text, needle, pos))
            << text << '/' << needle;
        found += needle.size() > 100 && text.find(needle) != npos;
        const std::string bytes = randomText(random, 20, "\x7F\x80\xFF\x01");
        const std::string set = randomText(random, random() % 8, "\x7F\x80\xFF");
        ASSERT_EQ(searches(ZStringView(bytes), set, pos % 22), searches(bytes, set, pos % 22));
    }
    EXPECT_GT(found, 1000);
}

TEST(Search, TwoWayAgreesOnAllSmallTexts) {
    const std::vector<std::string> needles = smallTexts(7);
    for (const std::string& text : smallTexts(11)) {
        for (auto needle = needles.begin() + 1; needle != needles.end(); ++needle) {
            ASSERT_EQ(details::findTwoWay([&](std::size_t i) { return text[i]; }, text.size(),
                                          [&](std::size_t i) { return (*needle)[i]; }, needle->size()),
                      text.find(*needle))
                << text << '/' << *needle;
        }
    }
}

// Trying each position would take minutes here.
TEST(Search, IsLinearWhereNeedlesNearlyMatchEverywhere) {
    const std::string text(2'000'000, 'a'), half(1'000'000, 'a');
    EXPECT_EQ(ZStringView(text).find(half + 'b'), npos);
    EXPECT_EQ(ZStringView(text).rfind('b' + half), npos);
    EXPECT_EQ(ZStringView(text).rfind(half + 'b' + half), npos);
    EXPECT_EQ(ZString(text + 'b').find_ignore_case(half + 'B'), half.size());
    EXPECT_EQ(ZString(text).replace("a", "").size(), 0u);
    EXPECT_EQ(ZString(text).replace_ignore_case("AA", "bcd").size(), 3'000'000u);
}

TEST(Search, TakesNullForEmpty) {
    const char* const null = nullptr;
    const auto ofNothing = searches(std::string("abc"), std::string(), std::size_t{1});
    EXPECT_EQ(searches(ZString("abc"), null, std::size_t{1}), ofNothing);
    EXPECT_EQ(searches(ZString("abc"), ZStringView(), std::size_t{1}), ofNothing);
    EXPECT_EQ(searches(ZString(), ZStringView()), searches(std::string(), std::string()));
    EXPECT_EQ(ZString("a").compare(null) + ZString().compare(null) + ZString("a").compare(0, 1, null), 2);
    EXPECT_TRUE(ZStringView(null).data() == nullptr && ZStringView("").data() != nullptr);
    EXPECT_TRUE(ZString().contains(null) && ZString().starts_with(null) && ZString().ends_with(null));
}

TEST(Compare, AgreesInSignAndIsExactByLength) {
    std::mt19937 random(2);
    for (int round = 0; round < 10000; ++round) {
        const std::string a = randomText(random, random() % 5, "ab\xC3"),
                          b = randomText(random, random() % 5, "ab");
        const ZString ours(a);
        const std::size_t pos = random() % (a.size() + 1), pos2 = random() % (b.size() + 1);
        const std::size_t n = random() % 3 ? random() % 7 : npos;
        ASSERT_EQ(sign(ours.compare(b)), sign(a.compare(b)));
        ASSERT_EQ(ours.compare(a + b), b.empty() ? 0 : -1);
        ASSERT_EQ(ZString(a + b).compare(a.c_str()), b.empty() ? 0 : 1);
        ASSERT_EQ(sign(ours.compare(pos, n, b)), sign(a.compare(pos, n, b)));
        ASSERT_EQ(sign(ours.compare(pos, n, b.c_str())), sign(a.compare(pos, n, b)));
        ASSERT_EQ(sign(ours.compare(pos, n, b.c_str(), pos2)), sign(a.compare(pos, n, b.c_str(), pos2)));
        ASSERT_EQ(sign(ours.compare(pos, n, b, pos2, n)), sign(a.compare(pos, n, b, pos2, n)));
        ASSERT_TRUE((ours == b) == (a == b) && (ours < b) == (a < b) && (ours >= b) == (a >= b));
        ASSERT_EQ(std::hash<ZString>()(ours), std::hash<ZStringView>()(a));
    }
}

TEST(Access, ThrowsBehindTheEndAlone) {
    const ZString text("abc");
    const ZStringView view = text;
    char buffer[4] = "---";
#define EXPECT_RANGE_ERROR(statement)                                                                        \
    EXPECT_THROW_MSG(statement, std::out_of_range, "ZStringView range error")
    EXPECT_RANGE_ERROR(text.at(3));
    EXPECT_RANGE_ERROR(text.substr(4, 5));
    EXPECT_RANGE_ERROR(view.substr(4, 0));
    EXPECT_RANGE_ERROR(text.copy(buffer, 1, 4));
    EXPECT_RANGE_ERROR(text.compare(4, 1, "x"));
    EXPECT_RANGE_ERROR(text.compare(4, 1, view));
    EXPECT_RANGE_ERROR(view.compare(4, 1, "x", 1));
    EXPECT_RANGE_ERROR(view.compare(4, 1, "x", 0, 1));
    EXPECT_RANGE_ERROR(view.compare(0, 1, "x", 2, 1));
    EXPECT_EQ(text.copy(buffer, npos, 1) + ZString().copy(nullptr, 5), 2u);
    EXPECT_EQ(text.at(2) + std::string(buffer) + std::string(text.crbegin(), text.crend()), "cbc-cba");
    ZStringView a("left", 2), b;
    swap(a, b);
    EXPECT_TRUE(a.empty() && a.data() == nullptr && b == "le" && b.front() == 'l' && b.back() == b[1]);
    EXPECT_TRUE(text.compare(3, 1, "x") == -1 && b.substr(2).empty());
}
