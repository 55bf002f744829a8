#include <zelm/variant/Transposition.h>

#include <algorithm>
#include <cstring>
#include <iterator>

namespace Zelm::details {

namespace {

std::vector<std::uint64_t> axesOf(const ArrayDimensions& shape) {
    std::vector<std::uint64_t> extents;
    extents.reserve(shape.numberOfDimensions());
    std::copy_if(shape.begin(), shape.end(), std::back_inserter(extents),
                 [](std::uint64_t extent) { return extent != 1; });
    return extents;
}

/// Reads some rows side by side, as many as make one cache line of each target column: reading runs ahead in
/// all of them, and every line is written whole. More rows suffer where the strides are powers of two, since
/// then their lines compete for the same few places of the cache. The plane comes by value: a byte that is
/// written could be a part of any other.
template <std::size_t Size>
void transposePlane(const unsigned char* source, unsigned char* target, TranspositionPlan::Plane plane) {
    constexpr std::uint64_t kRows = 64 / Size;
    for (std::uint64_t top = 0; top < plane.rows; top += kRows) {
        const std::uint64_t bottom = std::min(top + kRows, plane.rows);
        for (std::uint64_t column = 0; column < plane.columns; ++column) {
            for (std::uint64_t row = top; row < bottom; ++row) {
                std::memcpy(target + (column * plane.targetColumnStride + row) * Size,
                            source + (row * plane.sourceRowStride + column) * Size, Size);
            }
        }
    }
}

} // namespace

TranspositionPlan::TranspositionPlan(const ArrayDimensions& shape, DataOrdering from) {
    std::vector<std::uint64_t> extents = axesOf(shape);
    isIdentity_ = extents.size() < 2 || shape.isEmpty();
    if (isIdentity_) {
        return;
    }
    // Column-major order over a shape is row-major order over the reversed shape.
    if (from == ColumnMajor) {
        std::reverse(extents.begin(), extents.end());
    }
    std::uint64_t sourceStride = shape.countAllElements() / extents.front();
    std::uint64_t targetStride = extents.front();
    plane_.rows = extents.front();
    plane_.columns = extents.back();
    plane_.sourceRowStride = sourceStride;
    for (std::size_t axis = 1; axis + 1 < extents.size(); ++axis) {
        sourceStride /= extents[axis];
        between_.push_back({extents[axis], sourceStride, targetStride});
        targetStride *= extents[axis];
    }
    plane_.targetColumnStride = targetStride;
}

template <std::size_t Size>
void transposeBytes(const void* source, void* target, const TranspositionPlan& plan) {
    plan.forEachPlane([&](std::uint64_t from, std::uint64_t to) {
        transposePlane<Size>(static_cast<const unsigned char*>(source) + from * Size,
                             static_cast<unsigned char*>(target) + to * Size, plan.plane());
    });
}

template void transposeBytes<1>(const void*, void*, const TranspositionPlan&);
template void transposeBytes<2>(const void*, void*, const TranspositionPlan&);
template void transposeBytes<4>(const void*, void*, const TranspositionPlan&);
template void transposeBytes<8>(const void*, void*, const TranspositionPlan&);
template void transposeBytes<16>(const void*, void*, const TranspositionPlan&);

} // namespace Zelm::details
