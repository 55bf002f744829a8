#include <zelm/arrays/ArrayIndexing.h>

#include <zelm/arrays/Saturating.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <numeric>
#include <stdexcept>

namespace Zelm {

namespace {

using Extents = std::vector<std::uint64_t>;

[[noreturn]] void throwTooFewIndices() {
    throw std::invalid_argument("Too few indices");
}

[[noreturn]] void throwIndicesOutOfBounds() {
    throw std::out_of_range("Indices out of bounds");
}

/// The dimension that is the `rank`-th in speed: rank 0 is the one that runs fastest.
std::uint64_t dimensionOfRank(std::uint64_t rank, std::uint64_t dimensions, DataOrdering ordering) {
    return ordering == ColumnMajor ? rank : dimensions - 1 - rank;
}

void requireInBounds(const std::vector<std::uint64_t>& indices, const Extents& extents, std::uint64_t used) {
    const auto beyond = indices.begin() + static_cast<std::ptrdiff_t>(used);
    const bool inside = std::equal(indices.begin(), beyond, extents.begin(), std::less<>());
    if (!inside || std::any_of(beyond, indices.end(), [](std::uint64_t index) { return index != 0; })) {
        throwIndicesOutOfBounds();
    }
}

std::uint64_t offsetOf(const std::vector<std::uint64_t>& indices, const ArrayDimensions& dims,
                       DataOrdering ordering, bool check) {
    const std::uint64_t used = dims.canonicalSize();
    if (indices.size() < used) {
        throwTooFewIndices();
    }
    if (check) {
        requireInBounds(indices, dims.extents(), used);
    }
    std::uint64_t offset = 0;
    std::uint64_t stride = 1;
    for (std::uint64_t rank = 0; rank < used; ++rank) {
        const std::uint64_t dimension = dimensionOfRank(rank, used, ordering);
        offset = details::saturatingSum(offset, details::saturatingProduct(indices[dimension], stride));
        stride = details::saturatingProduct(stride, dims[dimension]);
    }
    return offset;
}

void writeStrides(std::vector<std::uint64_t>& strides, const ArrayDimensions& dims, DataOrdering ordering) {
    const std::uint64_t count = dims.numberOfDimensions();
    strides.resize(count);
    std::uint64_t stride = 1;
    for (std::uint64_t rank = 0; rank < count; ++rank) {
        const std::uint64_t dimension = dimensionOfRank(rank, count, ordering);
        strides[dimension] = stride;
        stride = details::saturatingProduct(stride, dims[dimension]);
    }
}

void requireOffsetInside(std::uint64_t offset, const ArrayDimensions& dims) {
    if (offset >= dims.countAllElements()) {
        throwTooFewIndices();
    }
}

} // namespace

std::uint64_t ArrayIndexing::CalculateDimStrideRowMajor(std::uint64_t dimension,
                                                        const ArrayDimensions& dims) {
    if (dimension >= dims.numberOfDimensions()) {
        return 0;
    }
    return std::accumulate(dims.begin() + static_cast<std::ptrdiff_t>(dimension) + 1, dims.end(),
                           std::uint64_t{1}, details::saturatingProduct);
}

std::uint64_t ArrayIndexing::CalculateDimStrideColumnMajor(std::uint64_t dimension,
                                                           const ArrayDimensions& dims) {
    if (dimension >= dims.numberOfDimensions()) {
        return 0;
    }
    return std::accumulate(dims.begin(), dims.begin() + static_cast<std::ptrdiff_t>(dimension),
                           std::uint64_t{1}, details::saturatingProduct);
}

void ArrayIndexing::CalculateOffsetRowMajor(std::uint64_t* offset, const std::vector<std::uint64_t>& indices,
                                            const ArrayDimensions& dims, bool check) {
    *offset = offsetOf(indices, dims, RowMajor, check);
}

void ArrayIndexing::CalculateOffsetColumnMajor(std::uint64_t* offset,
                                               const std::vector<std::uint64_t>& indices,
                                               const ArrayDimensions& dims, bool check) {
    *offset = offsetOf(indices, dims, ColumnMajor, check);
}

void ArrayIndexing::CalculateIndicesRowMajor(std::vector<std::uint64_t>& indices, std::uint64_t offset,
                                             const ArrayDimensions& dims, bool check) {
    indices.clear();
    if (check) {
        requireOffsetInside(offset, dims);
    }
    // Each stride stands in the place of the index that replaces it.
    writeStrides(indices, dims, RowMajor);
    for (std::uint64_t& index : indices) {
        const std::uint64_t stride = index;
        index = stride == 0 ? 0 : offset / stride;
        offset = stride == 0 ? offset : offset % stride;
    }
}

void ArrayIndexing::CalculateIndicesColumnMajor(std::vector<std::uint64_t>& indices, std::uint64_t offset,
                                                const ArrayDimensions& dims, bool check) {
    indices.clear();
    if (check) {
        requireOffsetInside(offset, dims);
    }
    writeStrides(indices, dims, ColumnMajor);
    for (std::uint64_t i = indices.size(); i-- > 0;) {
        const std::uint64_t stride = indices[i];
        const bool divides = stride != 0 && dims[i] > 1;
        indices[i] = divides ? offset / stride : 0;
        offset = divides ? offset % stride : offset;
    }
}

std::vector<std::uint64_t> details::stridesOf(const ArrayDimensions& dims, DataOrdering ordering) {
    std::vector<std::uint64_t> strides;
    writeStrides(strides, dims, ordering);
    return strides;
}

} // namespace Zelm
