#include <support/ExpectThrow.h>

#include <zelm/units/ZSystemOfUnits.h>
#include <zelm/units/ZUnit.h>
#include <zelm/units/ZUnitConverter.h>
#include <zelm/variant/MutableVariant.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstring>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace Zelm {
namespace {

using Complex128 = std::complex<double>;

/// The formula, written without regard to speed.
double formula(const ZUnit& from, const ZUnit& to, double v) {
    const double linear = from.IsLogarithmic() ? std::pow(10.0, v / from.GetLogMultiplier()) : v;
    const double y = (from.GetOffset() + from.GetScale() * linear - to.GetOffset()) / to.GetScale();
    return to.IsLogarithmic() ? to.GetLogMultiplier() * std::log10(y < 1e-300 ? 1e-300 : y) : y;
}

/// To the last bit; a NaN is like any other.
bool same(double a, double b) {
    return std::isnan(a) ? std::isnan(b) : std::memcmp(&a, &b, sizeof a) == 0;
}

bool same(const std::vector<double>& a, const std::vector<double>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](double x, double y) { return same(x, y); });
}

std::vector<double> elements(Variant value) {
    MutableVariant array(std::move(value));
    const double* const first = &array.element<double>({0});
    return {first, first + array.dimensions().countAllElements()};
}

/// More than loops take in at once.
std::vector<double> repeated(const std::vector<double>& values) {
    std::vector<double> result;
    while (result.size() < 1050) {
        result.insert(result.end(), values.begin(), values.end());
    }
    return result;
}

std::string keys(const ZUnit& unit) {
    std::string result;
    for (const ZPropertyHandle& child : unit.propertyHandle()) {
        result += child.getName() + ":" + child.getValue().wellKnownType().ToString() + " ";
    }
    return result;
}

ZUnit unit(const char* text) {
    return ZUnit::FromSiString(ZString(text));
}

} // namespace

TEST(ZUnit, EveryWayOfConversionFollowsTheFormulaToTheLastBit) {
    const double inf = std::numeric_limits<double>::infinity(), nan = std::nan("");
    const double numbers[][3] = {{1, 0, 0},     {1000, 0, 0}, {0.5, 255.37, 0}, {-3, -7, 0},   {1, 0, 10},
                                 {1e-3, 0, 20}, {2, 5, 1},    {0, 0, 0},        {inf, 0, -10}, {1, 0, nan}};
    std::vector<ZUnit> units = ZSystemOfUnits::instance().GetAllUnits();
    for (const auto& [scale, offset, multiplier] : numbers) {
        const std::string text = std::to_string(units.size()) + "x"; // of its own, so that arrays convert
        const ZUnitType type = ZUnitType::Create("", {1, 77, 0, 0, 0, 0, 0, 0, 0}, text);
        units.emplace_back(type, "", scale, offset, multiplier);
    }
    std::vector<double> reals = {0.0, -0.0, 1.0, 66.1, -3.5, 1e300, 5e-324, inf, -inf, nan};
    std::mt19937 random(6);
    while (reals.size() < 30) {
        reals.push_back(std::ldexp(static_cast<double>(random()) - 2e9, -22));
    }
    const std::vector<double> many = repeated(reals);
    for (const ZUnit& from : units) {
        for (const ZUnit& to : units) {
            if (!from.IsCommensurable(to)) {
                continue;
            }
            const ZUnitConverter convert(from, to);
            std::vector<double> results, in = many, out = many;
            for (const double real : reals) {
                results.push_back(formula(from, to, real));
                const Complex128 pair = from.ConvertTo(to, Complex128(1.0, real));
                EXPECT_TRUE(same({pair.real(), pair.imag(), convert(real), from.ConvertTo(to, real)},
                                 {convert(1.0), results.back(), results.back(), results.back()}))
                    << real << from << to;
                EXPECT_TRUE(same(convert(Complex128(real, 1.0)).real(), results.back()));
            }
            const std::vector<double> expected = repeated(results);
            convert(many.data(), out.data(), out.size());
            convert(in.data(), in.data(), in.size() - 1);
            EXPECT_TRUE(same(out, expected) && same(in.back(), many.back())) << from << to;
            in.back() = expected.back();
            EXPECT_TRUE(same(in, expected)) << from << to;
            const bool untouched = from.GetSiUnits() == to.GetSiUnits();
            const Variant kept(many);
            for (const Variant& array : {convert(kept), convert(Variant(many)), from.ConvertTo(to, kept),
                                         from.ConvertTo(to, Variant(many))}) {
                EXPECT_TRUE(same(elements(array), untouched ? many : expected)) << from << to;
            }
            EXPECT_TRUE(same(elements(kept), many));
        }
    }
}

