#include <zelm/arrays/ArrayDimensions.h>

#include <zelm/arrays/Saturating.h>

#include <algorithm>
#include <numeric>

namespace Zelm {

std::uint64_t ArrayDimensions::countAllElements() const noexcept {
    if (extents_.empty()) {
        return 0;
    }
    return std::accumulate(begin(), end(), std::uint64_t{1}, details::saturatingProduct);
}

bool ArrayDimensions::isEmpty() const noexcept {
    return extents_.empty() || std::find(begin(), end(), 0u) != end();
}

bool ArrayDimensions::isScalar() const noexcept {
    return !extents_.empty() && std::all_of(begin(), end(), [](std::uint64_t extent) { return extent == 1; });
}

bool ArrayDimensions::isVector() const noexcept {
    return !isEmpty() && std::count_if(begin(), end(), [](std::uint64_t extent) { return extent > 1; }) < 2;
}

ArrayDimensions ArrayDimensions::canonicalForm() const {
    return std::vector<std::uint64_t>(extents_.data(), extents_.data() + canonicalSize());
}

std::uint64_t ArrayDimensions::canonicalSize() const noexcept {
    if (isEmpty()) {
        return 0;
    }
    std::uint64_t size = extents_.size();
    while (size > 1 && extents_[size - 1] == 1) {
        --size;
    }
    return size;
}

bool ArrayDimensions::isEquivalentTo(const ArrayDimensions& other) const noexcept {
    const std::uint64_t size = canonicalSize();
    return size == other.canonicalSize() &&
           std::equal(extents_.data(), extents_.data() + size, other.extents_.data());
}

} // namespace Zelm
