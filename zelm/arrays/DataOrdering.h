#pragma once

namespace Zelm {

/// How the elements of an array are laid out in flat storage. The type is fixed so that any value read from
/// outside can be held and tested.
enum DataOrdering : int {
    RowMajor = 0,   ///< the last index runs fastest
    ColumnMajor = 1 ///< the first index runs fastest
};

} // namespace Zelm
