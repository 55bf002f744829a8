#include <zelm/variant/MutableVariant.h>

#include <zelm/variant/NullVariantStorage.h>
#include <zelm/variant/VariantAccess.h>

#include <stdexcept>

namespace Zelm {

using details::VariantAccess;

MutableVariant MutableVariant::createWithAllocatedArrayOfWellKnownType(WellKnownType type,
                                                                       ArrayDimensions dimensions,
                                                                       DataOrdering ordering) {
    MutableVariant created;
    details::visitElementType(type, [&](auto tag) {
        using T = typename decltype(tag)::type;
        std::vector<details::StoredElement<T>> elements(dimensions.countAllElements());
        VariantAccess::install<T>(created,
                                  details::makeStorage<T>(std::move(elements), dimensions, ordering));
    });
    return created;
}

MutableVariant::MutableVariant() noexcept
    : storage(details::sharedNullStorage()), compare(&details::compareNullStorages) {}

MutableVariant::MutableVariant(Variant&& source) {
    if (!source.storage || details::ownsAlone(source.storage)) {
        storage = std::move(source.storage);
        compare = std::exchange(source.compare, nullptr);
    } else {
        storage.reset(source.storage->clone());
        compare = source.compare;
    }
}

ArrayDimensions MutableVariant::dimensions() const {
    return VariantAccess::shape(*this);
}

DataOrdering MutableVariant::dataOrdering() const {
    return storage ? storage->dataOrdering() : RowMajor;
}

WellKnownType MutableVariant::wellKnownType() const {
    return storage ? storage->wellKnownType() : WellKnownType();
}

template <class T, class>
T& MutableVariant::element(std::vector<std::uint64_t> indices) {
    if (storage && storage->wellKnownType().isUnknown()) {
        throw std::invalid_argument("Cannot access element of null variant");
    }
    if (!VariantAccess::typed<T>(*this)) {
        details::throwWrongDataType();
    }
    return *static_cast<T*>(storage->element(std::move(indices)));
}

void MutableVariant::setElementByVariant(std::vector<std::uint64_t> indices, Variant value) {
    if (!VariantAccess::shape(value).isScalar()) {
        throw std::invalid_argument("setElementByVariant: argument must be scalar");
    }
    const bool known = details::visitElementType(wellKnownType(), [&](auto tag) {
        using T = typename decltype(tag)::type;
        setElement<T>(std::move(indices), value.value<T>());
    });
    if (!known) {
        throw std::invalid_argument("setElementByVariant: argument must be well-known type");
    }
}

void MutableVariant::assignSlice(const std::vector<IndexSet>& indexSets, Variant value) {
    VariantAccess::assignSlice(storage, indexSets, std::move(value));
}

#define ZELM_INSTANTIATE(type, Name, value, keyword)                                                         \
    template type& MutableVariant::element<type>(std::vector<std::uint64_t>);
ZELM_FOR_EACH_ELEMENT_TYPE(ZELM_INSTANTIATE)
#undef ZELM_INSTANTIATE

} // namespace Zelm
