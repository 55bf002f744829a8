#include <zelm/variant/NullVariantStorage.h>

#include <zelm/variant/VariantAccess.h>

#include <stdexcept>

namespace Zelm::details {

namespace {

/// Initialised as a constant and never destroyed: static objects of any source may hold null values.
union EternalNullStorage {
    constexpr EternalNullStorage() noexcept : storage() {}
    ~EternalNullStorage() {}

    NullVariantStorage storage;
};

EternalNullStorage s_null;

} // namespace

std::shared_ptr<AbstractVariantStorage> sharedNullStorage() noexcept {
    return {std::shared_ptr<AbstractVariantStorage>(), &s_null.storage};
}

void NullVariantStorage::setDimensions(ArrayDimensions dimensions) {
    if (!dimensions.isEmpty()) {
        throw std::invalid_argument("Cannot set non-empty ArrayDimensions in NulLVariantStorage");
    }
}

std::unique_ptr<AbstractVariantStorage> NullVariantStorage::convertTo(WellKnownType type,
                                                                      ConversionPolicy) const {
    std::unique_ptr<AbstractVariantStorage> result;
    const bool known = visitElementType(type, [&result](auto tag) {
        result = std::make_unique<VectorVariantStorage<typename decltype(tag)::type>>();
    });
    if (!known) {
        throw std::invalid_argument("Cannot convert data into new storage, destination type unknown");
    }
    return result;
}

void NullVariantStorage::assignSlice(const std::vector<IndexSet>&, std::shared_ptr<AbstractVariantStorage>,
                                     Variant) {}

} // namespace Zelm::details
