#pragma once

#include <zelm/Export.h>

#include <atomic>
#include <cstdint>

namespace Zelm {

template <class Derived, class State>
class ZEntity;
template <class T>
class ZObserverEntity;

namespace Private {

/// Whether an entity is clean, dirty, or being updated, and how many updates have begun. Marks may come from
/// any thread.
class ZELM_EXPORT ZDirty {
public:
    /// 0 clean, -1 dirty, 1 updating.
    int getDirtyState() const noexcept { return dirtyState_.load(std::memory_order_relaxed); }
    int getUpdateCount() const noexcept { return updateCount_.load(std::memory_order_relaxed); }
    bool isClean() const noexcept { return getDirtyState() == kClean; }
    bool isDirty() const noexcept { return getDirtyState() == kDirty; }
    bool isUpdating() const noexcept { return getDirtyState() == kUpdating; }

    /// Marks a clean or dirty state dirty and returns `true`. Returns `false` during an update, so that a
    /// recalculation cannot mark itself through what it notifies; an update that another thread begins within
    /// the call is overwritten.
    bool try_makeDirty() noexcept {
        if (isUpdating()) {
            return false;
        }
        setDirty();
        return true;
    }

protected:
    void setClean() noexcept { dirtyState_.exchange(kClean); }
    void setDirty() noexcept { dirtyState_.exchange(kDirty); }
    /// From dirty to updating, counting the update; from any other state nothing. Of several threads only one
    /// gets through.
    void setUpdating() noexcept {
        std::int32_t expected = kDirty;
        if (dirtyState_.compare_exchange_strong(expected, kUpdating)) {
            updateCount_.fetch_add(1);
        }
    }

private:
    template <class Derived, class State>
    friend class Zelm::ZEntity;
    template <class T>
    friend class Zelm::ZObserverEntity;

    static constexpr std::int32_t kClean = 0;
    static constexpr std::int32_t kDirty = -1;
    static constexpr std::int32_t kUpdating = 1;

    std::atomic<std::int32_t> dirtyState_{kClean};
    std::atomic<std::int32_t> updateCount_{0};
};

static_assert(sizeof(ZDirty) == 2 * sizeof(std::int32_t), "two plain words");

} // namespace Private

} // namespace Zelm
