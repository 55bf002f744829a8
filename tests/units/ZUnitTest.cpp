#include <support/ExpectThrow.h>

#include <zelm/units/ZUnit.h>

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

struct Numbers {
    double scale;
    double offset;
    double multiplier;
};

/// The formula, written without regard to speed.
double formula(const Numbers& from, const Numbers& to, double v) {
    const double linear = from.multiplier != 0.0 ? std::pow(10.0, v / from.multiplier) : v;
    const double y = (from.offset + from.scale * linear - to.offset) / to.scale;
    return to.multiplier == 0.0 ? y : to.multiplier * std::log10(y < 1e-300 ? 1e-300 : y);
}

std::uint64_t bits(double value) {
    std::uint64_t result = 0;
    value = std::isnan(value) ? std::nan("") : value;
    std::memcpy(&result, &value, sizeof value);
    return result;
}

template <class T>
std::vector<std::uint64_t> bits(const Variant& array) {
    std::vector<std::uint64_t> result;
    const std::uint64_t count = array.dimensions().countAllElements();
    for (std::uint64_t i = 0; i < count; ++i) {
        const std::complex<double> element = array.slice({IndexSet(IndexValue(i, false))}).value<T>();
        result.insert(result.end(), {bits(element.real()), bits(element.imag())});
    }
    return result;
}

std::string keys(const ZUnit& unit) {
    std::string result;
    for (const ZPropertyHandle& child : unit.propertyHandle()) {
        result += child.getName().to_string() + ':' + child.getValue().wellKnownType().ToString() + ' ';
    }
    return result;
}

ZUnit unit(const char* text) {
    return ZUnit::FromSiString(ZString(text));
}

} // namespace

TEST(ZUnit, ConvertsNumbersAndArraysByTheFormulaToTheLastBit) {
    const double inf = std::numeric_limits<double>::infinity(), nan = std::nan("");
    const Numbers all[] = {{1, 0, 0},      {1000, 0, 0}, {0.5555555555555556, 255.37222222222223, 0},
                           {1, 273.15, 0}, {-3, -7, 0},  {1, 0, 10},
                           {1e-3, 0, 20},  {2, 5, 1},    {0, 0, 0},
                           {inf, 0, -10},  {1, 0, nan}};
    const std::vector<double> values = {0.0,   -0.0,   1.0,    66.1, -3.5, 20.0,
                                        1e300, 1e-300, 5e-324, inf,  -inf, nan};
    std::vector<ZUnit> units;
    for (const Numbers& n : all) { // with texts of their own, for between equal ones no array is converted
        const ZUnitType type =
            ZUnitType::Create("", {1, 77, 0, 0, 0, 0, 0, 0, 0}, std::to_string(units.size()) + "x");
        units.emplace_back(type, "", n.scale, n.offset, n.multiplier);
    }
    for (std::size_t i = 0; i < units.size(); ++i) {
        for (std::size_t j = 0; j < units.size(); ++j) {
            const ZUnit &from = units[i], &to = units[j];
            const auto convert = [&](double v) { return bits(formula(all[i], all[j], v)); };
            std::vector<std::uint64_t> reals, complexes;
            std::vector<Complex128> pairs;
            for (const double v : values) {
                const Complex128 pair(v, values[values.size() - 1 - pairs.size()]),
                    converted = from.ConvertTo(to, pair);
                pairs.push_back(pair);
                reals.insert(reals.end(), {convert(v), bits(0.0)});
                complexes.insert(complexes.end(), {convert(pair.real()), convert(pair.imag())});
                EXPECT_EQ(bits(from.ConvertTo(to, v)), convert(v)) << i << ' ' << j << ' ' << v;
                EXPECT_EQ(bits(converted.real()), convert(pair.real()));
                EXPECT_EQ(bits(converted.imag()), convert(pair.imag()));
            }
            if (i != j) { // an array that the test keeps, and one that may be overwritten
                const Variant real(values), complex(pairs);
                EXPECT_EQ(bits<double>(from.ConvertTo(to, real)), reals) << i << ' ' << j;
                EXPECT_EQ(bits<double>(from.ConvertTo(to, Variant(values))), reals);
                EXPECT_EQ(bits<Complex128>(from.ConvertTo(to, complex)), complexes) << i << ' ' << j;
                EXPECT_EQ(bits<Complex128>(from.ConvertTo(to, Variant(pairs))), complexes);
                EXPECT_EQ(bits<double>(real), bits<double>(Variant(values)));
            }
        }
    }
}