TEST(ZUnit, ArraysKeepTheirShapeAndBetweenEqualSiTextsAllThatTheyAre) {
    const ZUnit kmh(ZUnitType::Velocity(), "km/h", 0.25, 0, 0);
    for (const Variant& value : {Variant(5), Variant("text"), Variant()}) {
        EXPECT_TRUE(kmh.ConvertTo(unit("m/s"), value).isIdenticalTo(value));
        EXPECT_TRUE(ZUnitConverter(kmh, unit("m/s"))(value).isIdenticalTo(value));
    }
    std::vector<Complex128> pairs(1001, {1.5, -2.0});
    pairs.back() = {0.0, 3.0};
    for (const Variant& source : {Variant({1, 2, 3, 4, 5, 6}, ArrayDimensions{2, 3}, ColumnMajor),
                                  Variant(pairs, ArrayDimensions{7, 143}), Variant(std::vector<int>())}) {
        const Variant expected = source * Variant(1000.0);
        EXPECT_TRUE(unit("km").ConvertTo(unit("m"), source).isIdenticalTo(expected));
        EXPECT_TRUE(ZUnitConverter(unit("km"), unit("m"))(source + Variant(0.0)).isIdenticalTo(expected));
    }
}

TEST(ZUnit, RefusesWhatCannotBeConverted) {
    const ZUnit km = unit("km"), s = unit("s");
    const char* const number = "Units s is not commensurable to km";
    EXPECT_THROW_MSG(km.ConvertTo(s, 1.0), std::runtime_error, number);
    EXPECT_THROW_MSG(ZUnitConverter(km, s), std::runtime_error, number);
    EXPECT_THROW_MSG(km.ConvertTo(s, Complex128(1)), std::runtime_error,
                     "Units s is not Commensurable to km");
    EXPECT_THROW_MSG(km.ConvertTo(s, Variant("text")), std::runtime_error,
                     "To units are not commensurable - from: km to s");
    const char* const text = "Failed convering units from km to m";
    EXPECT_THROW_MSG(km.ConvertTo(unit("m"), Variant("text")), std::runtime_error, text);
    EXPECT_THROW_MSG(ZUnitConverter(km, unit("m"))(Variant("text")), std::runtime_error, text);
}

TEST(ZUnit, WritesTheKeysOfItsConstructorAndIsRebuiltFromThem) {
    const std::string numbers = "LogMultiplier:double Offset:double Scale:double SiUnits:zstring ";
    const std::string read = numbers + "UnitTypeReferenceString:zstring ";
    const std::pair<ZUnit, std::string> rows[] = {
        {ZUnit(), ""},
        {unit("V/m"), read},
        {ZUnit(ZUnitType::Radioactivity(), "decays", 2, 3, 4), "DisplayUnit:zstring " + read}};
    for (const auto& [original, expected] : rows) {
        EXPECT_EQ(keys(original), expected);
        const ZPropertyHandle holder = ZGenericObject(ZObject("Holder"));
        const ZUnit rebuilt(holder.insertChild("unit", original.propertyHandle()).child("unit"));
        EXPECT_TRUE(rebuilt == original && rebuilt.GetUnitType() == original.GetUnitType());
    }
    ZUnit changed;
    changed.ParseAndSetSiUnits("km");
    EXPECT_EQ(keys(changed), numbers);
    EXPECT_THROW_MSG(changed.ParseAndSetSiUnits("m^99999999999"), std::runtime_error,
                     "Invalid units string m^99999999999");
    EXPECT_TRUE(changed == unit("km") && changed.GetUnitType() == ZUnitType::Length());
    const ZPropertyHandle tree = ZUnit().propertyHandle();
    const ZUnit saved(tree.setChildValue("UnitTypeReferenceString", Variant(std::string("Hz"))));
    EXPECT_TRUE(saved.GetUnitType() == ZUnitType::Frequency());
    EXPECT_THROW_MSG(ZUnit(tree.setChildValue("UnitTypeReferenceString", Variant("m^77"))),
                     std::runtime_error, "Could not find a ZUnitType with reference SI string m^77");
    EXPECT_THROW_MSG(ZUnit(ZGenericObject(ZObject("Holder"))), std::logic_error,
                     "Unit expected but not found");
}

TEST(ZUnit, OperatorsFindTheBaseUnitOfTheResult) {
    const ZUnit kat = unit("kat");
    EXPECT_EQ(unit("km") * unit("km"), unit("m^2"));
    EXPECT_TRUE((unit("Bq") ^ 1).GetUnitType() == ZUnitType::Radioactivity());
    EXPECT_EQ((unit("kat^41") * unit("T")).GetUnitType().GetName(), "(kat^41)*T");
    EXPECT_EQ((unit("kat^41") / unit("F")).GetUnitType().GetName(), "kat^41/(F)");
    EXPECT_EQ((kat ^ -37).GetUnitType().GetName(), "(kat)^-37");
    EXPECT_TRUE(unit("1").GetUnitsLabel().empty() && (kat / kat).GetUnitsLabel() == "1");
}

TEST(ZUnit, DiffersByLabelNumbersAndDimensions) {
    const ZUnitType length = ZUnitType::Length(), mass = ZUnitType::Mass();
    const ZUnit unit(length, "x", 2, 3, 4);
    EXPECT_TRUE(unit != ZUnit(length, "y", 2, 3, 4) && unit != ZUnit(length, "x", 1, 3, 4));
    EXPECT_TRUE(unit != ZUnit(length, "x", 2, 1, 4) && unit != ZUnit(length, "x", 2, 3, 1));
    EXPECT_NE(unit, ZUnit(mass, "x", 2, 3, 4));
    std::ostringstream out;
    out << unit;
    EXPECT_EQ(out.str(), "SI units=m, display label=x, scale=2\n");
}

} // namespace Zelm
