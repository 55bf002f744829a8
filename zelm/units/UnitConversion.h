#pragma once

#include <zelm/variant/Variant.h>

namespace Zelm::details {

/// The way of a number into the base unit of its quantity: `scale * v + offset`, or, with a logarithm
/// multiplier other than 0, `scale * 10^(v / logMultiplier) + offset`.
struct UnitMap {
    double scale = 1.0;
    double offset = 0.0;
    double logMultiplier = 0.0;
};

/// The number `value` of one unit in another, through the base unit. Every step of the formula is taken as it
/// stands, whatever the numbers of the units are, so that single numbers and arrays agree to the last bit.
double convertNumber(const UnitMap& from, const UnitMap& to, double value);

/// The same for each element, as `Double()` or, both parts by themselves, as `ComplexDouble()`; in place
/// where nobody else holds the elements. Throws the failures of conversion to these types.
Variant convertElements(const UnitMap& from, const UnitMap& to, Variant value);

} // namespace Zelm::details
