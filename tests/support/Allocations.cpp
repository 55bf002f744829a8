#include <support/Allocations.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> s_count{0};
std::atomic<long> s_failing{-1};

} // namespace

long Zelm::Testing::allocationCount() {
    return s_count;
}

void Zelm::Testing::failAllocationAfter(long count) {
    s_failing = s_count + count;
}

void* operator new(std::size_t size) {
    if (s_count++ != s_failing) {
        if (void* memory = std::malloc(size ? size : 1)) {
            return memory;
        }
    }
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
