#include <support/ExpectThrow.h>

#include <zelm/units/ZSystemOfUnits.h>

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace Zelm {

namespace {

const ZSystemOfUnits& catalogue() {
    return ZSystemOfUnits::instance();
}

std::vector<std::string> words(const std::string& text) {
    std::istringstream in(text);
    return {std::istream_iterator<std::string>(in), {}};
}

struct Row {
    const char* name;
    const char* label;
    const ZUnitType& (*type)();
    double scale;
    double offset = 0;
    double logMultiplier = 0;
};

// clang-format off
using T = ZUnitType;
const Row kRows[] = {
    {"mil", "mil", T::Length, 2.54e-05}, {"in", "in", T::Length, 0.0254}, {"in^2", "in^2", T::Area, 0.00064516},
    {"in^3", "in^3", T::Volume, 1.6387064e-05}, {"min", "min", T::Time, 60.0}, {"h", "h", T::Time, 3600.0},
    {"\xC2\xB0", "\xC2\xB0", T::PlaneAngle, 0.017453292519943295}, {"radians", "rad", T::PlaneAngle, 1.0},
    {"degrees", "\xC2\xB0", T::PlaneAngle, 0.017453292519943295}, {"km/h", "km/h", T::Velocity, 0.2777777777777778},
    {"miles/h", "miles/h", T::Velocity, 0.44704}, {"kWh", "kWh", T::Energy, 3600000.0}, {"mho", "1/\xCE\xA9", T::Conductance, 1.0},
    {"Mx", "Mx", T::MagneticFlux, 1e-08}, {"Gs", "Gs", T::MagneticFluxDensity, 0.0001},
    {"\xC2\xB0" "C", "\xC2\xB0" "C", T::ThermodynamicTemperature, 1.0, 273.15},
    {"Celsius", "\xC2\xB0" "C", T::ThermodynamicTemperature, 1.0, 273.15},
    {"\xC2\xB0" "F", "\xC2\xB0" "F", T::ThermodynamicTemperature, 0.5555555555555556, 255.37222222222223},
    {"Fahrenheit", "\xC2\xB0" "F", T::ThermodynamicTemperature, 0.5555555555555556, 255.37222222222223},
    {"log", "log", T::Dimensionless, 1.0, 0, 1.0}, {"dB10", "dB10", T::Dimensionless, 1.0, 0, 10.0},
    {"dB", "dB10", T::Dimensionless, 1.0, 0, 10.0}, {"dB20", "dB20", T::Dimensionless, 1.0, 0, 20.0},
    {"hundreds", "hundreds", T::Dimensionless, 100.0}, {"thousands", "thousands", T::Dimensionless, 1000.0},
    {"millions", "millions", T::Dimensionless, 1000000.0}, {"%", "%", T::Dimensionless, 0.01}, {"Abs", "Abs", T::Dimensionless, 1.0},
    {"dBW", "dBW", T::Power, 1.0, 0, 10.0}, {"dBm", "dBm", T::Power, 0.001, 0, 10.0},
    {"dB\xC2\xB5", "dB\xC2\xB5", T::Power, 1e-06, 0, 10.0}, {"dBV", "dBV", T::ElectricPotential, 1.0, 0, 20.0},
    {"dBmV", "dBmV", T::ElectricPotential, 0.001, 0, 20.0}, {"dB\xC2\xB5V", "dB\xC2\xB5V", T::ElectricPotential, 1e-06, 0, 20.0}};

const char* const kRead =
    "m nm \xC2\xB5m mm cm km m^2 mm^2 cm^2 km^2 m^3 mm^3 cm^3 L mL kg g mg \xC2\xB5g s ms \xC2\xB5s ns ps rad m/s km/s "
    "m/s^2 N J kJ mJ \xC2\xB5J W kW MW mW \xC2\xB5W Hz kHz MHz GHz THz A kA mA \xC2\xB5" "A nA pA C kC mC \xC2\xB5" "C nC "
    "pC V kV mV \xC2\xB5V nV pV \xCE\xA9 k\xCE\xA9 M\xCE\xA9 G\xCE\xA9 m\xCE\xA9 F mF \xC2\xB5" "F nF pF fF S mS \xC2\xB5S nS "
    "pS H mH \xC2\xB5H nH pH fH T K";
// clang-format on

} // namespace

TEST(ZSystemOfUnits, HoldsTheDefaultCatalogueAndNoMore) {
    std::map<std::string, std::string> labels;
    for (const Row& row : kRows) {
        const ZUnit unit = catalogue().GetUnitsByName(ZString(row.name));
        EXPECT_TRUE(unit.GetUnitType() == row.type()) << row.name;
        EXPECT_EQ(unit.GetScale(), row.scale) << row.name;
        EXPECT_EQ(unit.GetOffset(), row.offset) << row.name;
        EXPECT_EQ(unit.GetLogMultiplier(), row.logMultiplier) << row.name;
        labels[row.name] = row.label;
    }
    for (const std::string& text : words(kRead)) {
        const ZUnit unit = catalogue().GetUnitsByName(ZString(text));
        EXPECT_EQ(unit, ZUnit::FromSiString(ZString(text)));
        EXPECT_EQ(unit.GetSiUnits().to_string(), text);
        labels[text] = text;
    }
    EXPECT_EQ(labels.size(), 119U);
    std::vector<std::string> expected, found;
    for (const auto& [name, label] : labels) { // std::map of bytes has the order of the catalogue
        expected.push_back(label);
    }
    for (const ZUnit& unit : catalogue().GetAllUnits()) {
        found.push_back(unit.GetUnitsLabel().to_string());
    }
    EXPECT_EQ(found, expected);
    EXPECT_EQ(catalogue().GetUnitsByName("in^2").GetSiUnits().to_string(), "m^2");
    EXPECT_EQ(catalogue().GetUnitsByName("dBm").GetSiUnits().to_string(), "dB(mW)");
}

TEST(ZSystemOfUnits, ListsAQuantity) {
    const auto count = [](const ZUnitType& type) {
        return std::pair(catalogue().GetUnits(type).size(), catalogue().GetUnitNames(type).size());
    };
    EXPECT_EQ(count(ZUnitType::Dimensionless()), std::pair(8UL, 9UL));
    EXPECT_EQ(count(ZUnitType::ThermodynamicTemperature()), std::pair(3UL, 5UL));
    EXPECT_EQ(count(ZUnitType::PlaneAngle()), std::pair(2UL, 4UL));
    EXPECT_EQ(count(ZUnitType::Length()), std::pair(8UL, 8UL));
    EXPECT_EQ(count(ZUnitType::Radioactivity()), std::pair(0UL, 0UL));
    std::vector<std::string> names;
    for (const ZString& name : catalogue().GetUnitNames(ZUnitType::PlaneAngle())) {
        names.push_back(name.to_string());
    }
    EXPECT_EQ(names, (std::vector<std::string>{"degrees", "rad", "radians", "\xC2\xB0"}));

    const ZUnit metre = catalogue().GetUnitsByName("m");
    std::vector<ZUnit> lengths = catalogue().GetCompatibleUnits(metre);
    ASSERT_EQ(lengths.size(), 8U);
    EXPECT_EQ(lengths[0], metre);
    const ZUnit own(ZUnitType::Length(), "cubit", 0.4572, 0, 0);
    lengths = catalogue().GetCompatibleUnits(own);
    EXPECT_EQ(lengths.size(), 9U);
    EXPECT_EQ(lengths[0], own);
}

TEST(ZSystemOfUnits, ReadsWhatPeopleWrite) {
    // what is written, and the name that it stands for
    const std::pair<const char*, const char*> found[] = {
        {"uV", "\xC2\xB5V"}, {"kOhm", "k\xCE\xA9"},  {"dBu", "dB\xC2\xB5"},    {"millions", "millions"},
        {"Gs", "Gs"},        {"Celsius", "Celsius"}, {"hundreds", "hundreds"}, {"thousands", "thousands"}};
    for (const auto& [text, name] : found) {
        EXPECT_EQ(catalogue().GetUnitsFromString(text), catalogue().GetUnitsByName(name)) << text;
    }
    EXPECT_TRUE(catalogue().GetUnitsFromString("kg*m/s^2").GetUnitType() == ZUnitType::Force());
    for (const std::string text :
         {"mu m\xC2\xB5", "uuF \xC2\xB5uF", "Ohm*Ohm \xCE\xA9*Ohm", "celsius celsi\xC2\xB5s"}) {
        EXPECT_THROW_MSG(catalogue().GetUnitsFromString(words(text)[0]), std::runtime_error,
                         "Error constructing a unit from SI String " + words(text)[1]);
    }
}

TEST(ZSystemOfUnits, TakesAndGivesUpUnitsOfTheApplication) {
    ZSystemOfUnits& units = ZSystemOfUnits::instance();
    const ZUnit cubit(ZUnitType::Length(), "cubit", 0.4572, 0, 0);
    units.InsertUnits(cubit);
    units.InsertUnits("ell", cubit);
    EXPECT_EQ(units.GetUnitsByName("ell"), cubit);
    EXPECT_EQ(units.GetUnits(ZUnitType::Length()).size(), 9U);
    EXPECT_THROW(units.GetUnitsFromString("cubit"), std::runtime_error);
    EXPECT_THROW_MSG(units.InsertUnits("ell", ZUnit()), std::logic_error,
                     "Error: InsertUnits: Cannot insert duplicate unit-name 'ell'.");
    EXPECT_EQ(units.GetUnitsByName("ell"), cubit);
    EXPECT_THROW_MSG(units.InsertUnits(ZUnit::FromSiString("m")), std::logic_error,
                     "Error: InsertUnits: Cannot insert duplicate unit-name 'm'.");
    units.InsertUnits(ZUnit());
    EXPECT_THROW_MSG(units.InsertUnits(ZUnit::FromSiString("1")), std::logic_error,
                     "Error: InsertUnits: Cannot insert duplicate unit-name ''.");
    for (const char* name : {"cubit", "ell", "", "never there"}) {
        units.RemoveUnits(ZString(name));
        EXPECT_THROW_MSG(units.GetUnitsByName(ZString(name)), std::logic_error,
                         std::string("Error: in GetUnitsBayName: unit-name '") + name + "' not found.");
    }
    EXPECT_EQ(units.GetAllUnits().size(), 119U);
}

} // namespace Zelm
