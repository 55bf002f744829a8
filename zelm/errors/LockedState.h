#pragma once

#include <cassert>
#include <mutex>
#include <system_error>

namespace Zelm::details {

/// The one `State` of the process behind its mutex: whoever needs the state makes a LockedState and has it
/// for as long as that lives. A thread that has it already would wait for itself for ever; debug builds
/// assert, others throw.
template <class State>
class LockedState {
public:
    LockedState() : lock_(mutexNotHeldHere()) { s_heldHere = true; }
    ~LockedState() { s_heldHere = false; }
    LockedState(const LockedState&) = delete;
    LockedState& operator=(const LockedState&) = delete;

    State* operator->() const noexcept { return &shared().state; }

    /// Makes the state if there is none yet. What is constructed later is destroyed earlier, so a static
    /// object whose constructor calls this can still have the state in its destructor.
    static void ensure() noexcept { shared(); }

private:
    struct Shared {
        std::mutex mutex;
        State state;
    };

    static Shared& shared() noexcept {
        static Shared instance;
        return instance;
    }

    static std::mutex& mutexNotHeldHere() {
        assert(!s_heldHere && "a reporter or handler must not come back here from within its own call");
        if (s_heldHere) {
            throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur));
        }
        return shared().mutex;
    }

    inline static thread_local bool s_heldHere = false;

    std::lock_guard<std::mutex> lock_;
};

} // namespace Zelm::details
