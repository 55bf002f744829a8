// Text of every kind with text of every other: each call has to mean one thing.

#include <zelm/text/ZString.h>

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <stdexcept>
#include <unordered_map>

using namespace Zelm;

namespace Zelm {

/// Converts from any text and has operators of its own in the library's namespace.
struct Greedy {
    Greedy(const ZString&) {}
    Greedy(double) {}
};
bool operator==(const Greedy&, const Greedy&);
bool operator<(const Greedy&, const Greedy&);
Greedy operator+(const Greedy&, const Greedy&);
std::ostream& operator<<(std::ostream&, const Greedy&);

} // namespace Zelm

namespace {

static_assert(!std::is_constructible_v<ZString, std::nullptr_t> && !std::is_constructible_v<ZString, int> &&
              !std::is_constructible_v<ZString, char> && !std::is_assignable_v<ZString&, std::nullptr_t>);
static_assert(!std::is_convertible_v<ZStringView, ZString> && std::is_constructible_v<ZString, ZStringView>);
static_assert(std::is_convertible_v<ZStringLiteral, ZString> &&
              std::is_convertible_v<ZStringLiteral, ZStringView> &&
              !std::is_convertible_v<ZStringLiteral, const char*> &&
              std::is_constructible_v<const char*, ZStringLiteral>);
static_assert(std::is_nothrow_copy_constructible_v<ZString> &&
              std::is_nothrow_move_constructible_v<ZString> && std::is_nothrow_copy_assignable_v<ZString> &&
              std::is_nothrow_move_assignable_v<ZString> && std::is_nothrow_swappable_v<ZString> &&
              std::is_nothrow_destructible_v<ZString>);
static_assert(sizeof(ZStringLiteral) == 16 && sizeof(ZStringView) == 16 && sizeof(ZString) == 24);
static_assert(ZStringView("constant").size() == 8 && ZStringView(ZStringLiteral("ab")).back() == 'b');

template <class T, class U, class = void>
struct CanAppend : std::false_type {};
template <class T, class U>
struct CanAppend<T, U, std::void_t<decltype(std::declval<T&>() += std::declval<U>())>> : std::true_type {};
static_assert(CanAppend<ZString, char>::value && !CanAppend<ZString, int>::value &&
              !CanAppend<ZString, double>::value);

/// `a` and `b` hold the texts "abc" and "abd".
template <class A, class B>
void expectOperators(A&& a, B&& b) {
    EXPECT_TRUE(!(a == b) && a != b && a < b && a <= b && !(a > b) && !(a >= b));
    EXPECT_TRUE(!(b == a) && b != a && !(b < a) && !(b <= a) && b > a && b >= a);
    EXPECT_EQ(a + b, "abcabd");
    EXPECT_EQ(b + a, "abdabc");
}

template <class Text>
void expectConversions(Text&& abc) {
    const ZStringView view(abc), copied = abc;
    ZString constructed(abc), assigned(std::string("old")), appended;
    assigned = abc;
    appended += abc;
    EXPECT_TRUE(view == "abc" && copied == "abc" && constructed == "abc" && assigned == "abc" &&
                appended == "abc");
    const ZString text("xabcx");
    EXPECT_TRUE(text.find(abc) == 1 && text.rfind(abc) == 1 && text.contains(abc) && !text.starts_with(abc));
    EXPECT_EQ(text.compare(1, 3, abc), 0);
    EXPECT_EQ(text.replace(abc, abc), text);
    std::map<ZString, int, std::less<>> map{{"abc", 1}};
    EXPECT_EQ(map.count(abc), 1u);
}

} // namespace

TEST(Overloads, TextOfEveryKindMeetsEveryOther) {
    const std::string standard[] = {"abc", "abd"};
    const std::string_view standardViews[] = {standard[0], standard[1]};
    const char* pointers[] = {"abc", "abd"};
    char arrays[][8] = {"abc", "abd"};
    const ZString texts[] = {ZString("abc"), ZString(standard[1])};
    const ZStringView views[] = {"abc", "abd"};
    constexpr ZStringLiteral literals[] = {ZStringLiteral("abc"), ZStringLiteral("abd")};
    const auto meetAll = [&](const auto& ours) {
        expectOperators(ours[0], texts[1]);
        expectOperators(ours[0], views[1]);
        expectOperators(ours[0], literals[1]);
        expectOperators(ours[0], standard[1]);
        expectOperators(ours[0], standardViews[1]);
        expectOperators(ours[0], pointers[1]);
        expectOperators(ours[0], arrays[1]);
        expectOperators(ours[0], "abd");
        EXPECT_EQ('x' + ours[0] + 'y', "xabcy");
        std::ostringstream stream;
        stream.width(5);
        stream << ours[0] << '|';
        EXPECT_EQ(stream.str(), "  abc|");
        std::string target = "old";
        target = ours[0];
        EXPECT_EQ(target + std::string(ours[0]), "abcabc");
    };
    meetAll(texts);
    meetAll(views);
    meetAll(literals);
    expectConversions(texts[0]);
    expectConversions(views[0]);
    expectConversions(literals[0]);
    expectConversions(standard[0]);
    expectConversions(standardViews[0]);
    expectConversions(pointers[0]);
    expectConversions(arrays[0]);
    expectConversions("abc");
    expectConversions(ZString(standard[0]));
    expectConversions(std::string("abc"));
}

TEST(Overloads, FunctionsTakeWhatConverts) {
    const auto takesText = [](const ZString& text) { return text.size(); };
    const auto takesView = [](ZStringView text) { return text.size(); };
    const auto takesStandard = [](const std::string& text) { return text.size(); };
    const ZString text("abc");
    EXPECT_EQ(takesText("abc") + takesText(std::string("abc")) + takesText({}) +
                  takesText(ZStringLiteral("abc")),
              9u);
    EXPECT_EQ(takesView(text) + takesView(text + "d") + takesView("abc") + takesView(nullptr), 10u);
    EXPECT_EQ(takesStandard(text) + takesStandard(text + "d") + takesStandard(ZStringView(text)), 10u);
    EXPECT_STREQ(std::runtime_error("cannot open " + text).what(), "cannot open abc");
    std::string sum = text + "d";
    EXPECT_EQ((sum += text), "abcdabc");
    std::unordered_map<ZString, int> map{{"abc", 1}};
    EXPECT_EQ(map[text] + map[ZStringLiteral("abc")], 2);
}
