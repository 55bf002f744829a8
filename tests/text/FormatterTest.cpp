// Markers against written results and a regular expression; every kind of argument; what is allocated.

#include <zelm/text/ZStringFormatter.h>

#include <support/Allocations.h>
#include <support/RandomTexts.h>

#include <gtest/gtest.h>

#include <climits>
#include <regex>

using namespace Zelm;
using namespace Zelm::Testing;

TEST(Formatter, ReplacesMarkers) {
    const auto filled = [](const ZString& format) {
        return ZStringFormatter(format).arg("a").arg("%1").toString();
    };
    EXPECT_EQ(filled("%1 and %2|%2 %1 %2|%3x%0y|%%1|%%%1|%1%%2|%01%001%10%-1|50% done"),
              "a and %1|%1 a %1|xy|%1|%a|a%2|a1-1|50 done");
    EXPECT_EQ(filled("100%") + '|' + filled("100%%") + '|' + filled("%%%") + filled({}), "100%|100%|%%");
    EXPECT_EQ(filled(std::string(2'000'001, '%')), std::string(1'000'001, '%'));

    const std::regex pieces("%(%[^%]*)|(%$)|%([0-9]{1,2})|%|([^%]+)");
    std::mt19937 random(3);
    for (int round = 0; round < 5000; ++round) {
        const std::string format = randomText(random, random() % 12, "%%%%00112349 x");
        // Cut out of digits, which must not count.
        ZStringFormatter formatter(ZString('1' + format + '1').mid(1, format.size()));
        std::vector<std::string> arguments{""};
        for (auto count = random() % 14; count > 0; --count) {
            arguments.push_back(randomText(random, random() % 4, "ab%1"));
            formatter.arg(arguments.back());
        }
        std::string expected;
        for (std::sregex_iterator piece(format.begin(), format.end(), pieces), end; piece != end; ++piece) {
            const std::size_t number = std::stoul('0' + piece->str(3));
            expected += piece->format("$1$2$4") + (number < arguments.size() ? arguments[number] : "");
        }
        ASSERT_EQ(formatter.toString(), expected) << format;
    }
}

TEST(Formatter, TakesArgumentsOfEveryKind) {
    char text[] = "abcd", *null = nullptr;
    ZStringFormatter all("%1%2%3|%4%5|%6%7|%8 %9 %10 %11|%12%13|%14|%15 %16", true);
    all.arg(ZString("a"), 3).arg("a", -3).arg(text, 2).arg(null).arg(nullptr, 2).arg('c').arg('c', -2);
    all.arg(-1).arg(UINT_MAX).arg(4294967301L).arg(ULONG_MAX).arg(LLONG_MIN, 21).arg(ULLONG_MAX, -21);
    const ZString result = all.arg(3.14159, 'f', 2, 8).arg(2.5, 'e').arg(1.0f / 3, 'G', 3).toString();
    EXPECT_EQ(result, "  aa  abcd|  |cc |-1 4294967295 5 4294967295| "
                      "-922337203685477580818446744073709551615 |    3.14|2.500000e+00 0.333");
}

TEST(Formatter, SharesItsArgumentsAndAllocatesTheResultAtOnce) {
    const ZString text(std::string("0123456789"));
    ZStringFormatter two = ZStringFormatter("%1,%2").arg(text).arg(text), moved = std::move(two);
    EXPECT_TRUE(text.testing_get_ref_count() == 3 && two.arg(text).toString().empty());
    EXPECT_LE(allocationsOf([&] { moved.toString(); }), 2); // the Storage and its characters
}
