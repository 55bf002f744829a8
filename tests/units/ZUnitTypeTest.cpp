#include <support/ExpectThrow.h>

#include <zelm/units/ZUnit.h>
#include <zelm/units/ZUnitType.h>

#include <gtest/gtest.h>

#include <climits>
#include <string>

namespace Zelm {
namespace {

// clang-format off
using T = ZUnitType;
/// The accessor, the name, the reference text and the text of the signature.
const std::tuple<const ZUnitType& (*)(), const char*, const char*, const char*> kQuantities[] = {
    {T::Length, "length", "m", "m"}, {T::Mass, "mass", "kg", "kg"}, {T::Time, "time", "s", "s"}, {T::Area, "area", "m^2", "m^2"},
    {T::Volume, "volume", "m^3", "m^3"}, {T::PlaneAngle, "plane angle", "rad", "rad"}, {T::SolidAngle, "solid angle", "sr", "sr"},
    {T::Velocity, "velocity", "m/s", "m/s"}, {T::Acceleration, "acceleration", "m/s^2", "m/s^2"}, {T::Force, "force", "N", "m*kg/s^2"},
    {T::Pressure, "pressure", "Pa", "kg/(m*s^2)"}, {T::Energy, "energy", "J", "m^2*kg/s^2"}, {T::Power, "power", "W", "m^2*kg/s^3"},
    {T::Frequency, "frequency", "Hz", "1/s"}, {T::ElectricCurrent, "electric current", "A", "A"},
    {T::ElectricCharge, "electric charge", "C", "s*A"}, {T::ElectricPotential, "electric potential", "V", "m^2*kg/(s^3*A)"},
    {T::ElectricResistance, "electric resistance", "\xCE\xA9", "m^2*kg/(s^3*A^2)"},
    {T::ElectricCapacitance, "electric capacitance", "F", "s^4*A^2/(m^2*kg)"}, {T::MagneticFlux, "magnetic flux", "Wb", "m^2*kg/(s^2*A)"},
    {T::MagneticFluxDensity, "magnetic flux density", "T", "kg/(s^2*A)"}, {T::Inductance, "inductance", "H", "m^2*kg/(s^2*A^2)"},
    {T::Conductance, "conductance", "S", "s^3*A^2/(m^2*kg)"}, {T::ThermodynamicTemperature, "thermodynamic temperature", "K", "K"},
    {T::AmountOfSubstance, "amount of substance", "mol", "mol"}, {T::LuminousIntensity, "luminous intensity", "cd", "cd"},
    {T::LuminousFlux, "luminous flux", "lm", "cd*sr"}, {T::Illuminance, "illuminance", "lx", "cd*sr/m^2"},
    {T::Radioactivity, "radioactivity", "Bq", "1/s"}, {T::AbsorbedDose, "absorbed dose of radiation", "Gy", "m^2/s^2"},
    {T::EquivalentDose, "equivalent dose of radiation", "Sv", "m^2/s^2"}, {T::CatalyticActivity, "catalytic activity", "kat", "mol/s"},
    {T::Dimensionless, "scalar", "1", "1"}};
// clang-format on

TEST(ZUnitDimensions, ExponentsAddSubtractMultiplyAndWrap) {
    const ZUnitDimensions a(1, 2, 3, 4, 5, 6, 7, 8, 9), b(1, 1, 1, 1, 6, 8, 7, 9, 10);
    EXPECT_EQ((a * b).SIUnitsString(), "m^2*kg^3*s^4*A^5*K^11*mol^14*cd^14*rad^17*sr^19");
    EXPECT_EQ((a / b).SIUnitsString(), "kg*s^2*A^3/(K*mol^2*rad*sr)");
    const ZUnitDimensions smallest(INT_MIN, 0, 0, 0, 0, 0, 0, 0, 0);
    EXPECT_EQ(smallest.SIUnitsString(), "1/m^2147483648");
    EXPECT_TRUE((smallest ^ -1) == smallest && smallest * smallest == ZUnitDimensions() &&
                (smallest / a).Length() == INT_MAX);
}

TEST(ZUnitType, BuiltInQuantitiesStandInTheirOrder) {
    for (const auto& [accessor, name, reference, signature] : kQuantities) {
        EXPECT_TRUE(accessor().GetName() == name && accessor().GetReferenceSIString() == reference) << name;
        EXPECT_EQ(accessor().GetDimensions().SIUnitsString(), signature);
        EXPECT_TRUE(ZUnitType::FindByReferenceSiString(reference) == accessor()) << name;
    }
    EXPECT_EQ(ZUnitType::GetDBType(T::ElectricCurrent()), T::AmplitudeRatio);
    EXPECT_NE(ZUnitType::GetDBType(T::Power()), T::AmplitudeRatio);
    EXPECT_TRUE(T::Radioactivity().GetBaseMKSUnits().GetUnitType() == T::Radioactivity());
    EXPECT_THROW_MSG(T::SolidAngle().GetBaseMKSUnits(), std::runtime_error,
                     "Error constructing a unit from SI String sr");
#define EXPECT_ACCESSOR(Accessor, s_static, ...) EXPECT_EQ(&T::Accessor(), &T::s_static);
    ZELM_FOR_EACH_QUANTITY(EXPECT_ACCESSOR)
    EXPECT_TRUE(ZUnitType().GetName() == "none" && ZUnitType() != ZUnitType::Dimensionless());
}

TEST(ZUnitType, FindUnitTypeGoesByTheReferenceTextsAndRegistersNewSignatures) {
    EXPECT_TRUE(T::FindUnitType(T::Frequency().GetDimensions(), "(Bq)^1") == T::Radioactivity());
    const ZUnitDimensions odd(1001, 0, 0, 0, 0, 0, 0, 0, 0);
    EXPECT_EQ(T::FindUnitType(odd, "first").GetReferenceSIString(), "m^1001");
    EXPECT_EQ(T::FindUnitType(odd, "other").GetName(), "first");
    EXPECT_EQ(T::FindCompatibleTypes(odd).size(), 1U);
    const ZUnitDimensions volt = T::ElectricPotential().GetDimensions();
    const ZUnitType first = T::Create("mine", volt, "Vx"), second = T::Create("mine too", volt, "Vx");
    EXPECT_EQ(T::GetDBType(first), T::AmplitudeRatio);
    EXPECT_TRUE(T::FindByReferenceSiString("Vx") == first && first != second);
    EXPECT_TRUE(T::Create("mine", volt, "Vy") == first);
}

} // namespace
} // namespace Zelm