TEST(ZUnit, ConvertsWhatAnEngineerExpects) {
    const ZUnit km = unit("km"), metre = unit("m");
    EXPECT_EQ(unit("W").ConvertTo(unit("dB(mW)"), 0.0), -3000.0);
    EXPECT_EQ(unit("V").ConvertTo(unit("dB(V)"), -1.0), -6000.0);
    EXPECT_DOUBLE_EQ(unit("dB(mW)").ConvertTo(unit("W"), 20.0), 0.1);
    EXPECT_EQ(ZUnit(ZUnitType::ThermodynamicTemperature(), "", 1, 273.15, 0).ConvertTo(unit("K"), 100),
              373.15);
    EXPECT_EQ(km.ConvertTo(metre, std::complex<float>(1.5F, -2.0F)), Complex128(1500, -2000));

    const Variant source({1, 2, 3, 4, 5, 6}, ArrayDimensions{2, 3}, ColumnMajor);
    EXPECT_TRUE(
        km.ConvertTo(metre, source)
            .isIdenticalTo(Variant({1e3, 2e3, 3e3, 4e3, 5e3, 6e3}, ArrayDimensions{2, 3}, ColumnMajor)));
    EXPECT_TRUE(source.isIdenticalTo(Variant({1, 2, 3, 4, 5, 6}, ArrayDimensions{2, 3}, ColumnMajor)));
    EXPECT_TRUE(unit("(m").ConvertTo(metre, Variant(short(7))).isIdenticalTo(Variant(7.0)));
    EXPECT_TRUE(
        km.ConvertTo(metre, Variant(Complex<int>(1, -2))).isIdenticalTo(Variant(Complex128(1000, -2000))));
    EXPECT_TRUE(km.ConvertTo(metre, Variant()).dimensions().isEmpty());
}

TEST(ZUnit, ArraysBetweenEqualSiTextsComeBackUntouched) {
    const ZUnit kmh(ZUnitType::Velocity(), "km/h", 0.2777777777777778, 0, 0), speed = unit("m/s");
    const ZUnit percent(ZUnitType::Dimensionless(), "%", 0.01, 0, 0), one = unit("1");
    const ZUnit alien(ZUnitType::Create("alien", {1, 78, 0, 0, 0, 0, 0, 0, 0}, "m"), "", 2, 0, 0),
        metre = unit("m");
    for (const Variant& value : {Variant(5), Variant("text"), Variant()}) {
        EXPECT_TRUE(kmh.ConvertTo(speed, value).isIdenticalTo(value));
        EXPECT_TRUE(percent.ConvertTo(one, value).isIdenticalTo(value));
        EXPECT_TRUE(alien.ConvertTo(metre, value).isIdenticalTo(value));
    }
    EXPECT_EQ(kmh.ConvertTo(speed, 36.0), 36.0 * 0.2777777777777778);
    EXPECT_TRUE(percent.ConvertTo(ZUnit(), Variant(50)).isIdenticalTo(Variant(0.5)));
}

