#include <support/ExpectThrow.h>

#include <zelm/units/ZUnit.h>

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

namespace Zelm {
namespace {

using T = ZUnitType;

// clang-format off
const std::vector<std::pair<std::string, int>> kPrefixes = {
    {"Y", 24}, {"Z", 21}, {"E", 18}, {"P", 15}, {"T", 12}, {"G", 9}, {"M", 6}, {"k", 3}, {"h", 2}, {"da", 1}, {"d", -1}, {"c", -2},
    {"m", -3}, {"µ", -6}, {"n", -9}, {"p", -12}, {"f", -15}, {"a", -18}, {"z", -21}, {"y", -24}, {"", 0}, {"", 0}, {"", 0}};
/// The symbols that can be read, with their quantity and factor.
const std::vector<std::tuple<std::string, const char*, double>> kSymbols = {
    {"m", "m", 1}, {"g", "kg", 0.001}, {"s", "s", 1}, {"A", "A", 1}, {"K", "K", 1}, {"cd", "cd", 1}, {"Hz", "Hz", 1}, {"N", "N", 1},
    {"Pa", "Pa", 1}, {"J", "J", 1}, {"W", "W", 1}, {"C", "C", 1}, {"V", "V", 1}, {"F", "F", 1}, {"Ω", "Ω", 1}, {"S", "S", 1},
    {"T", "T", 1}, {"H", "H", 1}, {"lm", "lm", 1}, {"lx", "lx", 1}, {"Bq", "Bq", 1}, {"Gy", "Gy", 1}, {"kat", "kat", 1},
    {"l", "m^3", 0.001}, {"L", "m^3", 0.001}, {"rad", "rad", 1}, {"deg", "rad", 0.017453292519943295}};
// clang-format on

void expectInvalid(const std::string& text) {
    EXPECT_THROW_MSG(ZUnit::FromSiString(ZString(text)), std::runtime_error,
                     ("Error constructing a unit from SI String " + text).c_str()); // up to a NUL
}

/// Random texts with what they mean.
struct Sample {
    std::string text;
    ZUnitDimensions dimensions;
    double scale = 1.0;
};

std::mt19937 s_random(11);

Sample expression(int depth);

Sample term(int depth) {
    if (depth > 0 && s_random() % 4 == 0) {
        const Sample inner = expression(depth - 1);
        return {'(' + inner.text + ')', inner.dimensions, inner.scale};
    }
    const auto& [prefix, exponent] = kPrefixes[s_random() % kPrefixes.size()];
    const auto& [symbol, reference, factor] = kSymbols[s_random() % kSymbols.size()];
    const int power = static_cast<int>(s_random() % 7) - 3;
    const double scale = std::pow(10.0, exponent) * factor;
    const std::string text = power == 0 ? "" : (power == 3 ? "^+" : "^") + std::to_string(power);
    return {prefix + symbol + text,
            T::FindByReferenceSiString(reference).GetDimensions() ^ (power ? power : 1),
            power == 2 ? scale * scale : std::pow(scale, power ? power : 1)};
}

Sample product(int depth) {
    const Sample left = term(depth);
    if (s_random() % 2) {
        return left;
    }
    const Sample tail = product(depth); // multiplied from the back to the front
    return {left.text + '*' + tail.text, left.dimensions * tail.dimensions, tail.scale * left.scale};
}

Sample expression(int depth) {
    const Sample left = s_random() % 4 ? product(depth) : Sample{"1", {}, 1.0};
    if (s_random() % 2) {
        return left;
    }
    const Sample divisor = term(depth);
    return {left.text + '/' + divisor.text, left.dimensions / divisor.dimensions, left.scale / divisor.scale};
}

} // namespace

TEST(UnitGrammar, RandomExpressionsMeanWhatTheyAreMadeOf) {
    const ZUnitDimensions volt = T::ElectricPotential().GetDimensions();
    const ZUnitDimensions ampere = T::ElectricCurrent().GetDimensions();
    for (int round = 0; round < 10000; ++round) {
        const Sample sample = expression(3);
        const bool isAmplitude = sample.dimensions == volt || sample.dimensions == ampere;
        const std::pair<std::string, double> forms[] = {
            {sample.text, 0.0},
            {"log(" + sample.text + "))", 1.0},
            {"dB(" + sample.text + ')', isAmplitude ? 20.0 : 10.0}};
        for (const auto& [text, multiplier] : forms) {
            const ZUnit read = ZUnit::FromSiString(ZString(text));
            EXPECT_TRUE(read.GetUnitType().GetDimensions() == sample.dimensions) << text;
            EXPECT_TRUE(read.GetScale() == sample.scale || std::isnan(sample.scale)) << text;
            EXPECT_TRUE(read.GetLogMultiplier() == multiplier && read.GetOffset() == 0.0) << text;
            EXPECT_EQ(read.GetSiUnits(), ZString(text));
        }
        for (const char* tail : {"*", "/", ")", " ", "u", "^"}) {
            expectInvalid(sample.text + tail);
        }
    }
}

TEST(UnitGrammar, ChosenTextsMeanWhatTheySay) {
    EXPECT_EQ(ZUnit::FromSiString("cm^4").GetScale(), 1e-08);
    EXPECT_EQ(ZUnit::FromSiString(ZString(std::string("kmX")).left(2)).GetScale(), 1000.0);
    EXPECT_TRUE(ZUnit::FromSiString("dB(Bq)").GetUnitType() == T::Radioactivity());
    for (const char* text : {"", "(m", "((m", "log(W))", "dB(1)", "m^-2147483648"}) {
        EXPECT_EQ(ZUnit::FromSiString(text).GetSiUnits(), text);
    }
    for (const char* text : {" m", "(", "()", "m^0", "m^02", "m^--1", "m^99999999999", "u", "dB(m", "log(m)",
                             "mol", "\xCE\xBCm", "1m", "m//s", "m/s/s"}) {
        expectInvalid(text);
    }
    expectInvalid(std::string("m\0", 2));
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
    for (const std::string& text : {open, "m^1" + close, factors + "*", std::string("m^1011*kg^7)")}) {
        expectInvalid(text);
    }
    EXPECT_TRUE(T::FindCompatibleTypes({1011, 7, 0, 0, 0, 0, 0, 0, 0}).empty());
}

} // namespace Zelm
