#include <tree/AllocationCount.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<int> s_count{0};

} // namespace

int Zelm::Testing::allocationCount() {
    return s_count;
}

void* operator new(std::size_t size) {
    ++s_count;
    if (void* memory = std::malloc(size ? size : 1)) {
        return memory;
    }
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