TEST(ZUnit, ConversionFailuresNameBothUnits) {
    const ZUnit km = unit("km"), second = unit("s");
    EXPECT_THROW_MSG(km.ConvertTo(second, 1.0), std::runtime_error, "Units s is not commensurable to km");
    EXPECT_THROW_MSG(km.ConvertTo(second, Complex128(1)), std::runtime_error,
                     "Units s is not Commensurable to km");
    EXPECT_THROW_MSG(km.ConvertTo(second, Variant("text")), std::runtime_error,
                     "To units are not commensurable - from: km to s");
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (const Variant& bad : {Variant("text"), Variant({1.0F, nan}), Variant(std::int64_t(9007199254740993)),
                               Variant(std::vector<Variant>{Variant(1.0)})}) {
        EXPECT_THROW_MSG(km.ConvertTo(unit("m"), bad), std::runtime_error,
                         "Failed convering units from km to m");
    }
}

TEST(ZUnit, WritesTheKeysOfItsConstructor) {
    EXPECT_EQ(ZUnit::objectType(), "Unit");
    EXPECT_EQ(keys(ZUnit()), "");
    EXPECT_EQ(ZUnit().getObjectType().to_string(), "Unit");
    const std::string numbers = "LogMultiplier:double Offset:double Scale:double SiUnits:zstring ";
    EXPECT_EQ(keys(unit("km")), numbers + "UnitTypeReferenceString:zstring ");
    const ZUnit made(ZUnitType::Velocity(), "km/h", 0.25, 2, 3);
    EXPECT_EQ(keys(made), "DisplayUnit:zstring " + numbers + "UnitTypeReferenceString:zstring ");
    EXPECT_EQ(made.GetSiUnits().to_string(), "m/s");
    EXPECT_EQ(made.GetUnitTypeReferenceString().to_string(), "m/s");
    EXPECT_TRUE(made.GetScale() == 0.25 && made.GetOffset() == 2 && made.GetLogMultiplier() == 3);
    EXPECT_TRUE(made.IsLogarithmic() && !unit("m").IsLogarithmic());

    const ZUnit plain;
    EXPECT_TRUE(plain.GetScale() == 1 && plain.GetOffset() == 0 && plain.GetLogMultiplier() == 0);
    EXPECT_EQ(plain.GetUnitTypeReferenceString().to_string(), "1");
    EXPECT_TRUE(plain.IsDimensionless() && ZUnit::Dimensionless(plain) && !made.IsDimensionless());
    EXPECT_TRUE(unit("dB(W)").IsCommensurable(unit("kW")) && !unit("W").IsCommensurable(unit("J")));

    ZUnit changed;
    changed.ParseAndSetSiUnits("km");
    EXPECT_EQ(keys(changed), numbers);
    EXPECT_TRUE(changed.GetUnitType() == ZUnitType::Length());
    const ZUnit rebuilt{ZGenericObject(changed)};
    EXPECT_TRUE(rebuilt.IsDimensionless() && rebuilt.GetScale() == 1000.0);
    EXPECT_THROW_MSG(changed.ParseAndSetSiUnits("k m"), std::runtime_error, "Invalid units string k m");
    EXPECT_THROW_MSG(changed.ParseAndSetSiUnits("m^99999999999"), std::runtime_error,
                     "Invalid units string m^99999999999");
    EXPECT_TRUE(changed == unit("km") && changed.GetSiUnits() == "km");
}

TEST(ZUnit, LabelsGoFromDisplayTextToSiText) {
    EXPECT_TRUE(ZUnit().GetUnitsLabel().empty() && unit("").GetUnitsLabel().empty());
    EXPECT_TRUE(unit("1").GetUnitsLabel().empty() && unit("m").GetUnitsLabel() == "m");
    ZUnit copy = unit("m");
    const ZUnit source = copy;
    EXPECT_TRUE(copy.SetUnitsLabel("metres").GetUnitsLabel() == "metres" && source.GetUnitsLabel() == "m");
    copy.SetDisplayUnit("");
    EXPECT_TRUE(copy == source && !(copy != source));
    ZUnit taken = std::move(copy);
    EXPECT_TRUE(taken == source && copy == source && copy.GetUnitType() == ZUnitType::Length());
    taken = std::move(copy = unit("s"));
    EXPECT_TRUE(taken == unit("s") && copy == taken);
    std::ostringstream out;
    out << ZUnit(ZUnitType::Velocity(), "km/h", 0.25, 0, 0);
    EXPECT_EQ(out.str(), "SI units=m/s, display label=km/h, scale=0.25\n");
}

