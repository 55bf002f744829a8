#pragma once

/// The one list of the built-in quantities, in the order in which the registry of ZUnitType holds them: a
/// lookup by signature falls back on the earliest entry. `apply(Accessor, s_static, name, reference,
/// exponents...)` is expanded for each row; the exponents are in the order of the constructor of
/// ZUnitDimensions. An empty reference stands for the canonical text of the signature.
// clang-format off
#define ZELM_FOR_EACH_QUANTITY(apply)                                                                              \
    apply(Length,                   s_length,                   "length",                       "m",     1, 0, 0, 0, 0, 0, 0, 0, 0) \
    apply(Mass,                     s_mass,                     "mass",                         "kg",    0, 1, 0, 0, 0, 0, 0, 0, 0) \
    apply(Time,                     s_time,                     "time",                         "s",     0, 0, 1, 0, 0, 0, 0, 0, 0) \
    apply(Area,                     s_area,                     "area",                         "m^2",   2, 0, 0, 0, 0, 0, 0, 0, 0) \
    apply(Volume,                   s_volume,                   "volume",                       "m^3",   3, 0, 0, 0, 0, 0, 0, 0, 0) \
    apply(PlaneAngle,               s_planeAngle,               "plane angle",                  "rad",   0, 0, 0, 0, 0, 0, 0, 1, 0) \
    apply(SolidAngle,               s_solidAngle,               "solid angle",                  "sr",    0, 0, 0, 0, 0, 0, 0, 0, 1) \
    apply(Velocity,                 s_velocity,                 "velocity",                     "m/s",   1, 0, -1, 0, 0, 0, 0, 0, 0) \
    apply(Acceleration,             s_acceleration,             "acceleration",                 "m/s^2", 1, 0, -2, 0, 0, 0, 0, 0, 0) \
    apply(Force,                    s_force,                    "force",                        "N",     1, 1, -2, 0, 0, 0, 0, 0, 0) \
    apply(Pressure,                 s_pressure,                 "pressure",                     "Pa",    -1, 1, -2, 0, 0, 0, 0, 0, 0) \
    apply(Energy,                   s_energy,                   "energy",                       "J",     2, 1, -2, 0, 0, 0, 0, 0, 0) \
    apply(Power,                    s_power,                    "power",                        "W",     2, 1, -3, 0, 0, 0, 0, 0, 0) \
    apply(Frequency,                s_frequency,                "frequency",                    "Hz",    0, 0, -1, 0, 0, 0, 0, 0, 0) \
    apply(ElectricCurrent,          s_electricCurrent,          "electric current",             "A",     0, 0, 0, 1, 0, 0, 0, 0, 0) \
    apply(ElectricCharge,           s_electricCharge,           "electric charge",              "C",     0, 0, 1, 1, 0, 0, 0, 0, 0) \
    apply(ElectricPotential,        s_electricPotential,        "electric potential",           "V",     2, 1, -3, -1, 0, 0, 0, 0, 0) \
    apply(ElectricResistance,       s_electricResistance,       "electric resistance",          "Ω", 2, 1, -3, -2, 0, 0, 0, 0, 0) \
    apply(ElectricCapacitance,      s_electricCapacitance,      "electric capacitance",         "F",     -2, -1, 4, 2, 0, 0, 0, 0, 0) \
    apply(MagneticFlux,             s_magneticFlux,             "magnetic flux",                "Wb",    2, 1, -2, -1, 0, 0, 0, 0, 0) \
    apply(MagneticFluxDensity,      s_magneticFluxDensity,      "magnetic flux density",        "T",     0, 1, -2, -1, 0, 0, 0, 0, 0) \
    apply(Inductance,               s_inductance,               "inductance",                   "H",     2, 1, -2, -2, 0, 0, 0, 0, 0) \
    apply(Conductance,              s_conductance,              "conductance",                  "S",     -2, -1, 3, 2, 0, 0, 0, 0, 0) \
    apply(ThermodynamicTemperature, s_thermodynamicTemperature, "thermodynamic temperature",    "K",     0, 0, 0, 0, 1, 0, 0, 0, 0) \
    apply(AmountOfSubstance,        s_amountOfSubstance,        "amount of substance",          "mol",   0, 0, 0, 0, 0, 1, 0, 0, 0) \
    apply(LuminousIntensity,        s_luminousIntensity,        "luminous intensity",           "cd",    0, 0, 0, 0, 0, 0, 1, 0, 0) \
    apply(LuminousFlux,             s_luminousFlux,             "luminous flux",                "lm",    0, 0, 0, 0, 0, 0, 1, 0, 1) \
    apply(Illuminance,              s_illuminance,              "illuminance",                  "lx",    -2, 0, 0, 0, 0, 0, 1, 0, 1) \
    apply(Radioactivity,            s_radioactivity,            "radioactivity",                "Bq",    0, 0, -1, 0, 0, 0, 0, 0, 0) \
    apply(AbsorbedDose,             s_absorbedDose,             "absorbed dose of radiation",   "Gy",    2, 0, -2, 0, 0, 0, 0, 0, 0) \
    apply(EquivalentDose,           s_equivalentDose,           "equivalent dose of radiation", "Sv",    2, 0, -2, 0, 0, 0, 0, 0, 0) \
    apply(CatalyticActivity,        s_catalyticActivity,        "catalytic activity",           "kat",   0, 0, -1, 0, 0, 1, 0, 0, 0) \
    apply(Dimensionless,            s_dimensionless,            "scalar",                       "",      0, 0, 0, 0, 0, 0, 0, 0, 0)
// clang-format on
