#pragma once

namespace Zelm {

/// How a conversion between element types is tested.
enum ConversionPolicy : int {
    NoCheck = 0,     ///< convert every element, with no test
    CheckAlways = 1, ///< convert every element and test that the conversion can be undone
    CheckLossy = 2,  ///< the same test, for pairs of types in which a value can be lost
};

} // namespace Zelm
