#pragma once

#include <zelm/Export.h>
#include <zelm/text/ZString.h>
#include <zelm/text/ZStringView.h>
#include <zelm/units/ZUnit.h>

#include <map>
#include <vector>

namespace Zelm {

/// The catalogue of named units of the process: "kHz", "Fahrenheit", "dBm" ... It starts with 119 entries,
/// to which an application adds its own. The name of an entry is usually the label of its unit, but need not
/// be: "Celsius" holds the unit "°C".
///
/// The first instance() call makes it, on whatever thread. Readers may run together as long as nobody inserts
/// or removes. Lists are in byte order of the names.
class ZELM_EXPORT ZSystemOfUnits {
public:
    static ZSystemOfUnits& instance();

    ZSystemOfUnits(const ZSystemOfUnits&) = delete;
    ZSystemOfUnits& operator=(const ZSystemOfUnits&) = delete;
    ~ZSystemOfUnits();

    /// All units; one that has two names stands there twice.
    std::vector<ZUnit> GetAllUnits() const;
    /// The units of a quantity, equal ones once.
    std::vector<ZUnit> GetUnits(const ZUnitType& type) const;
    /// `unit`, which need not be in the catalogue, and then the other units of its quantity.
    std::vector<ZUnit> GetCompatibleUnits(const ZUnit& unit) const;
    /// All names of units of a quantity.
    std::vector<ZString> GetUnitNames(const ZUnitType& type) const;

    /// Names are compared whole and case-sensitive. Throws `std::logic_error` "Error: in GetUnitsBayName:
    /// unit-name 'x' not found.".
    ZUnit GetUnitsByName(const ZString& name) const;
    /// The unit that a person means: the first "Ohm" stands for "Ω" and then the first "u" for "µ", except in
    /// the names "Celsius", "hundreds" and "thousands". A text that is no name is read by
    /// ZUnit::FromSiString(), whose failure goes to the caller. An entry of the application's own with a "u"
    /// in its name is out of reach here.
    ZUnit GetUnitsFromString(const ZString& text) const;

    /// Throws `std::logic_error` "Error: InsertUnits: Cannot insert duplicate unit-name 'x'." and changes
    /// nothing if the name is taken; to replace a unit, remove it first.
    void InsertUnits(const ZString& name, const ZUnit& unit);
    /// The same under the unit's label, which is empty for plain numbers without a display text.
    void InsertUnits(const ZUnit& unit);
    /// An unknown name is no error.
    void RemoveUnits(const ZString& name);

private:
    struct ByName {
        bool operator()(ZStringView a, ZStringView b) const { return a.compare(b) < 0; }
    };

    ZSystemOfUnits();

    std::map<ZString, ZUnit, ByName> units_;
};

} // namespace Zelm
