#include <zelm/text/ZString.h>

#include <new>

namespace Zelm {

namespace {

struct Block {
    Block* next;
};

#ifndef __has_feature
#define __has_feature(feature) 0
#endif
#if defined(__SANITIZE_ADDRESS__) || __has_feature(address_sanitizer)
constexpr int kMostBlocks = 0; // Every use of a Storage that is gone has to show.
#else
constexpr int kMostBlocks = 8;
#endif

/// The memory of the last few Storages that this thread has destroyed, kept for its next ones: texts that
/// come and go cost a third less than with the general allocator alone. Plain data, which needs no
/// construction and is reached without a call.
struct Kept {
    Block* first;
    int room;
    bool isOpened;
};
[[gnu::tls_model("initial-exec")]] thread_local Kept t_kept{};

/// Gives the blocks back when the thread ends; Storages that are destroyed later find no room.
struct Closing {
    ~Closing() {
        t_kept.room = 0;
        while (t_kept.first) {
            ::operator delete(std::exchange(t_kept.first, t_kept.first->next));
        }
    }
};

bool hasRoom() noexcept {
    if (!t_kept.isOpened) {
        t_kept.isOpened = true;
        t_kept.room = kMostBlocks;
        static thread_local Closing closing;
        static_cast<void>(closing);
    }
    return t_kept.room > 0;
}

} // namespace

void* ZString::Storage::operator new(std::size_t size) {
    if (!t_kept.first || size != sizeof(Storage)) {
        return ::operator new(size);
    }
    ++t_kept.room;
    return std::exchange(t_kept.first, t_kept.first->next);
}

void ZString::Storage::operator delete(void* memory, std::size_t size) noexcept {
    if ((t_kept.room == 0 && !hasRoom()) || size != sizeof(Storage)) {
        ::operator delete(memory);
        return;
    }
    --t_kept.room;
    t_kept.first = new (memory) Block{t_kept.first};
}

ZString::Storage::Storage(const Storage& other)
    : value(other.value), parent(other.parent), ref_count(other.ref_count.load()) {}

ZString::Storage& ZString::Storage::operator=(const Storage& other) {
    value = other.value;
    parent = other.parent;
    ref_count = other.ref_count.load();
    return *this;
}

void ZString::Storage::destroy(Storage* storage) noexcept {
    // A loop, since a text that is cut and materialised again and again has a chain of parents as long as
    // itself.
    do {
        Storage* const parent = std::exchange(storage->parent, nullptr);
        delete storage;
        storage = parent;
    } while (storage && storage->dropsLastRef());
}

} // namespace Zelm
