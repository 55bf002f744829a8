#include <zelm/variant/VariantAccess.h>

#include <stdexcept>

namespace Zelm::details {

void throwWrongDataType() {
    throw std::invalid_argument("Wrong data type");
}

const ArrayDimensions& VariantAccess::emptyShape() {
    static const ArrayDimensions empty;
    return empty;
}

void VariantAccess::convert(Variant& value, WellKnownType type, StorageComparison* comparison) {
    if (!value.storage) {
        throwWrongDataType();
    }
    if (value.storage->wellKnownType() != type) {
        value.storage = value.storage->convertTo(type, CheckAlways);
        value.compare = comparison;
    }
}

std::shared_ptr<AbstractVariantStorage>
VariantAccess::writable(const std::shared_ptr<AbstractVariantStorage>& storage) {
    return ownsAlone(storage) ? storage : std::shared_ptr<AbstractVariantStorage>(storage->clone());
}

void VariantAccess::assignSlice(std::shared_ptr<AbstractVariantStorage>& storage,
                                const std::vector<IndexSet>& indexSets, Variant value) {
    if (storage) {
        std::shared_ptr<AbstractVariantStorage> target = writable(storage);
        target->assignSlice(indexSets, target, std::move(value));
        storage = std::move(target);
    }
}

} // namespace Zelm::details
