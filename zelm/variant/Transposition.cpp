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
    // A tile of this edge touches one cache line of each of its rows and columns. Larger ones suffer where
    // the strides are powers of two, since then all lines of a tile compete for the same few places.
    constexpr std::uint64_t kTile = std::max<std::size_t>(8, 64 / Size);
    const TranspositionPlan::Plane plane = plan.plane();
    plan.forEachPlane([&](std::uint64_t from, std::uint64_t to) {
        const auto* first = static_cast<const unsigned char*>(source) + from * Size;
        auto* result = static_cast<unsigned char*>(target) + to * Size;
        for (std::uint64_t leftColumn = 0; leftColumn < plane.columns; leftColumn += kTile) {
            const std::uint64_t columnsEnd = std::min(leftColumn + kTile, plane.columns);
            for (std::uint64_t topRow = 0; topRow < plane.rows; topRow += kTile) {
                const std::uint64_t rowsEnd = std::min(topRow + kTile, plane.rows);
                for (std::uint64_t column = leftColumn; column < columnsEnd; ++column) {
                    for (std::uint64_t row = topRow; row < rowsEnd; ++row) {
                        std::memcpy(result + (column * plane.targetColumnStride + row) * Size,
                                    first + (row * plane.sourceRowStride + column) * Size, Size);
                    }
                }
            }
        }
    });
}

template void transposeBytes<1>(const void*, void*, const TranspositionPlan&);
template void transposeBytes<2>(const void*, void*, const TranspositionPlan&);
template void transposeBytes<4>(const void*, void*, const TranspositionPlan&);
template void transposeBytes<8>(const void*, void*, const TranspositionPlan&);
template void transposeBytes<16>(const void*, void*, const TranspositionPlan&);

} // namespace Zelm::details
