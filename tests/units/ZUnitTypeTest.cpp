#include <support/ExpectThrow.h>

#include <zelm/units/ZUnit.h>
#include <zelm/units/ZUnitType.h>

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cstdint>
#include <functional>
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

template <class Operation>
Exponents each(const Exponents& a, const Exponents& b, Operation operation) {
    Exponents result{};
    for (std::size_t i = 0; i < result.size(); ++i) {
        const std::int64_t wide = operation(std::int64_t(a[i]), std::int64_t(b[i]));
        result[i] = static_cast<int>(static_cast<std::uint32_t>(static_cast<std::uint64_t>(wide)));
    }
    return result;
}

struct Quantity {
    const ZUnitType& (*accessor)();
    const ZUnitType& fixed;
    const char* name;
    const char* reference;
    Exponents exponents;
    int decibel = 0;
};

// clang-format off
#define BOTH(Accessor, name) ZUnitType::Accessor, ZUnitType::s_##name
const Quantity kQuantities[] = {
    {BOTH(Length, length), "length", "m", {1}},
    {BOTH(Mass, mass), "mass", "kg", {0, 1}},
    {BOTH(Time, time), "time", "s", {0, 0, 1}},
    {BOTH(Area, area), "area", "m^2", {2}},
    {BOTH(Volume, volume), "volume", "m^3", {3}},
    {BOTH(PlaneAngle, planeAngle), "plane angle", "rad", {0, 0, 0, 0, 0, 0, 0, 1}},
    {BOTH(SolidAngle, solidAngle), "solid angle", "sr", {0, 0, 0, 0, 0, 0, 0, 0, 1}},
    {BOTH(Velocity, velocity), "velocity", "m/s", {1, 0, -1}},
    {BOTH(Acceleration, acceleration), "acceleration", "m/s^2", {1, 0, -2}},
    {BOTH(Force, force), "force", "N", {1, 1, -2}},
    {BOTH(Pressure, pressure), "pressure", "Pa", {-1, 1, -2}},
    {BOTH(Energy, energy), "energy", "J", {2, 1, -2}},
    {BOTH(Power, power), "power", "W", {2, 1, -3}},
    {BOTH(Frequency, frequency), "frequency", "Hz", {0, 0, -1}},
    {BOTH(ElectricCurrent, electricCurrent), "electric current", "A", {0, 0, 0, 1}, 1},
    {BOTH(ElectricCharge, electricCharge), "electric charge", "C", {0, 0, 1, 1}},
    {BOTH(ElectricPotential, electricPotential), "electric potential", "V", {2, 1, -3, -1}, 1},
    {BOTH(ElectricResistance, electricResistance), "electric resistance", "\xCE\xA9", {2, 1, -3, -2}},
    {BOTH(ElectricCapacitance, electricCapacitance), "electric capacitance", "F", {-2, -1, 4, 2}},
    {BOTH(MagneticFlux, magneticFlux), "magnetic flux", "Wb", {2, 1, -2, -1}},
    {BOTH(MagneticFluxDensity, magneticFluxDensity), "magnetic flux density", "T", {0, 1, -2, -1}},
    {BOTH(Inductance, inductance), "inductance", "H", {2, 1, -2, -2}},
    {BOTH(Conductance, conductance), "conductance", "S", {-2, -1, 3, 2}},
    {BOTH(ThermodynamicTemperature, thermodynamicTemperature), "thermodynamic temperature", "K", {0, 0, 0, 0, 1}},
    {BOTH(AmountOfSubstance, amountOfSubstance), "amount of substance", "mol", {0, 0, 0, 0, 0, 1}},
    {BOTH(LuminousIntensity, luminousIntensity), "luminous intensity", "cd", {0, 0, 0, 0, 0, 0, 1}},
    {BOTH(LuminousFlux, luminousFlux), "luminous flux", "lm", {0, 0, 0, 0, 0, 0, 1, 0, 1}},
    {BOTH(Illuminance, illuminance), "illuminance", "lx", {-2, 0, 0, 0, 0, 0, 1, 0, 1}},
    {BOTH(Radioactivity, radioactivity), "radioactivity", "Bq", {0, 0, -1}},
    {BOTH(AbsorbedDose, absorbedDose), "absorbed dose of radiation", "Gy", {2, 0, -2}},
    {BOTH(EquivalentDose, equivalentDose), "equivalent dose of radiation", "Sv", {2, 0, -2}},
    {BOTH(CatalyticActivity, catalyticActivity), "catalytic activity", "kat", {0, 0, -1, 0, 0, 1}},
    {BOTH(Dimensionless, dimensionless), "scalar", "1", {}}};
