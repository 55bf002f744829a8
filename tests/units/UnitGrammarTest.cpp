#include <support/ExpectThrow.h>

#include <zelm/units/ZUnit.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <optional>
#include <random>
#include <regex>
#include <string>
#include <vector>

namespace Zelm {

namespace {

// clang-format off
struct Prefix {
    const char* symbol;
    int exponent;
};
const Prefix kPrefixes[] = {
    {"Y", 24}, {"Z", 21}, {"E", 18}, {"P", 15}, {"T", 12}, {"G", 9}, {"M", 6}, {"k", 3}, {"h", 2}, {"da", 1},
    {"d", -1}, {"c", -2}, {"m", -3}, {"\xC2\xB5", -6}, {"n", -9}, {"p", -12}, {"f", -15}, {"a", -18}, {"z", -21}, {"y", -24}};

using T = ZUnitType;
struct Symbol {
    const char* symbol;
    const ZUnitType& (*type)();
    double factor = 1.0;
};
const Symbol kSymbols[] = {
    {"m", T::Length}, {"g", T::Mass, 0.001}, {"s", T::Time}, {"A", T::ElectricCurrent}, {"K", T::ThermodynamicTemperature},
    {"mol", T::AmountOfSubstance}, {"cd", T::LuminousIntensity}, {"Hz", T::Frequency}, {"N", T::Force}, {"Pa", T::Pressure},
    {"J", T::Energy}, {"W", T::Power}, {"C", T::ElectricCharge}, {"V", T::ElectricPotential}, {"F", T::ElectricCapacitance},
    {"\xCE\xA9", T::ElectricResistance}, {"S", T::Conductance}, {"Wb", T::MagneticFlux}, {"T", T::MagneticFluxDensity},
    {"H", T::Inductance}, {"lm", T::LuminousFlux}, {"lx", T::Illuminance}, {"Bq", T::Radioactivity}, {"Gy", T::AbsorbedDose},
    {"Sv", T::EquivalentDose}, {"kat", T::CatalyticActivity}, {"l", T::Volume, 0.001}, {"L", T::Volume, 0.001},
    {"rad", T::PlaneAngle}, {"deg", T::PlaneAngle, 0.017453292519943295}, {"sr", T::SolidAngle}};
// clang-format on

template <class Row, std::size_t N>
const Row& rowOf(const Row (&table)[N], const std::string& symbol) {
    for (const Row& row : table) {
        if (symbol == row.symbol) {
            return row;
        }
    }
    throw std::logic_error("no row for " + symbol);
}

/// The grammar as a plain recursive descent with std::regex for a unit, level by level.
struct Reading {
    ZUnitDimensions dimensions;
    double scale = 1.0;
    std::string rest;
};
using Result = std::optional<Reading>;

Result expression(const std::string& text);

Result unit(const std::string& text) {
    static const std::regex pattern(
        "^\\s*(Y|Z|E|P|T|G|M|k|h|da|d|c|m|\xC2\xB5|n|p|f|a|z|y)?"
        "(m|g|s|A|K|mol|cd|Hz|N|Pa|J|W|C|V|F|\xCE\xA9|S|Wb|T|H|lm|lx|Bq|Gy|Sv|kat|l|L|"
        "rad|sr|deg)(\\^[+-]?[1-9]\\d*)?");
    std::smatch match;
    if (text.empty() || !std::regex_search(text, match, pattern)) {
        return {};
    }
    const std::string prefix = match[1], symbol = match[2], power = match[3];
    const Symbol& row = rowOf(kSymbols, symbol);
    double factor = prefix.empty() ? 1.0 : std::pow(10.0, rowOf(kPrefixes, prefix).exponent);
    factor *= row.factor;
    ZUnitDimensions dimensions = row.type().GetDimensions();
    if (!power.empty()) {
        const int n = std::stoi(power.substr(1));
        if (factor != 1.0) {
            factor = n == 2 ? factor * factor : std::pow(factor, n);
        }
        dimensions = dimensions ^ n;
    }
    return Reading{dimensions, factor, text.substr(prefix.size() + symbol.size() + power.size())};
}

Result term(const std::string& text) {
    if (text.empty() || text[0] != '(') {
        return unit(text);
    }
    Result inner = expression(text.substr(1));
    if (inner && !inner->rest.empty() && inner->rest[0] == ')') {
        inner->rest.erase(0, 1);
    }
    return inner;
}

Result product(const std::string& text) {
    Result left = term(text);
    if (!left || left->rest.empty() || left->rest[0] != '*') {
        return left;
    }
    const Result tail = product(left->rest.substr(1));
    if (!tail) {
        return {};
    }
    return Reading{left->dimensions * tail->dimensions, tail->scale * left->scale, tail->rest};
}

Result expression(const std::string& text) {
    Result left = product(text);
    if (!left) {
        if (text.empty() || text[0] != '1') {
            return {};
        }
        left = Reading{ZUnitDimensions(), 1.0, text.substr(1)};
    }
    if (left->rest.empty() || left->rest[0] != '/') {
        return left;
    }
    const Result divisor = term(left->rest.substr(1));
    if (!divisor) {
        return {};
    }
    return Reading{left->dimensions / divisor->dimensions, left->scale / divisor->scale, divisor->rest};
}

struct Whole {
    ZUnitDimensions dimensions;
    double scale;
    double logMultiplier;
};

std::optional<Whole> whole(const std::string& text) try {
    if (text.empty()) {
        return Whole{{}, 1.0, 0.0};
    }
    const bool decibel = text.rfind("dB(", 0) == 0, logarithm = text.rfind("log(", 0) == 0;
    const Result read = expression(decibel || logarithm ? text.substr(3) : text);
    if (!read || read->rest != (decibel || logarithm ? ")" : "")) {
        return {};
    }
    const bool amplitude = read->dimensions == ZUnitType::ElectricPotential().GetDimensions() ||
                           read->dimensions == ZUnitType::ElectricCurrent().GetDimensions();
    return Whole{read->dimensions, read->scale, decibel ? (amplitude ? 20.0 : 10.0) : logarithm ? 1.0 : 0.0};
} catch (const std::out_of_range&) { // of std::stoi
    return {};
}

bool sameBits(double a, double b) {
    return std::memcmp(&a, &b, sizeof a) == 0 || (std::isnan(a) && std::isnan(b));
}

/// Reads `text` both ways; whether it is valid.
bool expectAgreement(const std::string& text) {
    const std::optional<Whole> expected = whole(text);
    const ZString shared(text);
    if (!expected) {
        EXPECT_THROW_MSG(ZUnit::FromSiString(shared), std::runtime_error,
                         ("Error constructing a unit from SI String " + text).c_str()); // up to a NUL
        return false;
    }
    try {
        const ZUnit read = ZUnit::FromSiString(shared);
        EXPECT_TRUE(read.GetUnitType().GetDimensions() == expected->dimensions) << text;
        EXPECT_TRUE(sameBits(read.GetScale(), expected->scale)) << text << ' ' << read.GetScale();
        EXPECT_EQ(read.GetLogMultiplier(), expected->logMultiplier) << text;
        EXPECT_EQ(read.GetOffset(), 0.0);
        EXPECT_EQ(read.GetSiUnits().to_string(), text);
    } catch (const std::exception& error) {
        ADD_FAILURE() << error.what();
    }
    return true;
}

} // namespace

TEST(UnitGrammar, EveryPrefixUnitAndPowerReadsAsThePatternDoes) {
    const char* powers[] = {"",     "^1",  "^2", "^3",           "^4",          "^-1", "^-2",
                            "^+2",  "^-3", "^0", "^02",          "^",           "^-0", "^+",
                            "^--1", "^2x", "2",  "^99999999999", "^-2147483648"};
    int valid = 0;
    for (const Symbol& symbol : kSymbols) {
        for (const char* power : powers) {
            valid += expectAgreement(std::string(symbol.symbol) + power);
            for (const Prefix& prefix : kPrefixes) {
                valid += expectAgreement(std::string(prefix.symbol) + symbol.symbol + power);
            }
        }
    }
    EXPECT_GT(valid, 5000);
}

TEST(UnitGrammar, RandomCompositionsReadAsTheRecursiveDescentDoes) {
    const std::vector<std::string> tokens = {
        "(",  "(",   "(",    ")",    ")",     "*",  "*",   "*",     "/",   "/",  "1",
        "m",  "kg",  "s^2",  "mm",   "µg^-1", "Hz", "dam", "V",     "mol", " ",  "^2",
        "\t", "dB(", "log(", "cd^3", "daΩ",   "l",  "u",   "mΩ^-2", "kat", "nA", "deg^2"};
    std::mt19937 random(11);
    const auto below = [&](std::size_t n) { return static_cast<std::size_t>(random()) % n; };
    int valid = 0;
    for (int round = 0; round < 30000; ++round) {
        std::string text = round % 7 == 0 ? "dB(" : round % 31 == 0 ? "log(" : "";
        bool operand = true; // mostly, an operand where one is wanted
        for (std::size_t count = 1 + below(9); count > 0; --count) {
            std::size_t choice = below(tokens.size());
            if (below(8) != 0) {
                choice = operand ? (below(4) == 0 ? below(3) : 11 + below(8)) : 3 + below(6);
            }
            text += tokens[choice];
            operand = tokens[choice] == "(" || tokens[choice] == "*" || tokens[choice] == "/";
        }
        valid += expectAgreement(text);
    }
    EXPECT_GT(valid, 3000);
}

TEST(UnitGrammar, ChosenTextsMeanWhatTheySay) {
    const struct {
        const char* text;
        const ZUnitType& type;
        double scale = 1;
        double logMultiplier = 0;
    } rows[] = {// clang-format off
        {"", T::Dimensionless()}, {"1", T::Dimensionless()}, {"1/ms", T::Frequency(), 1000}, {"kg*m/s^2", T::Force()},
        {"g*m/s^2", T::Force(), 0.001}, {"dB(mW)", T::Power(), 0.001, 10}, {"dB(V)", T::ElectricPotential(), 1, 20},
        {"dB(mA)", T::ElectricCurrent(), 0.001, 20}, {"dB(1)", T::Dimensionless(), 1, 10}, {"log(W))", T::Power(), 1, 1},
        {"((((m", T::Length()}, {"(1", T::Dimensionless()}, {"(1*m", T::Length()}, {"1/(s", T::Frequency()},
        {"(m/s)/s", T::Acceleration()}, {"(m/(1/s))/s", T::Length()}, {"dam", T::Length(), 10}, {"dA", T::ElectricCurrent(), 0.1},
        {"Gs", T::Time(), 1e9}, {"km^2", T::Area(), 1e6}, {"cm^4/m", T::Volume(), 1e-08}, {"dB(Bq)", T::Radioactivity(), 1, 10},
        {"(mm*mm*mg)/(m*m)", T::Mass(), 1.0000000000000002e-12}, {"(km^2147483647)/m^2147483646", T::Length(), HUGE_VAL}};
    // clang-format on
    for (const auto& row : rows) {
        const ZUnit read = ZUnit::FromSiString(ZString(row.text));
        EXPECT_EQ(read.GetUnitType().GetName(), row.type.GetName()) << row.text;
        EXPECT_EQ(read.GetScale(), row.scale) << row.text;
        EXPECT_EQ(read.GetLogMultiplier(), row.logMultiplier) << row.text;
    }
    for (const char* text : {"dB()", "dB(W", "log(W)", "log(W", "()", "(m/s)^2",   "m/s/s",       "m/s*kg",
                             "1*m",  "m/1",  "1/1",    "m*1",   " m", "m ",        "kg *m",       "min",
                             "h",    "mmol", "msr",    "10",    "x",  "\xCE\xBCm", "\xE2\x84\xA6"}) {
        EXPECT_FALSE(expectAgreement(text)) << text;
    }
    EXPECT_FALSE(expectAgreement(std::string("m\0", 2)));
    EXPECT_EQ(ZUnit::FromSiString(ZString(std::string("kmX")).left(2)).GetScale(), 1000.0);
    EXPECT_EQ(ZUnit::FromSiString("N^2147483647").GetUnitType().GetDimensions().Time(), 2);
}

TEST(UnitGrammar, LongTextsNeitherExhaustTheStackNorRegisterWhatTheyDoNotMean) {
    const std::size_t many = 100000;
    const std::string open(many, '('), close(many, ')');
    std::string factors = "m";
    for (std::size_t i = 1; i < many; ++i) {
        factors += "*m";
    }
    const auto length = [](const std::string& text) {
        return ZUnit::FromSiString(ZString(text)).GetUnitType().GetDimensions().Length();
    };
    EXPECT_EQ(length(open + "m"), 1);
    EXPECT_EQ(length(open + factors + close + "/m"), static_cast<int>(many) - 1);
    for (const std::string& text : {open, "m^1" + std::string(many, '0'), std::string(many, ' ') + "m",
                                    factors + "*", open + "m" + close + ")"}) {
        EXPECT_THROW_MSG(ZUnit::FromSiString(ZString(text)), std::runtime_error,
                         "Error constructing a unit from SI String " + text);
    }
    for (const char* text : {"m^1011*kg^7)", "dB(m^1011*kg^7", "m^1011*kg^7^2", "m^1011*kg^7/1"}) {
        EXPECT_FALSE(expectAgreement(text));
    }
    EXPECT_TRUE(T::FindCompatibleTypes({1011, 7, 0, 0, 0, 0, 0, 0, 0}).empty());
}

} // namespace Zelm
