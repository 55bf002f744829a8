#pragma once

#include <zelm/Export.h>
#include <zelm/text/ZString.h>
#include <zelm/units/QuantityList.h>
#include <zelm/units/ZUnitDimensions.h>

#include <vector>

namespace Zelm {

class ZUnit;

/// A physical quantity: a name ("electric current"), the SI text of its base unit ("A") and its signature.
/// Quantities may share a signature, as frequency and radioactivity do; the reference text tells them apart.
///
/// All quantities stand in one registry, which starts with the 33 built-in ones and only grows. It has no
/// lock: units are built, and quantities registered, on one thread at a time. A quantity that was registered
/// on the way is not saved with the units that have it; another process knows it once it has read such a
/// text.
class ZELM_EXPORT ZUnitType {
public:
    /// Whether a decibel of the quantity is 10 log10 or 20 log10.
    enum DecibelType { PowerRatio = 0, AmplitudeRatio = 1 };

    /// "none", without a reference text and dimensions; differs from Dimensionless() by its name.
    ZUnitType();

    /// Registers a quantity, also if there is an equal one; an empty reference text stands for
    /// `dimensions.SIUnitsString()`. The result lies in the registry and is good until the next registration,
    /// which building any unit can bring: copy it at once.
    static const ZUnitType& Create(ZString name, ZUnitDimensions dimensions, ZString referenceSiString);

    /// The earliest entry with this reference text, compared whole and case-sensitive; copy it at once as for
    /// Create(). Throws `std::runtime_error` "Could not find a ZUnitType with reference SI string " and the
    /// text.
    static const ZUnitType& FindByReferenceSiString(const ZString& reference);

    /// Copies of all entries with this signature, earliest first.
    static std::vector<ZUnitType> FindCompatibleTypes(const ZUnitDimensions& dimensions);

    /// The quantity that a unit of this signature and text has: among those with the signature the earliest
    /// whose reference text occurs in `siString`, or else the earliest. A signature that nobody has seen is
    /// registered as a new quantity with `siString` as its name.
    static ZUnitType FindUnitType(const ZUnitDimensions& dimensions, const ZString& siString);

    /// AmplitudeRatio for every quantity with the signature of voltage or current, else PowerRatio.
    static DecibelType GetDBType(const ZUnitType& type) noexcept;

    /// `ZUnit::FromSiString` of the reference text, with all that it throws. "mol", "sr", "Wb" and "Sv", and
    /// texts that hold them, are not readable as units, so the base units of such quantities cannot be had
    /// here.
    ZUnit GetBaseMKSUnits() const;

    ZString GetReferenceSIString() const { return reference_; }
    ZString GetName() const { return name_; }
    ZUnitDimensions GetDimensions() const noexcept { return dimensions_; }

    /// Names and signatures; the reference text takes no part.
    bool operator==(const ZUnitType& other) const noexcept;
    bool operator!=(const ZUnitType& other) const noexcept { return !(*this == other); }

    /// `Length()`, `Mass()` ... `Dimensionless()`: one accessor for each built-in quantity, which returns the
    /// static of its name (`s_length`, `s_mass` ...), good until the library is unloaded.
#define ZELM_QUANTITY(Accessor, s_static, name, reference, ...)                                              \
    static const ZUnitType s_static;                                                                         \
    static const ZUnitType& Accessor() noexcept;
    ZELM_FOR_EACH_QUANTITY(ZELM_QUANTITY)
#undef ZELM_QUANTITY

private:
    ZUnitType(ZString name, ZString reference, ZUnitDimensions dimensions);

    static std::vector<ZUnitType> sm_unitTypes;

    ZString name_;
    ZString reference_;
    ZUnitDimensions dimensions_;
};

} // namespace Zelm
