#include <zelm/variant/VectorVariantStorageImpl.h>

#include <stdexcept>

namespace Zelm::details {

void throwDimensionsDontMatchSize() {
    throw std::length_error("Dimensions don't match size");
}

void throwIncompatibleDataForAppend() {
    throw std::invalid_argument("Incompatible data for append");
}

void throwCannotAssignToDifferentDimensions() {
    throw std::length_error("Cannot assign to diffent dimensions");
}

void requireInside(const SlicePlan& plan, std::size_t count) {
    if (plan.size() > 0 && plan.largestOffset() >= count) {
        throwOffsetOutOfBounds();
    }
}

} // namespace Zelm::details
