#include <zelm/variant/Variant.h>

#include <zelm/arrays/SlicePlan.h>
#include <zelm/variant/Conversion.h>
#include <zelm/variant/NullVariantStorage.h>
#include <zelm/variant/VariantAccess.h>

#include <stdexcept>

namespace Zelm {

using details::AbstractVariantStorage;
using details::VariantAccess;

namespace {

template <class T>
T firstElement(const details::VectorVariantStorage<T>& storage) {
    if (storage.elements().empty()) {
        details::throwOffsetOutOfBounds();
    }
    return storage.elements().front();
}

bool isSoundScalar(const AbstractVariantStorage& storage) {
    return details::elementCountOf(storage) == 1 && details::shapeOf(&storage).isScalar();
}

/// The elements of a slice, and the shape, which is taken from the plan.
template <class T>
Variant selected(const Variant& value, details::SlicePlan& plan) {
    const details::VectorVariantStorage<T>& source = *VariantAccess::typed<T>(value);
    auto elements = source.select(plan);
    return VariantAccess::make<T>(std::move(elements), std::move(plan).dimensions(), source.dataOrdering());
}

} // namespace

Variant::Variant() noexcept : storage(details::sharedNullStorage()), compare(&details::compareNullStorages) {}

Variant::Variant(MutableVariant&& value) noexcept
    : storage(std::move(value.storage)), compare(std::exchange(value.compare, nullptr)) {}

ArrayDimensions Variant::dimensions() const {
    return VariantAccess::shape(*this);
}

DataOrdering Variant::dataOrdering() const {
    return storage ? storage->dataOrdering() : RowMajor;
}

WellKnownType Variant::wellKnownType() const {
    return storage ? storage->wellKnownType() : WellKnownType();
}

template <class T, class>
T Variant::value() const {
    if (const auto* typed = VariantAccess::typed<T>(*this)) {
        return firstElement(*typed);
    }
    if (storage && isSoundScalar(*storage)) {
        return details::convertedScalar<T>(*storage);
    }
    Variant converted(*this);
    VariantAccess::convert<T>(converted);
    return firstElement(*VariantAccess::typed<T>(converted));
}

Variant Variant::convertedTo(WellKnownType type) const {
    Variant converted(*this);
    const bool known = details::visitElementType(
        type, [&converted](auto tag) { VariantAccess::convert<typename decltype(tag)::type>(converted); });
    if (!known) {
        throw std::invalid_argument("Cannot convert to non-well-known type");
    }
    return converted;
}

Variant Variant::slice(const std::vector<IndexSet>& indexSets) const {
    const DataOrdering ordering = dataOrdering();
    details::SlicePlan plan(indexSets, VariantAccess::shape(*this), ordering, ordering);
    Variant (*make)(const Variant&, details::SlicePlan&) = nullptr;
    if (plan.isValid()) {
        details::visitElementType(wellKnownType(),
                                  [&make](auto tag) { make = &selected<typename decltype(tag)::type>; });
    }
    if (!make) {
        throw std::invalid_argument("Array slice invalid");
    }
    return make(*this, plan);
}

void Variant::assignSlice(const std::vector<IndexSet>& indexSets, Variant value) {
    VariantAccess::assignSlice(storage, indexSets, std::move(value));
}

void Variant::append(Variant other) {
    if (VariantAccess::shape(*this).isEmpty()) {
        storage = other.storage ? std::move(other.storage) : details::sharedNullStorage();
        return;
    }
    std::shared_ptr<AbstractVariantStorage> target = VariantAccess::writable(storage);
    target->append(std::move(other.storage));
    storage = std::move(target);
}

#define ZELM_INSTANTIATE(type, Name, value_, keyword) template type Variant::value<type>() const;
ZELM_FOR_EACH_ELEMENT_TYPE(ZELM_INSTANTIATE)
#undef ZELM_INSTANTIATE

} // namespace Zelm
