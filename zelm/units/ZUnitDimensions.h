#pragma once

#include <zelm/Export.h>
#include <zelm/text/ZString.h>

#include <array>
#include <cstddef>
#include <type_traits>

namespace Zelm {

/// The dimensional signature of a physical quantity: nine integer exponents, those of the SI base quantities
/// and of the plane and the solid angle. Two units can be converted into one another exactly if their
/// signatures are equal. An angle is not commensurable with a plain number here.
///
/// A plain value without allocation. Exponents are 32-bit and wrap; nothing throws but SIUnitsString(), for
/// want of memory.
class ZELM_EXPORT ZUnitDimensions {
public:
    /// How many base quantities there are.
    static constexpr std::size_t kBaseQuantities = 9;

    /// All exponents 0, the signature of a plain number.
    constexpr ZUnitDimensions() noexcept = default;
    constexpr ZUnitDimensions(int length, int mass, int time, int electricalCurrent,
                              int thermodynamicTemperature, int quantityOfSubstance, int luminousIntensity,
                              int angle, int solidAngle) noexcept
        : exponents_{length,
                     mass,
                     time,
                     electricalCurrent,
                     thermodynamicTemperature,
                     quantityOfSubstance,
                     luminousIntensity,
                     angle,
                     solidAngle} {}

    constexpr int Length() const noexcept { return exponents_[0]; }
    /// The exponent of the kilogram, not of the gram.
    constexpr int Mass() const noexcept { return exponents_[1]; }
    constexpr int Time() const noexcept { return exponents_[2]; }
    constexpr int ElectricalCurrent() const noexcept { return exponents_[3]; }
    constexpr int ThermodynamicTemperature() const noexcept { return exponents_[4]; }
    constexpr int QuantityOfSubstance() const noexcept { return exponents_[5]; }
    constexpr int LuminousIntensity() const noexcept { return exponents_[6]; }
    constexpr int Angle() const noexcept { return exponents_[7]; }
    constexpr int SolidAngle() const noexcept { return exponents_[8]; }

    /// The signature of the power: every exponent times `power`. Beware that `^` binds weaker than `==`, `*`
    /// and `/`: write `(a ^ 2) == b`.
    ZUnitDimensions operator^(int power) const noexcept;
    /// Signatures have integer powers only.
    template <class Real, class = std::enable_if_t<std::is_floating_point_v<Real>>>
    ZUnitDimensions operator^(Real power) const = delete;

    /// The canonical text, such as "m^2*kg/(s^3*A^2)": base symbols in the order of the accessors, never
    /// derived ones; "1" if all exponents are 0.
    ZString SIUnitsString() const;

    /// The signatures of the product and of the quotient: exponents add and subtract.
    friend ZELM_EXPORT ZUnitDimensions operator*(const ZUnitDimensions& a, const ZUnitDimensions& b) noexcept;
    friend ZELM_EXPORT ZUnitDimensions operator/(const ZUnitDimensions& a, const ZUnitDimensions& b) noexcept;
    friend bool operator==(const ZUnitDimensions& a, const ZUnitDimensions& b) noexcept {
        return a.exponents_ == b.exponents_;
    }
    friend bool operator!=(const ZUnitDimensions& a, const ZUnitDimensions& b) noexcept { return !(a == b); }

private:
    std::array<int, kBaseQuantities> exponents_{};
};

} // namespace Zelm