TEST(ZUnit, IsRebuiltFromItsTree) {
    class Holder : public ZObject {
    public:
        Holder() : ZObject(ZString("Holder")) {}
        using ZObject::addChild;
        using ZObject::setProperty;
    } holder;
    for (const ZUnit& original :
         {unit("dB(mV)"), unit("V/m"), ZUnit(), ZUnit(ZUnitType::Radioactivity(), "decays", 2, 3, 4)}) {
        holder.addChild("unit", original);
        const ZUnit read(ZGenericObject(holder.propertyHandle().child("unit")));
        EXPECT_TRUE(read == original && read.GetUnitType() == original.GetUnitType());
        EXPECT_EQ(keys(read), keys(original));
    }
    EXPECT_THROW_MSG(ZUnit(ZGenericObject(holder)), std::logic_error, "Unit expected but not found");

    class Saved : public ZObject {
    public:
        explicit Saved(const char* reference) : ZObject(ZString("Unit")) {
            setProperty("UnitTypeReferenceString", std::string(reference));
            setProperty("Scale", 2);
        }
    };
    const ZUnit saved{ZGenericObject(Saved("Hz"))}; // another writer's types of text and number
    EXPECT_TRUE(saved.GetUnitType() == ZUnitType::Frequency() && saved.GetScale() == 2.0);
    EXPECT_THROW_MSG(ZUnit(ZGenericObject(Saved("m^77"))), std::runtime_error,
                     "Could not find a ZUnitType with reference SI string m^77");
}

TEST(ZUnit, OperatorsFindTheBaseUnitOfTheResult) {
    const ZUnit metre = unit("m"), kat = unit("kat"), becquerel = unit("Bq");
    EXPECT_TRUE(unit("km") * unit("km") == unit("m^2"));
    EXPECT_TRUE((metre / unit("ms")).GetUnitType() == ZUnitType::Velocity());
    EXPECT_EQ((metre / metre).GetUnitsLabel(), "1");
    EXPECT_EQ(becquerel * unit("s"), metre / metre);
    EXPECT_NE(metre / metre, unit("1"));
    EXPECT_TRUE((becquerel ^ 1).GetUnitType() == ZUnitType::Radioactivity());
    EXPECT_TRUE((ZUnit(becquerel).SetUnitsLabel("decays") ^ 1).GetUnitType() == ZUnitType::Frequency());
    EXPECT_EQ((kat * unit("T")).GetUnitType().GetName(), "(kat)*T");
    EXPECT_EQ((kat / unit("F")).GetUnitType().GetName(), "kat/(F)");
    EXPECT_EQ((kat ^ -37).GetUnitType().GetName(), "(kat)^-37");
    EXPECT_EQ((kat ^ -37).GetSiUnits(), "s^37/mol^37");

    const ZUnitType twin = ZUnitType::Create("twin", {1, 79, 0, 0, 0, 0, 0, 0, 0}, "");
    const ZUnit reference(twin, "x", 2, 3, 4);
    EXPECT_EQ(reference, ZUnit(ZUnitType::Create("other", twin.GetDimensions(), "o"), "x", 2, 3, 4));
    for (const ZUnit& other :
         {ZUnit(twin, "y", 2, 3, 4), ZUnit(twin, "x", 1, 3, 4), ZUnit(twin, "x", 2, 1, 4),
          ZUnit(twin, "x", 2, 3, 1), ZUnit(ZUnitType::Mass(), "x", 2, 3, 4)}) {
        EXPECT_TRUE(other != reference && !(other == reference));
    }
    EXPECT_NE(unit("m^+2"), unit("m^2"));
}

} // namespace Zelm
