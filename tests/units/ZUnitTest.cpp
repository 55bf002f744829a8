#include <support/ExpectThrow.h>

#include <zelm/units/ZUnit.h>
#include <zelm/variant/MutableVariant.h>

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstring>
#include <limits>
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

Complex128 formula(const ZUnit& from, const ZUnit& to, Complex128 v) {
    return {formula(from, to, v.real()), formula(from, to, v.imag())};
}

/// To the last bit; a NaN is like any other.
bool same(Complex128 a, Complex128 b) {
    const auto equal = [](double x, double y) {
        return std::isnan(x) ? std::isnan(y) : std::memcmp(&x, &y, sizeof x) == 0;
    };
    return equal(a.real(), b.real()) && equal(a.imag(), b.imag());
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

TEST(ZUnit, ConvertsNumbersAndArraysByTheFormulaToTheLastBit) {
    const double inf = std::numeric_limits<double>::infinity(), nan = std::nan("");
    // clang-format off
    const double numbers[][3] = {{1, 0, 0}, {1000, 0, 0}, {0.5555555555555556, 255.37222222222223, 0}, {-3, -7, 0}, {1, 0, 10},
                                 {1e-3, 0, 20}, {2, 5, 1}, {0, 0, 0}, {inf, 0, -10}, {1, 0, nan}};
    // clang-format on
    const std::vector<double> reals = {0.0, -0.0, 1.0, 66.1, -3.5, 1e300, 1e-300, 5e-324, inf, -inf, nan};
    std::vector<Complex128> pairs;
    for (std::size_t k = 0; k < reals.size(); ++k) {
        pairs.emplace_back(reals[k], reals[reals.size() - 1 - k]);
    }
    std::vector<ZUnit> units; // with texts of their own, for between equal ones no array is converted
    for (const auto& [scale, offset, multiplier] : numbers) {
        const std::string text = std::to_string(units.size()) + "x";
        const ZUnitType type = ZUnitType::Create("", {1, 77, 0, 0, 0, 0, 0, 0, 0}, text);
        units.emplace_back(type, "", scale, offset, multiplier);
    }
    const auto check = [](const ZUnit& from, const ZUnit& to, const auto& values) {
        using Element = typename std::decay_t<decltype(values)>::value_type;
        const Variant kept(values);
        MutableVariant fresh(from.ConvertTo(to, kept)), overwritten(from.ConvertTo(to, Variant(values)));
        for (std::size_t k = 0; k < values.size(); ++k) {
            const Element expected = formula(from, to, values[k]);
            EXPECT_TRUE(same(from.ConvertTo(to, values[k]), expected)) << values[k] << from << to;
            EXPECT_TRUE(&from == &to || (same(fresh.element<Element>({k}), expected) &&
                                         same(overwritten.element<Element>({k}), expected)));
            EXPECT_TRUE(same(MutableVariant(Variant(kept)).element<Element>({k}), values[k]));
        }
    };
    for (const ZUnit& from : units) {
        for (const ZUnit& to : units) {
            check(from, to, reals);
            check(from, to, pairs);
        }
    }
}

TEST(ZUnit, ArraysBetweenEqualSiTextsAloneComeBackUntouched) {
    const ZUnit kmh(ZUnitType::Velocity(), "km/h", 0.25, 0, 0),
        percent(ZUnitType::Dimensionless(), "%", 0.01, 0, 0);
    for (const Variant& value : {Variant(5), Variant("text"), Variant()}) {
        EXPECT_TRUE(kmh.ConvertTo(unit("m/s"), value).isIdenticalTo(value));
        EXPECT_TRUE(percent.ConvertTo(unit("1"), value).isIdenticalTo(value));
    }
    EXPECT_EQ(kmh.ConvertTo(unit("m/s"), 36.0), 9.0);
    EXPECT_TRUE(percent.ConvertTo(ZUnit(), Variant(50)).isIdenticalTo(Variant(0.5)));
    const Variant source({1, 2, 3, 4, 5, 6}, ArrayDimensions{2, 3}, ColumnMajor);
    EXPECT_TRUE(unit("km").ConvertTo(unit("m"), source).isIdenticalTo(source * Variant(1000.0)));
    EXPECT_TRUE(unit("km").ConvertTo(unit("m"), Variant()).dimensions().isEmpty());
    EXPECT_EQ(unit("km").ConvertTo(unit("m"), std::complex<float>(1.5F, -2.0F)), Complex128(1500, -2000));
}

TEST(ZUnit, RefusesWhatCannotBeConverted) {
    const ZUnit km = unit("km");
    const auto refuses = [&](const char* to, const auto& value, const char* text) {
        EXPECT_THROW_MSG(km.ConvertTo(unit(to), value), std::runtime_error, text);
    };
    refuses("s", 1.0, "Units s is not commensurable to km");
    refuses("s", Complex128(1), "Units s is not Commensurable to km");
    refuses("s", Variant("text"), "To units are not commensurable - from: km to s");
    refuses("m", Variant("text"), "Failed convering units from km to m");
    refuses("m", Variant(std::numeric_limits<float>::quiet_NaN()), "Failed convering units from km to m");
    refuses("m", Variant(std::int64_t(9007199254740993)), "Failed convering units from km to m");
}

TEST(ZUnit, WritesTheKeysOfItsConstructorAndIsRebuiltFromThem) {
    const std::string numbers = "LogMultiplier:double Offset:double Scale:double SiUnits:zstring ";
    const std::string read = numbers + "UnitTypeReferenceString:zstring ";
    const ZUnit decays(ZUnitType::Radioactivity(), "decays", 2, 3, 4);
    const std::pair<ZUnit, std::string> rows[] = {
        {ZUnit(), ""}, {unit("V/m"), read}, {decays, "DisplayUnit:zstring " + read}};
    for (const auto& [original, expected] : rows) {
        EXPECT_EQ(keys(original), expected);
        const ZPropertyHandle holder = ZGenericObject(ZObject("Holder"));
        const ZUnit rebuilt(holder.insertChild("unit", original.propertyHandle()).child("unit"));
        EXPECT_TRUE(rebuilt == original && rebuilt.GetUnitType() == original.GetUnitType());
    }
    EXPECT_TRUE(decays.GetSiUnits() == "Bq" && decays.GetUnitTypeReferenceString() == "Bq");
    EXPECT_TRUE(decays.GetScale() == 2 && decays.GetOffset() == 3 && decays.GetLogMultiplier() == 4);
    EXPECT_TRUE(ZUnit().GetScale() == 1 && ZUnit().GetUnitTypeReferenceString() == "1");
    EXPECT_TRUE(ZUnit::Dimensionless(ZUnit()) && !decays.IsDimensionless());

    ZUnit changed;
    changed.ParseAndSetSiUnits("km");
    EXPECT_EQ(keys(changed), numbers);
    const ZUnit rebuilt{ZGenericObject(changed)};
    EXPECT_TRUE(rebuilt.IsDimensionless() && rebuilt.GetScale() == 1000.0);
    EXPECT_THROW_MSG(changed.ParseAndSetSiUnits("m^99999999999"), std::runtime_error,
                     "Invalid units string m^99999999999");
    EXPECT_TRUE(changed == unit("km") && changed.GetUnitType() == ZUnitType::Length());

    const auto saved = [](const char* reference) { // with another writer's types of text and number
        const ZPropertyHandle tree = ZUnit().propertyHandle().setChildValue("Scale", Variant(2));
        return ZUnit(tree.setChildValue("UnitTypeReferenceString", Variant(std::string(reference))));
    };
    EXPECT_TRUE(saved("Hz").GetUnitType() == ZUnitType::Frequency() && saved("Hz").GetScale() == 2.0);
    EXPECT_THROW_MSG(saved("m^77"), std::runtime_error,
                     "Could not find a ZUnitType with reference SI string m^77");
    EXPECT_THROW_MSG(ZUnit(ZGenericObject(ZObject("Holder"))), std::logic_error,
                     "Unit expected but not found");
}

TEST(ZUnit, LabelsGoFromDisplayTextToSiText) {
    EXPECT_TRUE(ZUnit().GetUnitsLabel().empty() && unit("1").GetUnitsLabel().empty());
    ZUnit copy = unit("m");
    const ZUnit source = copy;
    EXPECT_TRUE(copy.SetUnitsLabel("metres").GetUnitsLabel() == "metres" && source.GetUnitsLabel() == "m");
    ZUnit taken = std::move(copy);
    EXPECT_TRUE(taken == copy && copy.GetUnitType() == ZUnitType::Length());
    taken = std::move(copy = unit("s"));
    EXPECT_TRUE(taken == unit("s") && copy == taken);
    std::ostringstream out;
    out << ZUnit(ZUnitType::Velocity(), "km/h", 0.25, 0, 0);
    EXPECT_EQ(out.str(), "SI units=m/s, display label=km/h, scale=0.25\n");
}

TEST(ZUnit, OperatorsFindTheBaseUnitOfTheResult) {
    const ZUnit metre = unit("m"), kat = unit("kat");
    EXPECT_EQ(unit("km") * unit("km"), unit("m^2"));
    EXPECT_EQ((metre / metre).GetUnitsLabel(), "1");
    EXPECT_NE(metre / metre, unit("1"));
    EXPECT_TRUE((unit("Bq") ^ 1).GetUnitType() == ZUnitType::Radioactivity());
    EXPECT_TRUE((unit("Bq").SetUnitsLabel("decays") ^ 1).GetUnitType() == ZUnitType::Frequency());
    EXPECT_EQ((kat * unit("T")).GetUnitType().GetName(), "(kat)*T");
    EXPECT_EQ((kat / unit("F")).GetUnitType().GetName(), "kat/(F)");
    EXPECT_EQ((kat ^ -37).GetUnitType().GetName(), "(kat)^-37");

    const ZUnitType twin = ZUnitType::Create("twin", {1, 79, 0, 0, 0, 0, 0, 0, 0}, "");
    const ZUnit reference(twin, "x", 2, 3, 4);
    EXPECT_EQ(reference, ZUnit(ZUnitType::Create("other", twin.GetDimensions(), "o"), "x", 2, 3, 4));
    for (const ZUnit& other :
         {ZUnit(twin, "y", 2, 3, 4), ZUnit(twin, "x", 1, 3, 4), ZUnit(twin, "x", 2, 1, 4),
          ZUnit(twin, "x", 2, 3, 1), ZUnit(ZUnitType::Mass(), "x", 2, 3, 4)}) {
        EXPECT_NE(other, reference);
    }
}

} // namespace Zelm
