#include <zelm/variant/VectorVariantStorageImpl.h>

#include <stdexcept>

namespace Zelm::details {

void throwOffsetOutOfBounds() {
    throw std::out_of_range("Offset out of bounds");
}

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

const ArrayDimensions& shapeOf(const AbstractVariantStorage& storage) {
    static const ArrayDimensions empty;
    const ArrayDimensions* shape = &empty;
    visitStorage(storage, [&shape](const auto& typed) { shape = &typed.shape(); });
    return *shape;
}

std::size_t elementCountOf(const AbstractVariantStorage& storage) {
    std::size_t count = 0;
    visitStorage(storage, [&count](const auto& typed) { count = typed.elements().size(); });
    return count;
}

} // namespace Zelm::details
