#pragma once

#include <zelm/Export.h>
#include <zelm/text/ZString.h>
#include <zelm/tree/ZObject.h>
#include <zelm/units/ZUnitType.h>
#include <zelm/variant/Variant.h>

#include <complex>
#include <iosfwd>
#include <string>
#include <type_traits>

namespace Zelm {

/// A unit of measurement: a quantity, and the map that takes a number of this unit to one of the quantity's
/// base unit:
///
///     linear        base = scale * v + offset
///     logarithmic   base = scale * 10^(v / logMultiplier) + offset
///
/// Units are objects: numbers and texts are properties of the unit's tree, so that a unit can be stored in
/// other objects and saved with them. Beside the tree stands the quantity alone. Building a unit may register
/// a quantity, so units are built on one thread at a time (see `ZUnitType`).
class ZELM_EXPORT ZUnit : public ZObject {
public:
    /// The names of the properties: "Scale", "Offset", "LogMultiplier", "SiUnits", "DisplayUnit",
    /// "UnitTypeReferenceString". A property that is missing has the value that ZUnit() acts by.
    static const ZStringLiteral ScalePropertyName;
    static const ZStringLiteral OffsetPropertyName;
    static const ZStringLiteral LogMultiplierPropertyName;
    static const ZStringLiteral SiUnitsPropertyName;
    static const ZStringLiteral DisplayUnitPropertyName;
    static const ZStringLiteral UnitTypeReferenceStringPropertyName;
    /// "Unit".
    static std::string objectType();

    /// The unit of plain numbers, without properties: scale 1, offset 0, no logarithm, an empty label.
    ZUnit();
    /// A unit by its numbers. No text is read: the SI text becomes the reference text of `type`, whatever the
    /// scale, which has consequences for the conversion of Variants.
    ZUnit(const ZUnitType& type, ZString displayUnit, double scale, double offset, double logMultiplier);
    /// The unit that was stored as `object`. Throws `std::logic_error` "Unit expected but not found" for an
    /// object of another type, and what ZUnitType::FindByReferenceSiString() throws: a quantity that is not
    /// built in has to be registered before, by reading a unit text that has it.
    ZUnit(ZGenericObject object);

    /// Copies and moves share the tree, and changes of one do not show in the other. A source that was moved
    /// from stays as it was.
    ZUnit(const ZUnit&) = default;
    ZUnit(ZUnit&& other) noexcept : ZObject(std::move(other)), unitType_(other.unitType_) {}
    ZUnit& operator=(const ZUnit&) = default;
    ZUnit& operator=(ZUnit&& other) noexcept;
    ~ZUnit() override;

    /// Reads a text such as "kg*m/s^2", "mm^2", "1/s" or "dB(mW)". There are no blanks; a denominator is one
    /// term ("m/(s*s)"); a power belongs to a symbol. The empty text is the unit of plain numbers. "dB(...)"
    /// has the multiplier 20 for voltages and currents and else 10; multiplier 1 is written "log(W))", with
    /// one parenthesis more than are opened. Throws `std::runtime_error` "Error constructing a unit from SI
    /// String " and the text. Takes time linear in the text.
    static ZUnit FromSiString(const ZString& siString);

    double GetScale() const;
    double GetOffset() const;
    /// 0 for a linear unit.
    double GetLogMultiplier() const;
    ZString GetSiUnits() const;
    ZString GetUnitTypeReferenceString() const;
    const ZUnitType& GetUnitType() const noexcept { return unitType_; }
    /// The text to show: the display text if there is one, else nothing for a plain number, else the SI text.
    ZString GetUnitsLabel() const;

    /// Whether numbers can be converted between the two: whether the signatures are equal.
    bool IsCommensurable(const ZUnit& other) const noexcept;
    /// Whether the quantity is that of plain numbers, by name and signature.
    bool IsDimensionless() const noexcept;
    static bool Dimensionless(const ZUnit& unit) noexcept { return unit.IsDimensionless(); }
    bool IsLogarithmic() const { return GetLogMultiplier() != 0.0; }

    void SetDisplayUnit(const ZString& displayUnit);
    /// The same, for chaining.
    ZUnit& SetUnitsLabel(const ZString& label);
    /// Makes this the unit of the text, but for its display text and for the saved reference text of its
    /// quantity: a unit that is rebuilt from its tree after this has the quantity that it had before. Throws
    /// `std::runtime_error` "Invalid units string " and the text, and is unchanged then.
    void ParseAndSetSiUnits(const ZString& siString);

    /// The number `value` of this unit in the unit `to`. Plain floating-point arithmetic without checks: a
    /// scale of 0 gives infinities. Into a logarithmic unit, linear values below 1e-300 count as 1e-300.
    /// Throws `std::runtime_error` "Units X is not commensurable to Y" with the SI texts of `to` and of this
    /// unit.
    double ConvertTo(const ZUnit& to, double value) const;
    /// Real and imaginary part, each by itself, also for logarithmic units. The text is "Units X is not
    /// Commensurable to Y".
    std::complex<double> ConvertTo(const ZUnit& to, std::complex<double> value) const;
    std::complex<double> ConvertTo(const ZUnit& to, std::complex<float> value) const {
        return ConvertTo(to, std::complex<double>(value));
    }
    /// All elements of `value`, as `Double()` or `ComplexDouble()` in its shape and ordering; in place if the
    /// elements are of that type and nobody else holds them, so move values in that are not needed any more.
    ///
    /// Beware that between units with equal SI texts `value` comes back untouched, even if their scales
    /// differ: a unit that was made of numbers has its quantity's reference text, so that "km/h" to "m/s" and
    /// "Celsius" to "K" convert nothing here, while the overloads for single numbers do.
    ///
    /// Throws `std::runtime_error` "To units are not commensurable - from: Y to X", and "Failed convering
    /// units from Y to X" if an element is no number or does not survive as a double.
    Variant ConvertTo(const ZUnit& to, Variant value) const;

protected:
    /// The formula of ConvertTo() without any check.
    double ConvertValueToUnit(double value, const ZUnit& to) const;

private:
    struct Definition;

    explicit ZUnit(const Definition& definition);

    static Definition read(const ZString& siString);
    static void write(ZMutablePropertyHandle& unit, const Definition& definition);
    static ZPropertyHandle newTree(const Definition& definition);

    double number(const ZStringLiteral& name, double missing) const;

    ZUnitType unitType_ = ZUnitType::Dimensionless();
};

/// The base unit of the product, quotient or power of the two quantities, scale 1. Scales of the operands do
/// not enter: "km" * "km" is the unit "m^2". A signature that nobody has seen becomes a quantity named after
/// the labels, such as "(V)*m". Beware that `^` binds weaker than `==`, `*` and `/`.
ZELM_EXPORT ZUnit operator*(const ZUnit& a, const ZUnit& b);
ZELM_EXPORT ZUnit operator/(const ZUnit& a, const ZUnit& b);
ZELM_EXPORT ZUnit operator^(const ZUnit& unit, int power);
/// Quantities have integer powers only.
template <class Real, class = std::enable_if_t<std::is_floating_point_v<Real>>>
ZUnit operator^(const ZUnit& unit, Real power) = delete;

/// Signatures, numbers and labels; the names of the quantities and the SI texts take no part.
ZELM_EXPORT bool operator==(const ZUnit& a, const ZUnit& b);
ZELM_EXPORT bool operator!=(const ZUnit& a, const ZUnit& b);

/// One line for people: SI text, label and scale.
ZELM_EXPORT std::ostream& operator<<(std::ostream& out, const ZUnit& unit);

} // namespace Zelm
