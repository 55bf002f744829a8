#pragma once

#include <zelm/units/ZUnitConverter.h>
#include <zelm/variant/Variant.h>

#include <cstddef>

namespace Zelm::details {

/// What the properties of a unit say.
UnitMap mapOf(const ZUnit& unit);

/// The failures, with the SI texts of the two units.
[[noreturn]] void throwIncommensurable(const ZString& from, const ZString& to);
[[noreturn]] void throwFailedConversion(const ZString& from, const ZString& to);

/// The number `value` of one unit in another, through the base unit. Every step of the formula is taken as it
/// stands, whatever the numbers of the units are, so that single numbers and arrays agree to the last bit.
double convertNumber(const UnitMap& from, const UnitMap& to, double value) noexcept;

/// The same for `count` numbers. `out` may be `in`; otherwise the two do not overlap.
void convertNumbers(const UnitMap& from, const UnitMap& to, const double* in, double* out,
                    std::size_t count) noexcept;

/// The same for each element, as `Double()` or, both parts by themselves, as `ComplexDouble()`; in place
/// where nobody else holds the elements. Throws the failures of conversion to these types.
Variant convertElements(const UnitMap& from, const UnitMap& to, Variant value);

} // namespace Zelm::details
