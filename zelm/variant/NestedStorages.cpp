#include <zelm/variant/NestedStorages.h>

#include <zelm/variant/VariantAccess.h>

#include <memory>
#include <new>
#include <utility>

namespace Zelm::details {

namespace {

using Pending = std::vector<std::shared_ptr<AbstractVariantStorage>>;

void detach(Variant& value, Pending& pending) {
    std::shared_ptr<AbstractVariantStorage>& storage = VariantAccess::storage(value);
    if (!storage) {
        return;
    }
    const WellKnownType type = storage->wellKnownType();
    const bool canNest = type == WellKnownType::Cell() || type == WellKnownType::Struct();
    if (canNest && ownsAlone(storage)) {
        pending.push_back(std::move(storage));
    }
}

void detachAll(std::vector<Variant>& elements, Pending& pending) {
    for (Variant& element : elements) {
        detach(element, pending);
    }
}

void detachAll(std::vector<Struct>& elements, Pending& pending) {
    for (Struct& element : elements) {
        for (auto& field : VariantAccess::fields(element)) {
            detach(*field.second, pending);
        }
    }
}

void detachAll(AbstractVariantStorage& storage, Pending& pending) {
    if (auto* cells = storageOf<Variant>(&storage)) {
        detachAll(cells->elements(), pending);
    } else if (auto* structs = storageOf<Struct>(&storage)) {
        detachAll(structs->elements(), pending);
    }
}

/// The storages that are taken out hold nothing nested when their own destructor comes.
template <class Element>
void releaseAll(std::vector<Element>& elements) noexcept {
    Pending pending;
    try {
        detachAll(elements, pending);
        while (!pending.empty()) {
            const std::shared_ptr<AbstractVariantStorage> storage = std::move(pending.back());
            pending.pop_back();
            detachAll(*storage, pending);
        }
    } catch (const std::bad_alloc&) {}
}

} // namespace

void releaseNested(std::vector<Variant>& elements) noexcept {
    releaseAll(elements);
}

void releaseNested(std::vector<Struct>& elements) noexcept {
    releaseAll(elements);
}

} // namespace Zelm::details
