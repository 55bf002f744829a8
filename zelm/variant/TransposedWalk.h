#pragma once

#include <zelm/variant/Transposition.h>

#include <algorithm>
#include <cstddef>

namespace Zelm::details {

/// Calls `visit(sourceOffset, targetOffset)` for each element of a transposition, in tiles in which the cache
/// lines of both arrays are used whole: for loops over two arrays that are stored in different orderings.
template <class Visit>
void forEachTransposed(const TranspositionPlan& plan, Visit visit) {
    constexpr std::size_t kTile = 16;
    const TranspositionPlan::Plane plane = plan.plane();
    plan.forEachPlane([&](std::size_t source, std::size_t target) {
        for (std::size_t leftColumn = 0; leftColumn < plane.columns; leftColumn += kTile) {
            const std::size_t columnsEnd = std::min(leftColumn + kTile, plane.columns);
            for (std::size_t topRow = 0; topRow < plane.rows; topRow += kTile) {
                const std::size_t rowsEnd = std::min(topRow + kTile, plane.rows);
                for (std::size_t column = leftColumn; column < columnsEnd; ++column) {
                    for (std::size_t row = topRow; row < rowsEnd; ++row) {
                        visit(source + row * plane.sourceRowStride + column,
                              target + column * plane.targetColumnStride + row);
                    }
                }
            }
        }
    });
}

} // namespace Zelm::details
