#include <zelm/variant/VariantElementIterator.h>

namespace Zelm::details {

std::uint64_t columnMajorOffsetAt(std::uint64_t position, const ArrayDimensions& dims) noexcept {
    if (dims.isEmpty()) {
        return 0;
    }
    std::uint64_t stride = dims.countAllElements();
    std::uint64_t offset = 0;
    for (std::uint64_t d = dims.numberOfDimensions(); d > 0; --d) {
        const std::uint64_t extent = dims[d - 1];
        stride /= extent;
        offset += position % extent * stride;
        position /= extent;
    }
    return offset;
}

std::uint64_t rowMajorOffsetAt(std::uint64_t position, const ArrayDimensions& dims) noexcept {
    if (dims.isEmpty()) {
        return 0;
    }
    std::uint64_t stride = dims.countAllElements();
    std::uint64_t offset = 0;
    for (const std::uint64_t extent : dims) {
        stride /= extent;
        offset += position % extent * stride;
        position /= extent;
    }
    return offset;
}

} // namespace Zelm::details
