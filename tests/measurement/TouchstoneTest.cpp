#include "Touchstone.h"
#include "Number.h"

#include <support/ExpectThrow.h>

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace measurement {
namespace {

using Complex = std::complex<double>;

Touchstone parse(const std::string& text, std::size_t ports) {
    return parseTouchstone(text, ports, "f");
}

/// The parameters of one point, row by row.
std::vector<Complex> matrixAt(const Touchstone& file, std::size_t point) {
    std::vector<Complex> matrix;
    for (const auto& parameter : file.parameters) {
        matrix.push_back(parameter.at(point));
    }
    return matrix;
}

std::string contentOf(const std::string& file) {
    std::ifstream in(file, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

TEST(Number, TakesDecimalNumbersOfEveryUsualFormAndNothingElse) {
    const std::pair<const char*, double> good[] = {{"+2.5", 2.5},          {"-.5", -.5}, {"1.", 1},
                                                   {"1E+03", 1000},        {"0e999", 0}, {"-1e-400", 0},
                                                   {"4.9e-324", 4.9e-324}, {"007", 7}};
    for (const auto& [text, value] : good) {
        EXPECT_EQ(parseNumber(text), value) << text;
    }
    for (const char* text : {"", "+", "+-1", "++1", "1e+", "1.0D-3", "0x10", "1,5", "nan", "-inf", "1e999",
                             "1 ", " 1", "e5", "."}) {
        EXPECT_FALSE(parseNumber(text)) << text;
    }
    EXPECT_EQ(shortestText(0.1 + 0.2), "0.30000000000000004");
}

TEST(Touchstone, OptionsInAnyOrderAndCaseOverDefaults) {
    const struct {
        const char* line;
        const char* unit;
        char parameter;
        double reference;
        Complex value; // of the pair "2 90"
    } rows[] = {{"#", "GHz", 'S', 50, {0, 2}},
                {"#R +1e2 DB Z KHZ", "kHz", 'Z', 100, {0, std::pow(10, .1)}},
                {" \t# y\tmHz ! Hz S", "MHz", 'Y', 50, {0, 2}},
                {"# hz s ri r 75\n# MHz", "Hz", 'S', 75, {2, 90}}};
    for (const auto& row : rows) {
        const Touchstone file = parse(std::string(row.line) + "\n1 2 90\n", 1);
        EXPECT_TRUE(file.unit == row.unit && file.parameter == row.parameter) << row.line;
        EXPECT_EQ(file.reference, row.reference) << row.line;
        EXPECT_LT(std::abs(file.parameters[0][0] - row.value), 1e-14) << row.line;
    }
}

TEST(Touchstone, LayoutDoesNotMatter) {
    const std::string plain = "# Hz RI\n1 1 2 3 4 5 6 7 8\n2 11 12 13 14 15 16 17 18\n";
    const std::vector<Complex> first{{1, 2}, {5, 6}, {3, 4}, {7, 8}}; // 11, 12, 21, 22 from 11, 21, 12, 22
    for (const std::string& text :
         {"\xEF\xBB\xBF" + plain + "\n! end", "!\xB0 ! #\n\n" + plain + "\x1A",
          std::string("# Hz RI\r\n1\t1 2\t3 4 5 6 7 8 ! 9\r\n \t\r\n!\r\n2 11 12 13 14 15 16 17 18"),
          std::string("# Hz RI\r1 1 2 3 4 5 6 7 8\r2 11 12 13 14\r15 16 17 18\r")}) {
        const Touchstone file = parse(text, 2);
        EXPECT_EQ(file.frequency, (std::vector<double>{1, 2})) << text;
        EXPECT_EQ(matrixAt(file, 0), first) << text;
        EXPECT_TRUE(file.noise.empty());
    }
}

TEST(Touchstone, CountsTheValuesOfLargeMatricesHoweverTheyAreBroken) {
    std::mt19937 random(1);
    for (const std::size_t ports : {std::size_t{3}, std::size_t{4}, std::size_t{99}}) {
        std::string text = "# RI\n0 -1";
        for (std::size_t value = 1; value < 2 * ports * ports; ++value) {
            text += (random() % 5 == 0 ? " ! break\n\n" : " ") + std::to_string(value);
        }
        const Touchstone file = parse(text + "\n", ports);
        ASSERT_EQ(file.frequency.size(), 1u);
        for (std::size_t i = 1; i < ports * ports; ++i) {
            const auto value = static_cast<double>(2 * i);
            ASSERT_EQ(file.parameters[i][0], Complex(value, value + 1));
        }
    }
}

TEST(Touchstone, NoiseBeginsWhereTheFrequencyDoesNotRise) {
    for (const char* first : {"2", "0"}) {
        const Touchstone file = parse("# RI R 20\n1 0 0 1 0 1 0 0 0\n2 0 0 1 0 1 0 0 0\n" +
                                          std::string(first) + " .7 .64 69 .38 ! a\n30 2.7 .46 -33 .4\n",
                                      2);
        EXPECT_EQ(file.frequency.size(), 2u);
        EXPECT_EQ(file.noise.frequency, (std::vector<double>{*parseNumber(first), 30}));
        EXPECT_EQ(file.noise.minimumFigure, (std::vector<double>{.7, 2.7}));
        EXPECT_EQ(file.noise.resistance, (std::vector<double>{.38, .4}));
    }
}

TEST(Touchstone, SaysWhatIsWrongAndWhere) {
    const std::string two = "#\n1 1 2 3 4 5 6 7 8\n";
    const std::string three = "#\n1 1 2 3 4 5 6\n1 2 3 4 5 6\n1 2 3 4 5 6\n";
    const std::string next = "1 2 3 4 5 6\n";
    const struct {
        std::string text;
        std::size_t ports;
        const char* message;
    } rows[] = {
        {"", 1, "f:1: no network data"},
        {"1 2 3\n#\n", 1, "f:1: data before the option line (# ...)"},
        {"# MHz T\x01\xC3\n", 1, "f:1: unknown option 'T\\x01\\xc3'"},
        {"# MA MHz RI", 1, "f:1: more than one number format in the option line"},
        {"# R", 1, "f:1: option R without a resistance"},
        {"# R 0", 1, "f:1: option R needs a resistance above 0, not '0'"},
        {"#\n\n1 nan 3\n", 1, "f:3: a finite number belongs here, not 'nan'"},
        {"#\n" + std::string(60, 'x'), 1,
         "f:2: a finite number belongs here, not 'xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx...'"},
        {"#\n[Version] 2.0\n", 1, "f:2: a keyword of Touchstone 2: '[Version]'"},
        {std::string("!\n!\0\n", 5), 1, "f:2: binary data, no text"},
        {"#\n-1 2 3\n", 1, "f:2: frequency below 0: -1 GHz"},
        {"#\n1e300 2 3\n", 1, "f:2: frequency too large: 1e+300 GHz"},
        {"# RI\n1 1e308 1.7e308\n", 1, "f:2: magnitude too large"},
        {"# kHz\n2 2 3\n\n2 2 3\n", 1, "f:4: frequency does not increase: 2 kHz after 2 kHz"},
        {"#\n1 2\n2 2 3\n", 1, "f:2: a point of 1 port has 3 numbers, this one 2"},
        {"#\n1 2 3\n2 3 4\n3 4 5\n", 2, "f:2: a point of 2 ports has 9 numbers, this one 3"},
        {two + "2 1 2 3 4 5 6 7\n3 1 2 3 4 5 6 7 8\n", 2,
         "f:3: a point of 2 ports has 9 numbers, this one 8"},
        {three + "2 1 2 3 4 5 6\n1 2 3 4 5\n" + next + "3 1 2 3 4 5 6\n", 3,
         "f:6: a point of 3 ports has 19 numbers, this one 18"},
        {three + "2 1 2 3 4 5 6\n1 2 3 4 5 6 7\n" + next, 3,
         "f:6: a point of 3 ports has 19 numbers, this one 20"},
        {three + "2 1 2 3 4 5 6\n" + next + "!\n3 1 2 3 4 5 6\n", 3,
         "f:6: a point of 3 ports has 19 numbers, this one 13"},
        {two + "1 1 2 3 4\n2 1 2 3\n", 2, "f:4: a row of noise data has 5 numbers, not 4"},
        {"# R 1e10\n1 1 2 3 4 5 6 7 8\n1 1 2 3 1e300\n", 2, "f:3: noise resistance too large"},
    };
    for (const auto& row : rows) {
        EXPECT_THROW_MSG(parse(row.text, row.ports), ReadError, row.message);
    }
}

TEST(Touchstone, TakesThePortsFromTheName) {
    EXPECT_TRUE(portsOf("a.s1p") == 1 && portsOf("/x.y/a.b.S8P") == 8 && portsOf("a.s99P") == 99);
    for (const std::string name : {"a", "a.s0p", "a.s01p", "a.s100p", "a.sp", "a.s2q", "s2p", "a.s2p.txt",
                                   "a.s-1p", "", ".", "b.s2p/a"}) {
        EXPECT_THROW_MSG(readTouchstone(name), ReadError,
                         name + ":0: no Touchstone file by its name, which must end in .s1p to .s99p");
    }
    EXPECT_THROW_MSG(readTouchstone("none.s2p"), ReadError, "none.s2p:0: No such file or directory");
}

/// Whatever the text, the reader returns finite numbers in full matrices or says on one line what is wrong.
TEST(Touchstone, DamagedTextsNeverEscapeTheRules) {
    const std::string whole = contentOf(MEASUREMENT_EXAMPLE_FILE);
    const std::string some = whole.substr(0, 2000), noise = whole.substr(whole.find("! f, minimum"));
    const std::string original = some.substr(0, some.rfind('\n') + 1) + noise;
    const std::string_view spice("!#\n\r\t -+eE.0[\x1a\0", 16);
    std::mt19937 random(3);
    int good = 0;
    for (int round = 0; round < 4000; ++round) {
        std::string text = original;
        for (auto damage = random() % 4; damage > 0 && !text.empty(); --damage) {
            const std::size_t place = random() % text.size();
            const auto kind = random() % 3;
            if (kind == 0) {
                text.erase(place, random() % 30);
            } else if (kind == 1) {
                text.insert(place, 1, spice[random() % spice.size()]);
            } else {
                text.insert(place, text, random() % text.size(), random() % 90);
            }
        }
        try {
            const Touchstone file = parse(text, random() % 8 == 0 ? 1 + random() % 5 : 2);
            ++good;
            for (const auto& parameter : file.parameters) {
                ASSERT_EQ(parameter.size(), file.frequency.size());
                for (const Complex& value : parameter) {
                    ASSERT_TRUE(std::isfinite(std::abs(value)));
                }
            }
        } catch (const ReadError& error) {
            ASSERT_GE(error.line(), 1u);
            ASSERT_EQ(std::string(error.what()).find('\n'), std::string::npos);
        }
    }
    EXPECT_GT(good, 500);
}

} // namespace
} // namespace measurement
