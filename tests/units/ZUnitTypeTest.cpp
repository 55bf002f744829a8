#include <support/ExpectThrow.h>

#include <zelm/units/ZUnit.h>
#include <zelm/units/ZUnitType.h>

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cstdint>
#include <random>
#include <set>
#include <string>

namespace Zelm {

namespace {

using Exponents = std::array<int, 9>;

ZUnitDimensions signature(const Exponents& e) {
    return {e[0], e[1], e[2], e[3], e[4], e[5], e[6], e[7], e[8]};
}

Exponents exponents(const ZUnitDimensions& d) {
    Exponents result{d.Length(), d.Mass(), d.Time()};
    result[3] = d.ElectricalCurrent();
    result[4] = d.ThermodynamicTemperature();
    result[5] = d.QuantityOfSubstance();
    result[6] = d.LuminousIntensity();
    result[7] = d.Angle();
    result[8] = d.SolidAngle();
    return result;
}

int wrapped(std::int64_t exponent) {
    return static_cast<int>(static_cast<std::uint32_t>(static_cast<std::uint64_t>(exponent)));
}

struct Quantity {
    const ZUnitType& (*accessor)();
    const char* name;
    const char* reference;
    Exponents exponents;
    int decibel = 0;
};

// clang-format off
using T = ZUnitType;
const Quantity kQuantities[] = {
    {T::Length, "length", "m", {1}}, {T::Mass, "mass", "kg", {0, 1}}, {T::Time, "time", "s", {0, 0, 1}},
    {T::Area, "area", "m^2", {2}}, {T::Volume, "volume", "m^3", {3}},
    {T::PlaneAngle, "plane angle", "rad", {0, 0, 0, 0, 0, 0, 0, 1}},
    {T::SolidAngle, "solid angle", "sr", {0, 0, 0, 0, 0, 0, 0, 0, 1}}, {T::Velocity, "velocity", "m/s", {1, 0, -1}},
    {T::Acceleration, "acceleration", "m/s^2", {1, 0, -2}}, {T::Force, "force", "N", {1, 1, -2}},
    {T::Pressure, "pressure", "Pa", {-1, 1, -2}}, {T::Energy, "energy", "J", {2, 1, -2}}, {T::Power, "power", "W", {2, 1, -3}},
    {T::Frequency, "frequency", "Hz", {0, 0, -1}}, {T::ElectricCurrent, "electric current", "A", {0, 0, 0, 1}, 1},
    {T::ElectricCharge, "electric charge", "C", {0, 0, 1, 1}},
    {T::ElectricPotential, "electric potential", "V", {2, 1, -3, -1}, 1},
    {T::ElectricResistance, "electric resistance", "\xCE\xA9", {2, 1, -3, -2}},
    {T::ElectricCapacitance, "electric capacitance", "F", {-2, -1, 4, 2}},
    {T::MagneticFlux, "magnetic flux", "Wb", {2, 1, -2, -1}},
    {T::MagneticFluxDensity, "magnetic flux density", "T", {0, 1, -2, -1}}, {T::Inductance, "inductance", "H", {2, 1, -2, -2}},
    {T::Conductance, "conductance", "S", {-2, -1, 3, 2}},
    {T::ThermodynamicTemperature, "thermodynamic temperature", "K", {0, 0, 0, 0, 1}},
    {T::AmountOfSubstance, "amount of substance", "mol", {0, 0, 0, 0, 0, 1}},
    {T::LuminousIntensity, "luminous intensity", "cd", {0, 0, 0, 0, 0, 0, 1}},
    {T::LuminousFlux, "luminous flux", "lm", {0, 0, 0, 0, 0, 0, 1, 0, 1}},
    {T::Illuminance, "illuminance", "lx", {-2, 0, 0, 0, 0, 0, 1, 0, 1}}, {T::Radioactivity, "radioactivity", "Bq", {0, 0, -1}},
    {T::AbsorbedDose, "absorbed dose of radiation", "Gy", {2, 0, -2}},
    {T::EquivalentDose, "equivalent dose of radiation", "Sv", {2, 0, -2}},
    {T::CatalyticActivity, "catalytic activity", "kat", {0, 0, -1, 0, 0, 1}}, {T::Dimensionless, "scalar", "1", {}}};
// clang-format on

} // namespace

TEST(ZUnitDimensions, ArithmeticIsThatOfWrappingExponents) {
    std::mt19937 random(7);
    std::uniform_int_distribution<int> any(INT_MIN, INT_MAX), small(-9, 9);
    for (int round = 0; round < 1000; ++round) {
        auto& exponent = round % 2 ? any : small;
        const std::int64_t n = exponent(random);
        Exponents a{}, b{}, sum{}, difference{}, power{};
        for (std::size_t i = 0; i < a.size(); ++i) {
            const std::int64_t p = a[i] = exponent(random), q = b[i] = exponent(random);
            sum[i] = wrapped(p + q);
            difference[i] = wrapped(p - q);
            power[i] = wrapped(p * n);
        }
        const ZUnitDimensions x = signature(a), y = signature(b);
        EXPECT_EQ(exponents(x * y), sum);
        EXPECT_EQ(exponents(x / y), difference);
        EXPECT_EQ(exponents(x ^ static_cast<int>(n)), power);
        EXPECT_TRUE(x * y / y == x && (x ^ 0) == ZUnitDimensions() && (x ^ 1) == x);
        ++a[static_cast<std::size_t>(round) % a.size()];
        EXPECT_TRUE(signature(a) != x && !(signature(a) == x));
    }
}

TEST(ZUnitDimensions, SIUnitsStringIsCanonical) {
    const std::pair<Exponents, const char*> rows[] = {
        {{}, "1"},
        {{1, 0, -2}, "m/s^2"},
        {{2, 1, -3}, "m^2*kg/s^3"},
        {{2, 1, -3, -2}, "m^2*kg/(s^3*A^2)"},
        {{0, 0, -1}, "1/s"},
        {{-2, 0, 0, 0, 0, 0, 1, 0, 1}, "cd*sr/m^2"},
        {{1, 2, 1, 1, 1, 1, 1, 1, 10}, "m*kg^2*s*A*K*mol*cd*rad*sr^10"},
        {{0, 0, 0, 0, -1, -2, 0, -1}, "1/(K*mol^2*rad)"},
        {{INT_MIN, INT_MAX}, "kg^2147483647/m^2147483648"}};
    for (const auto& [signs, text] : rows) {
        EXPECT_EQ(signature(signs).SIUnitsString().to_string(), text);
    }
}

TEST(ZUnitType, BuiltInQuantitiesStandInTheirOrder) {
    for (const Quantity& q : kQuantities) {
        const ZUnitType& type = q.accessor();
        EXPECT_EQ(type.GetName().to_string(), q.name);
        EXPECT_EQ(type.GetReferenceSIString().to_string(), q.reference);
        EXPECT_EQ(exponents(type.GetDimensions()), q.exponents) << q.name;
        EXPECT_EQ(ZUnitType::GetDBType(type), q.decibel) << q.name;
        EXPECT_TRUE(ZUnitType::FindByReferenceSiString(ZString(std::string(q.reference))) == type) << q.name;
        std::string expected, found;
        for (const Quantity& other : kQuantities) {
            expected += other.exponents == q.exponents ? other.name : "";
        }
        for (const ZUnitType& compatible : ZUnitType::FindCompatibleTypes(type.GetDimensions())) {
            found += compatible.GetName();
        }
        EXPECT_EQ(found.substr(0, expected.size()), expected);
        if (std::set<std::string>{"mol", "sr", "Wb", "Sv"}.count(q.reference)) {
            EXPECT_THROW_MSG(type.GetBaseMKSUnits(), std::runtime_error,
                             std::string("Error constructing a unit from SI String ") + q.reference);
        } else {
            EXPECT_EQ(type.GetBaseMKSUnits().GetScale(), 1.0) << q.name;
            EXPECT_TRUE(type.GetBaseMKSUnits().GetUnitType() == type) << q.name;
        }
    }
#define EXPECT_ACCESSOR(Accessor, s_static, ...) EXPECT_EQ(&T::Accessor(), &T::s_static);
    ZELM_FOR_EACH_QUANTITY(EXPECT_ACCESSOR)
    EXPECT_EQ(ZUnitType().GetName().to_string() + '|' + ZUnitType().GetReferenceSIString().to_string(),
              "none|");
    EXPECT_TRUE(ZUnitType() != ZUnitType::Dimensionless() && ZUnitType() == ZUnitType());
}

TEST(ZUnitType, FindUnitTypeGoesByTheReferenceTextsInTheText) {
    const struct {
        const ZUnitType& like;
        const char* text;
        const ZUnitType& found;
    } rows[] = {{T::Velocity(), "km/h", T::Velocity()},
                {T::Frequency(), "1/s", T::Frequency()},
                {T::Radioactivity(), "kHz", T::Frequency()},
                {T::Frequency(), "(Bq)^1", T::Radioactivity()},
                {T::Radioactivity(), "decays", T::Frequency()},
                {T::EquivalentDose(), "mGy", T::AbsorbedDose()},
                {T::AbsorbedDose(), "Sv*m/m", T::EquivalentDose()},
                {T::EquivalentDose(), "J/kg", T::AbsorbedDose()}};
    for (const auto& row : rows) {
        EXPECT_TRUE(T::FindUnitType(row.like.GetDimensions(), ZString(row.text)) == row.found) << row.text;
    }
}

TEST(ZUnitType, TheRegistryGrowsByNewSignaturesAndByCreate) {
    const ZUnitDimensions odd(1001, 0, 0, 0, 0, 0, 0, 0, 0);
    EXPECT_TRUE(ZUnitType::FindCompatibleTypes(odd).empty());
    EXPECT_EQ(ZUnitType::FindUnitType(odd, "first").GetName().to_string(), "first");
    EXPECT_EQ(ZUnitType::FindUnitType(odd, "other").GetName().to_string(), "first");
    EXPECT_EQ(ZUnitType::FindUnitType(odd, "other").GetReferenceSIString().to_string(), "m^1001");
    EXPECT_EQ(ZUnitType::FindCompatibleTypes(odd).size(), 1U);

    const ZUnitDimensions volt = ZUnitType::ElectricPotential().GetDimensions();
    const ZUnitType first = ZUnitType::Create("mine", volt, "Vx");
    const ZUnitType second = ZUnitType::Create("mine too", volt, "Vx");
    EXPECT_EQ(ZUnitType::GetDBType(first), ZUnitType::AmplitudeRatio);
    EXPECT_TRUE(ZUnitType::FindByReferenceSiString("Vx") == first && first != second);
    EXPECT_EQ(ZUnitType::FindCompatibleTypes(volt).size(), 3U);
    EXPECT_EQ(ZUnitType::Create("c", volt, "").GetReferenceSIString().to_string(), "m^2*kg/(s^3*A)");
    EXPECT_TRUE(ZUnitType::Create("mine", volt, "Vy") == first);
    EXPECT_THROW_MSG(ZUnitType::FindByReferenceSiString("v"), std::runtime_error,
                     "Could not find a ZUnitType with reference SI string v");
}

} // namespace Zelm
