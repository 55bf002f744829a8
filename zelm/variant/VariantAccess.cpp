#include <zelm/variant/VariantAccess.h>

#include <atomic>
#include <stdexcept>

#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define ZELM_THREAD_SANITIZER
#endif
#elif defined(__SANITIZE_THREAD__)
#define ZELM_THREAD_SANITIZER
#endif

namespace Zelm::details {

bool ownsAlone(const std::shared_ptr<AbstractVariantStorage>& storage) noexcept {
    if (storage.use_count() != 1) {
        return false;
    }
    // The count is read without any order. What the last other owner read has to happen before our writes.
#ifdef ZELM_THREAD_SANITIZER
    // It does not know fences; a share that is taken and given back has the same effect.
    const std::shared_ptr<AbstractVariantStorage> share(storage);
#else
    std::atomic_thread_fence(std::memory_order_acquire);
#endif
    return true;
}

const ArrayDimensions& shapeOf(const AbstractVariantStorage* storage) noexcept {
    static const ArrayDimensions empty;
    const ArrayDimensions* shape = &empty;
    if (storage) {
        visitStorage(*storage, [&shape](const auto& typed) { shape = &typed.shape(); });
    }
    return *shape;
}

std::size_t elementCountOf(const AbstractVariantStorage& storage) noexcept {
    std::size_t count = 0;
    visitStorage(storage, [&count](const auto& typed) { count = typed.elements().size(); });
    return count;
}

void throwOffsetOutOfBounds() {
    throw std::out_of_range("Offset out of bounds");
}

void throwWrongDataType() {
    throw std::invalid_argument("Wrong data type");
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
