#include <support/ExpectThrow.h>

#include <zelm/units/ZUnit.h>

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <optional>
#include <random>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace Zelm {
namespace {

using T = ZUnitType;

// clang-format off
const std::map<std::string, int> kPrefixes = {
    {"", 0}, {"Y", 24}, {"Z", 21}, {"E", 18}, {"P", 15}, {"T", 12}, {"G", 9}, {"M", 6}, {"k", 3}, {"h", 2}, {"da", 1}, {"d", -1},
    {"c", -2}, {"m", -3}, {"µ", -6}, {"n", -9}, {"p", -12}, {"f", -15}, {"a", -18}, {"z", -21}, {"y", -24}};
// clang-format on
const std::string kSymbols =
    "m|g|s|A|K|mol|cd|Hz|N|Pa|J|W|C|V|F|Ω|S|Wb|T|H|lm|lx|Bq|Gy|Sv|kat|l|L|rad|sr|deg";
/// The base unit and the factor of the symbols that are no base units themselves.
const std::map<std::string, std::pair<const char*, double>> kScaled = {
    {"g", {"kg", 0.001}},
    {"l", {"m^3", 0.001}},
    {"L", {"m^3", 0.001}},
    {"deg", {"rad", 0.017453292519943295}}};

/// The grammar as a plain recursive descent with std::regex for a unit. Each level takes what it reads off
/// the front of `rest`, and throws a std::logic_error if there is nothing to read.
struct Reading {
    ZUnitDimensions dimensions;
    double scale = 1.0;
};

bool skip(std::string& rest, char c) {
    const bool stands = rest[0] == c;
    rest.erase(0, stands);
    return stands;
}

Reading unit(std::string& rest) {
    static const std::regex pattern("^\\s*(Y|Z|E|P|T|G|M|k|h|da|d|c|m|µ|n|p|f|a|z|y)?(" + kSymbols +
                                    ")(\\^[+-]?[1-9]\\d*)?");
    std::smatch match;
    if (rest.empty() || !std::regex_search(rest, match, pattern)) {
        throw std::invalid_argument("no unit");
    }
    const std::string prefix = match[1], symbol = match[2], power = match[3];
    const auto scaled = kScaled.find(symbol);
    const auto [base, factor] = scaled == kScaled.end() ? std::pair(symbol.c_str(), 1.0) : scaled->second;
    Reading read{T::FindByReferenceSiString(base).GetDimensions(),
                 std::pow(10.0, kPrefixes.at(prefix)) * factor};
    if (!power.empty()) {
        const int n = std::stoi(power.substr(1));
        read.scale = n == 2 ? read.scale * read.scale : std::pow(read.scale, n);
        read.dimensions = read.dimensions ^ n;
    }
    rest.erase(0, prefix.size() + symbol.size() + power.size());
    return read;
}

Reading expression(std::string& rest);

Reading term(std::string& rest) {
    if (!skip(rest, '(')) {
        return unit(rest);
    }
    const Reading inner = expression(rest);
    skip(rest, ')');
    return inner;
}

Reading product(std::string& rest) {
    const Reading left = term(rest);
    if (!skip(rest, '*')) {
        return left;
    }
    const Reading tail = product(rest);
    return {left.dimensions * tail.dimensions, tail.scale * left.scale};
}

Reading expression(std::string& rest) {
    const Reading left = skip(rest, '1') ? Reading() : product(rest);
    if (!skip(rest, '/')) {
        return left;
    }
    const Reading divisor = term(rest);
    return {left.dimensions / divisor.dimensions, left.scale / divisor.scale};
}

/// Reads `text` both ways; whether it is valid.
bool expectAgreement(const std::string& text) {
    const bool decibel = text.rfind("dB(", 0) == 0, logarithm = text.rfind("log(", 0) == 0;
    std::optional<Reading> expected;
    try {
        std::string rest = decibel || logarithm ? text.substr(3) : text;
        const Reading read = text.empty() ? Reading() : expression(rest);
        if (rest == (decibel || logarithm ? ")" : "")) {
            expected = read;
        }
    } catch (const std::logic_error&) { // nothing to read, or a power out of range
    }
    if (!expected) {
        EXPECT_THROW_MSG(ZUnit::FromSiString(ZString(text)), std::runtime_error,
                         ("Error constructing a unit from SI String " + text).c_str()); // up to a NUL
        return false;
    }
    const bool amplitude = expected->dimensions == T::ElectricPotential().GetDimensions() ||
                           expected->dimensions == T::ElectricCurrent().GetDimensions();
    const ZUnit read = ZUnit::FromSiString(ZString(text));
    const double scale = read.GetScale();
    EXPECT_TRUE(read.GetUnitType().GetDimensions() == expected->dimensions) << text;
    EXPECT_TRUE(scale == expected->scale || (std::isnan(scale) && std::isnan(expected->scale))) << text;
    EXPECT_EQ(read.GetLogMultiplier(), decibel ? (amplitude ? 20 : 10) : logarithm) << text;
    EXPECT_TRUE(read.GetOffset() == 0.0 && read.GetSiUnits() == ZString(text)) << text;
    return true;
}

} // namespace

