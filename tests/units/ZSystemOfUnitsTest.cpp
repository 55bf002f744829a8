#include <support/ExpectThrow.h>

#include <zelm/units/ZSystemOfUnits.h>

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace Zelm {
namespace {

ZSystemOfUnits& s_catalogue = ZSystemOfUnits::instance();

using T = ZUnitType;

// clang-format off
/// Name, label, reference text of the quantity, scale, offset and logarithmic multiplier.
const char* const kMade =
    "mil mil m 2.54e-05 0 0 in in m 0.0254 0 0 in^2 in^2 m^2 0.00064516 0 0 in^3 in^3 m^3 1.6387064e-05 0 0 min min s 60 0 0 "
    "h h s 3600 0 0 ° ° rad 0.017453292519943295 0 0 degrees ° rad 0.017453292519943295 0 0 km/h km/h m/s 0.2777777777777778 0 0 "
    "miles/h miles/h m/s 0.44704 0 0 kWh kWh J 3600000 0 0 mho 1/Ω S 1 0 0 Mx Mx Wb 1e-08 0 0 Gs Gs T 0.0001 0 0 °C °C K 1 273.15 0 "
    "Celsius °C K 1 273.15 0 °F °F K 0.5555555555555556 255.37222222222223 0 Fahrenheit °F K 0.5555555555555556 255.37222222222223 0 "
    "log log 1 1 0 1 dB10 dB10 1 1 0 10 dB dB10 1 1 0 10 dB20 dB20 1 1 0 20 hundreds hundreds 1 100 0 0 thousands thousands 1 1000 0 0 "
    "millions millions 1 1000000 0 0 % % 1 0.01 0 0 Abs Abs 1 1 0 0";

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
    std::istringstream made(kMade);
    double scale = 1, offset = 0, multiplier = 0;
    for (std::string name, label, type; made >> name >> label >> type >> scale >> offset >> multiplier;) {
        expected.emplace(name, ZUnit(T::FindByReferenceSiString(type), label, scale, offset, multiplier));
    }
    std::istringstream read(kRead);
    for (std::string word; read >> word;) {
        const auto mark = word.find('=');
        const ZString name(word.substr(0, mark));
        ZUnit unit = ZUnit::FromSiString(mark == word.npos ? name : ZString(word.substr(mark + 1)));
        expected.emplace(name.to_string(), mark == word.npos ? unit : unit.SetUnitsLabel(name));
    }
    std::vector<ZUnit> units;
    for (const auto& [name, unit] : expected) {
        const ZUnit found = s_catalogue.GetUnitsByName(ZString(name));
        EXPECT_TRUE(found == unit && found.GetUnitType() == unit.GetUnitType()) << name;
        EXPECT_EQ(found.GetSiUnits(), unit.GetSiUnits()) << name;
        units.push_back(unit);
    }
    EXPECT_EQ(s_catalogue.GetAllUnits(), units);
}

TEST(ZSystemOfUnits, ListsAQuantity) {
    const std::vector<ZString> angles{"degrees", "rad", "radians", "°"};
    EXPECT_EQ(s_catalogue.GetUnitNames(T::PlaneAngle()), angles);
    EXPECT_EQ(s_catalogue.GetUnits(T::Dimensionless()).size(), 8U); // "dB" and "dB10" are equal
    const std::pair<const char*, double> forces[] = {
        {"a", 2.0}, {"b", 2.0}, {"c", 3.0}, {"d", std::nan("")}, {"e", std::nan("")}};
    for (const auto& [name, scale] : forces) {
        s_catalogue.InsertUnits(name, ZUnit(T::Force(), "x", scale, 0, 0));
    }
    EXPECT_EQ(s_catalogue.GetUnits(T::Force()).size(), 5U); // "a" is "b", and a NaN equals none
    for (const auto& row : forces) {
        s_catalogue.RemoveUnits(row.first);
    }
    const ZUnit own(T::Length(), "cubit", 0.4572, 0, 0);
    EXPECT_EQ(s_catalogue.GetCompatibleUnits(own).size(), 9U);
    EXPECT_EQ(s_catalogue.GetCompatibleUnits(own)[0], own);
}

TEST(ZSystemOfUnits, ReadsWhatPeopleWrite) {
    const std::pair<const char*, const char*> found[] = {
        {"uV", "µV"}, {"kOhm", "kΩ"}, {"dBu", "dBµ"}, {"millions", "millions"}, {"thousands", "thousands"}};
    for (const auto& [text, name] : found) {
        EXPECT_EQ(s_catalogue.GetUnitsFromString(text), s_catalogue.GetUnitsByName(name)) << text;
    }
    EXPECT_TRUE(s_catalogue.GetUnitsFromString("kg*m/s^2").GetUnitType() == T::Force());
    EXPECT_THROW_MSG(s_catalogue.GetUnitsFromString("Ohm*uuOhm"), std::runtime_error,
                     "Error constructing a unit from SI String Ω*µuOhm");
}

TEST(ZSystemOfUnits, TakesAndGivesUpUnitsOfTheApplication) {
    const ZUnit cubit(T::Length(), "cubit", 0.4572, 0, 0);
    const std::vector<ZUnit> before = s_catalogue.GetAllUnits();
    s_catalogue.InsertUnits(cubit);
    s_catalogue.InsertUnits("ell", cubit);
    EXPECT_THROW_MSG(s_catalogue.InsertUnits("ell", ZUnit()), std::logic_error,
                     "Error: InsertUnits: Cannot insert duplicate unit-name 'ell'.");
    for (const char* name : {"cubit", "ell"}) {
        EXPECT_EQ(s_catalogue.GetUnitsByName(name), cubit);
        s_catalogue.RemoveUnits(name);
        s_catalogue.RemoveUnits(name);
        EXPECT_THROW_MSG(s_catalogue.GetUnitsByName(name), std::logic_error,
                         std::string("Error: in GetUnitsBayName: unit-name '") + name + "' not found.");
    }
    EXPECT_EQ(s_catalogue.GetAllUnits(), before);
}

} // namespace Zelm
