#include <zelm/variant/AbstractVariantStorage.h>

#include <atomic>

#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define ZELM_THREAD_SANITIZER
#endif
#elif defined(__SANITIZE_THREAD__)
#define ZELM_THREAD_SANITIZER
#endif

namespace Zelm::details {

AbstractVariantStorage::~AbstractVariantStorage() = default;

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

} // namespace Zelm::details