TEST(UnitGrammar, EveryPrefixUnitAndPowerReadsAsThePatternDoes) {
    int valid = 0;
    std::istringstream symbols(kSymbols);
    for (std::string symbol; std::getline(symbols, symbol, '|');) {
        for (const auto& [prefix, exponent] : kPrefixes) {
            for (const char* power : {"", "^2", "^3", "^-1", "^-2", "^+2", "^0", "^02", "^", "^+", "^--1",
                                      "^2x", "2", "^99999999999", "^-2147483648"}) {
                valid += expectAgreement(prefix + symbol + power);
            }
        }
    }
    EXPECT_GT(valid, 3900);
}

TEST(UnitGrammar, RandomCompositionsReadAsTheRecursiveDescentDoes) {
    const std::vector<std::string> operands = {"m", "kg",  "(s^2", "((mm", "µg^-1", "1", "(1",
                                               "V", "(nA", "mol",  " m",   "deg^2", "",  "u"};
    const std::vector<std::string> joints = {"*", "/", "*(", "/(", ")*", ")/", ")", "^2", ""};
    std::mt19937 random(11);
    const auto any = [&](const std::vector<std::string>& of) { return of[random() % of.size()]; };
    int valid = 0;
    for (int round = 0; round < 30000; ++round) {
        std::string text = round % 7 == 0 ? "dB(" : round % 31 == 0 ? "log(" : "";
        for (auto count = random() % 5; count > 0; --count) {
            text += any(operands) + any(joints);
        }
        valid += expectAgreement(text + any(operands) + std::string(random() % 3, ')'));
    }
    EXPECT_GT(valid, 3000);
}

TEST(UnitGrammar, ChosenTextsMeanWhatTheySay) {
    const auto scale = [](const ZString& text) { return ZUnit::FromSiString(text).GetScale(); };
    EXPECT_EQ(scale("cm^4"), 1e-08);
    EXPECT_EQ(scale("mm*mm*mg"), 1.0000000000000002e-12); // from the back to the front
    EXPECT_EQ(scale("Gs*dam"), 1e10);
    EXPECT_EQ(scale(ZString(std::string("kmX")).left(2)), 1000.0);
    EXPECT_TRUE(ZUnit::FromSiString("dB(Bq)").GetUnitType() == T::Radioactivity());
    EXPECT_EQ(ZUnit::FromSiString("N^2147483647").GetUnitType().GetDimensions().Time(), 2);
    EXPECT_FALSE(expectAgreement(std::string("m\0", 2)) || expectAgreement("\xCE\xBCm") ||
                 expectAgreement("\xE2\x84\xA6"));
    EXPECT_TRUE(expectAgreement("") && expectAgreement("log(W))") && expectAgreement("dB(1)"));
}

TEST(UnitGrammar, LongTextsNeitherExhaustTheStackNorRegisterWhatTheyDoNotMean) {
    const std::size_t many = 100000;
    const std::string open(many, '('), close(many, ')');
    std::string factors = "m";
    for (std::size_t i = 1; i < many; ++i) {
        factors += "*m";
    }
    const ZUnit nested = ZUnit::FromSiString(ZString(open + factors + close + "/m"));
    EXPECT_EQ(nested.GetUnitType().GetDimensions().Length(), static_cast<int>(many) - 1);
    for (const std::string& text : {open, "m^1" + std::string(many, '0'), std::string(many, ' ') + "m",
                                    factors + "*", open + "m" + close + ")"}) {
        EXPECT_THROW_MSG(ZUnit::FromSiString(ZString(text)), std::runtime_error,
                         "Error constructing a unit from SI String " + text);
    }
    EXPECT_FALSE(expectAgreement("m^1011*kg^7)") || expectAgreement("dB(m^1011*kg^7"));
    EXPECT_TRUE(T::FindCompatibleTypes({1011, 7, 0, 0, 0, 0, 0, 0, 0}).empty());
}

} // namespace Zelm
