#pragma once

#include <zelm/arrays/ArrayDimensions.h>
#include <zelm/arrays/DataOrdering.h>

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>
#include <vector>

namespace Zelm::details {

/// The loops that bring an array from one data ordering into the other: a matrix is transposed for each
/// combination of the indices between the first and the last axis. Extents of 1 are no axes.
class TranspositionPlan {
public:
    /// The matrices: source rows are contiguous, target columns are.
    struct Plane {
        std::uint64_t rows = 1;
        std::uint64_t columns = 1;
        std::uint64_t sourceRowStride = 1;
        std::uint64_t targetColumnStride = 1;
    };

    /// Plans the step from the ordering `from` into the other one.
    TranspositionPlan(const ArrayDimensions& shape, DataOrdering from);

    /// Whether nothing has to move, as with a vector.
    bool isIdentity() const noexcept { return isIdentity_; }
    const Plane& plane() const noexcept { return plane_; }

    /// Calls `visit(sourceOffset, targetOffset)` for each matrix, with the offsets of its first element.
    template <class Visit>
    void forEachPlane(Visit&& visit) const {
        visitAxis(0, 0, 0, visit);
    }

private:
    struct Axis {
        std::uint64_t extent;
        std::uint64_t sourceStride;
        std::uint64_t targetStride;
    };

    // The depth stays below 64, since each axis has two elements or more.
    template <class Visit>
    void visitAxis(std::size_t axis, std::uint64_t source, std::uint64_t target, Visit& visit) const {
        if (axis == between_.size()) {
            visit(source, target);
            return;
        }
        const Axis& loop = between_[axis];
        for (std::uint64_t i = 0; i < loop.extent; ++i) {
            visitAxis(axis + 1, source + i * loop.sourceStride, target + i * loop.targetStride, visit);
        }
    }

    bool isIdentity_ = true;
    Plane plane_;
    std::vector<Axis> between_;
};

/// Rearranges elements of `Size` bytes that may be copied as such; instantiated for 1, 2, 4, 8 and 16.
template <std::size_t Size>
void transposeBytes(const void* source, void* target, const TranspositionPlan& plan);

/// Moves the elements of `source` to their places in `target`.
template <class Element>
void transpose(Element* source, Element* target, const TranspositionPlan& plan) {
    if constexpr (std::is_trivially_copyable_v<Element>) {
        transposeBytes<sizeof(Element)>(source, target, plan);
    } else {
        const TranspositionPlan::Plane& plane = plan.plane();
        plan.forEachPlane([&](std::uint64_t from, std::uint64_t to) {
            for (std::uint64_t column = 0; column < plane.columns; ++column) {
                for (std::uint64_t row = 0; row < plane.rows; ++row) {
                    target[to + column * plane.targetColumnStride + row] =
                        std::move(source[from + row * plane.sourceRowStride + column]);
                }
            }
        });
    }
}

} // namespace Zelm::details