#undef BOTH
// clang-format on

} // namespace

TEST(ZUnitDimensions, ArithmeticIsThatOfWrappingExponents) {
    std::mt19937 random(7);
    std::uniform_int_distribution<int> any(INT_MIN, INT_MAX), small(-9, 9);
    for (int round = 0; round < 1000; ++round) {
        auto& exponent = round % 2 ? any : small;
        Exponents a{}, b{};
        for (std::size_t i = 0; i < a.size(); ++i) {
            a[i] = exponent(random);
            b[i] = exponent(random);
        }
        const ZUnitDimensions x = signature(a), y = signature(b);
        const int n = exponent(random);
        Exponents power{};
        power.fill(n);
        EXPECT_EQ(exponents(x * y), each(a, b, std::plus<>()));
        EXPECT_EQ(exponents(x / y), each(a, b, std::minus<>()));
        EXPECT_EQ(exponents(x ^ n), each(a, power, std::multiplies<>()));
        EXPECT_TRUE(x * y / y == x && (x ^ 0) == ZUnitDimensions() && (x ^ 1) == x);
        ++a[static_cast<unsigned>(n) % 9U];
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
        {{INT_MIN, INT_MAX}, "kg^2147483647/m^2147483648"},
    };
    for (const auto& [signs, text] : rows) {
        EXPECT_EQ(signature(signs).SIUnitsString().to_string(), text);
    }
}

TEST(ZUnitType, BuiltInQuantitiesStandInTheirOrder) {
    for (const Quantity& q : kQuantities) {
        const ZUnitType& type = q.accessor();
        EXPECT_EQ(&type, &q.fixed) << q.name;
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
    EXPECT_EQ(ZUnitType().GetName().to_string() + '|' + ZUnitType().GetReferenceSIString().to_string(),
              "none|");
    EXPECT_TRUE(ZUnitType() != ZUnitType::Dimensionless() && ZUnitType() == ZUnitType());
}

TEST(ZUnitType, FindUnitTypeGoesByTheReferenceTextsInTheText) {
    const auto found = [](const ZUnitType& like, const char* text) {
        return ZUnitType::FindUnitType(like.GetDimensions(), ZString(text)).GetName().to_string();
    };
    EXPECT_EQ(found(ZUnitType::Velocity(), "km/h"), "velocity");
    EXPECT_EQ(found(ZUnitType::Frequency(), "1/s"), "frequency");
    EXPECT_EQ(found(ZUnitType::Frequency(), "kHz"), "frequency");
    EXPECT_EQ(found(ZUnitType::Frequency(), "(Bq)^1"), "radioactivity");
    EXPECT_EQ(found(ZUnitType::Radioactivity(), "decays"), "frequency");
    EXPECT_EQ(found(ZUnitType::EquivalentDose(), "mGy"), "absorbed dose of radiation");
    EXPECT_EQ(found(ZUnitType::AbsorbedDose(), "Sv*m/m"), "equivalent dose of radiation");
    EXPECT_EQ(found(ZUnitType::AbsorbedDose(), "J/kg"), "absorbed dose of radiation");
}

TEST(ZUnitType, TheRegistryGrowsByNewSignaturesAndByCreate) {
    const ZUnitDimensions odd(1001, 0, 0, 0, 0, 0, 0, 0, 0);
    EXPECT_TRUE(ZUnitType::FindCompatibleTypes(odd).empty());
    EXPECT_EQ(ZUnitType::FindUnitType(odd, "m^1001").GetName().to_string(), "m^1001");
    EXPECT_EQ(ZUnitType::FindUnitType(odd, "other").GetName().to_string(), "m^1001");
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
