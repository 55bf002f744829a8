#include <support/ExpectThrow.h>

#include <zelm/units/ZSystemOfUnits.h>

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace Zelm {
namespace {

ZSystemOfUnits& catalogue() {
    return ZSystemOfUnits::instance();
}

// clang-format off
using T = ZUnitType;
const struct {
    const char* name;
    const char* label;
    const ZUnitType& (*type)();
    double scale, offset = 0, logMultiplier = 0;
} kMade[] = {
    {"mil", "mil", T::Length, 2.54e-05}, {"in", "in", T::Length, 0.0254}, {"in^2", "in^2", T::Area, 0.00064516},
    {"in^3", "in^3", T::Volume, 1.6387064e-05}, {"min", "min", T::Time, 60.0}, {"h", "h", T::Time, 3600.0},
    {"°", "°", T::PlaneAngle, 0.017453292519943295}, {"degrees", "°", T::PlaneAngle, 0.017453292519943295},
    {"km/h", "km/h", T::Velocity, 0.2777777777777778}, {"miles/h", "miles/h", T::Velocity, 0.44704}, {"kWh", "kWh", T::Energy, 3600000.0},
    {"mho", "1/Ω", T::Conductance, 1.0}, {"Mx", "Mx", T::MagneticFlux, 1e-08}, {"Gs", "Gs", T::MagneticFluxDensity, 0.0001},
    {"°C", "°C", T::ThermodynamicTemperature, 1.0, 273.15}, {"Celsius", "°C", T::ThermodynamicTemperature, 1.0, 273.15},
    {"°F", "°F", T::ThermodynamicTemperature, 0.5555555555555556, 255.37222222222223},
    {"Fahrenheit", "°F", T::ThermodynamicTemperature, 0.5555555555555556, 255.37222222222223}, {"log", "log", T::Dimensionless, 1.0, 0, 1.0},
    {"dB10", "dB10", T::Dimensionless, 1.0, 0, 10.0}, {"dB", "dB10", T::Dimensionless, 1.0, 0, 10.0}, {"dB20", "dB20", T::Dimensionless, 1.0, 0, 20.0},
    {"hundreds", "hundreds", T::Dimensionless, 100.0}, {"thousands", "thousands", T::Dimensionless, 1000.0},
    {"millions", "millions", T::Dimensionless, 1000000.0}, {"%", "%", T::Dimensionless, 0.01}, {"Abs", "Abs", T::Dimensionless, 1.0}};

/// The names of units that are read, with the SI text where it is another one.
const char* const kRead =
    "m nm µm mm cm km m^2 mm^2 cm^2 km^2 m^3 mm^3 cm^3 L mL kg g mg µg s ms µs ns ps rad m/s km/s m/s^2 N J kJ mJ µJ W kW MW mW µW "
    "Hz kHz MHz GHz THz A kA mA µA nA pA C kC mC µC nC pC V kV mV µV nV pV Ω kΩ MΩ GΩ mΩ F mF µF nF pF fF S mS µS nS pS H mH µH nH pH "
    "fH T K dBW=dB(W) dBm=dB(mW) dBµ=dB(µW) dBV=dB(V) dBmV=dB(mV) dBµV=dB(µV)";
// clang-format on

} // namespace

TEST(ZSystemOfUnits, HoldsTheDefaultCatalogueAndNoMore) {
    std::map<std::string, ZUnit> expected{
        {"radians", ZUnit::FromSiString("rad")}}; // bytes order as in the catalogue
    for (const auto& [name, label, type, scale, offset, logMultiplier] : kMade) {
        expected.emplace(name, ZUnit(type(), label, scale, offset, logMultiplier));
    }
    std::istringstream read(kRead);
    for (std::string word; read >> word;) {
        const auto mark = word.find('=');
        const ZString name(word.substr(0, mark));
        ZUnit unit = ZUnit::FromSiString(mark == word.npos ? name : ZString(word.substr(mark + 1)));
        expected.emplace(name.to_string(), mark == word.npos ? unit : unit.SetUnitsLabel(name));
    }
    ASSERT_EQ(expected.size(), 119U);
    std::vector<ZUnit> units;
    for (const auto& [name, unit] : expected) {
        const ZUnit found = catalogue().GetUnitsByName(ZString(name));
        EXPECT_EQ(found, unit) << name;
        EXPECT_TRUE(found.GetUnitType() == unit.GetUnitType() && found.GetSiUnits() == unit.GetSiUnits())
            << name;
        units.push_back(unit);
    }
    EXPECT_EQ(catalogue().GetAllUnits(), units);
}

TEST(ZSystemOfUnits, ListsAQuantity) {
    const auto count = [](const ZUnitType& type) {
        return std::pair(catalogue().GetUnits(type).size(), catalogue().GetUnitNames(type).size());
    };
    EXPECT_EQ(count(T::Dimensionless()), std::pair(8UL, 9UL));
    EXPECT_EQ(count(T::ThermodynamicTemperature()), std::pair(3UL, 5UL));
    EXPECT_EQ(count(T::Radioactivity()), std::pair(0UL, 0UL));
    EXPECT_EQ(catalogue().GetUnitNames(T::PlaneAngle()),
              (std::vector<ZString>{"degrees", "rad", "radians", "°"}));
    const ZUnit own(T::Length(), "cubit", 0.4572, 0, 0);
    for (const ZUnit& unit : {catalogue().GetUnitsByName("m"), own}) {
        const std::vector<ZUnit> lengths = catalogue().GetCompatibleUnits(unit);
        EXPECT_EQ(lengths.size(), unit == own ? 9U : 8U);
        EXPECT_EQ(lengths[0], unit);
    }
}

TEST(ZSystemOfUnits, ReadsWhatPeopleWrite) {
    const std::pair<const char*, const char*> found[] = {
        {"uV", "µV"}, {"kOhm", "kΩ"},         {"dBu", "dBµ"},           {"millions", "millions"},
        {"Gs", "Gs"}, {"Celsius", "Celsius"}, {"hundreds", "hundreds"}, {"thousands", "thousands"}};
    for (const auto& [text, name] : found) {
        EXPECT_EQ(catalogue().GetUnitsFromString(text), catalogue().GetUnitsByName(name)) << text;
    }
    EXPECT_TRUE(catalogue().GetUnitsFromString("kg*m/s^2").GetUnitType() == T::Force());
    const std::pair<const char*, const char*> refused[] = {
        {"mu", "mµ"}, {"uuF", "µuF"}, {"Ohm*Ohm", "Ω*Ohm"}, {"celsius", "celsiµs"}};
    for (const auto& row : refused) {
        EXPECT_THROW_MSG(catalogue().GetUnitsFromString(row.first), std::runtime_error,
                         std::string("Error constructing a unit from SI String ") + row.second);
    }
}

TEST(ZSystemOfUnits, TakesAndGivesUpUnitsOfTheApplication) {
    const ZUnit cubit(T::Length(), "cubit", 0.4572, 0, 0);
    catalogue().InsertUnits(cubit);
    catalogue().InsertUnits("ell", cubit);
    catalogue().InsertUnits(ZUnit());
    EXPECT_EQ(catalogue().GetUnits(T::Length()).size(), 9U);
    EXPECT_THROW(catalogue().GetUnitsFromString("cubit"), std::runtime_error);
    EXPECT_THROW_MSG(catalogue().InsertUnits("ell", ZUnit()), std::logic_error,
                     "Error: InsertUnits: Cannot insert duplicate unit-name 'ell'.");
    EXPECT_THROW_MSG(catalogue().InsertUnits(ZUnit::FromSiString("1")), std::logic_error,
                     "Error: InsertUnits: Cannot insert duplicate unit-name ''.");
    EXPECT_EQ(catalogue().GetUnitsByName("ell"), cubit);
    for (const char* name : {"cubit", "ell", "", "never there"}) {
        catalogue().RemoveUnits(name);
        EXPECT_THROW_MSG(catalogue().GetUnitsByName(name), std::logic_error,
                         std::string("Error: in GetUnitsBayName: unit-name '") + name + "' not found.");
    }
    EXPECT_EQ(catalogue().GetAllUnits().size(), 119U);
}

} // namespace Zelm
