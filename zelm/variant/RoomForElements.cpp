#include <zelm/variant/RoomForElements.h>

#include <cstdint>

#ifdef __linux__
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace Zelm::details {

void requestLargePages([[maybe_unused]] void* memory, [[maybe_unused]] std::size_t bytes) noexcept {
#ifdef __linux__
    // One large page of the usual size lies inside at this size every other time, at 4 MB always.
    constexpr std::size_t kWorthTheCall = std::size_t{3} << 20;
    if (bytes < kWorthTheCall) {
        return;
    }
    // Inner pages alone: what the neighbours in memory are backed by is not ours to say.
    static const auto page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
    const std::uintptr_t begin = reinterpret_cast<std::uintptr_t>(memory);
    const std::uintptr_t before = (page - begin % page) % page;
    const std::uintptr_t inner = (bytes - before) / page * page;
    ::madvise(static_cast<unsigned char*>(memory) + before, inner, MADV_HUGEPAGE);
#endif
}

} // namespace Zelm::details
