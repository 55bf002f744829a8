// Text of every kind with text of every other: each call has to mean one thing.

#include <zelm/text/ZString.h>

#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>

using namespace Zelm;

namespace {

static_assert(!std::is_constructible_v<ZString, std::nullptr_t> && !std::is_constructible_v<ZString, int>);
static_assert(sizeof(ZStringLiteral) == 16 && sizeof(ZStringView) == 16 && sizeof(ZString) == 24);

/// `a` and `b` hold the texts "abc" and "abd".
template <class A, class B>
void expectOperators(const A& a, const B& b) {
    EXPECT_TRUE(!(a == b) && a != b && a < b && a <= b && b > a && b >= a);
    EXPECT_EQ('x' + (a + b) + 'y', "xabcabdy");
}

template <class Text>
void expectToBeText(Text&& abc) {
    expectOperators(abc, ZString("abd"));
    expectOperators(abc, ZStringView("abd"));
    expectOperators(abc, ZStringLiteral("abd"));
    const ZString constructed(abc);
    ZString assigned(std::string("old")), appended("x");
    assigned = abc;
    appended += abc;
    EXPECT_TRUE(constructed == "abc" && assigned == constructed && appended == 'x' + constructed);
    EXPECT_TRUE(appended.find(abc) == 1 && appended.contains(abc) && appended.compare(1, 3, abc) == 0);
}

} // namespace

TEST(Overloads, TextOfEveryKindMeetsEveryOther) {
    char array[8] = "abc";
    const char* const pointer = array;
    expectToBeText("abc");
    expectToBeText(array);
    expectToBeText(pointer);
    expectToBeText(std::string("abc"));
    expectToBeText(std::string_view("abc"));
    expectToBeText(ZString("abc"));
    expectToBeText(ZStringView("abc"));
    expectToBeText(ZStringLiteral("abc"));
    const ZString text("abc");
    std::ostringstream stream;
    stream << std::setw(5) << text << '|';
    EXPECT_EQ(stream.str(), "  abc|");
}
