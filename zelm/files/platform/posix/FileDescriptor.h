#pragma once

#include <unistd.h>

#include <utility>

namespace Zelm::details::platform {

/// Closes the file that it holds.
class FileDescriptor {
public:
    /// Takes over what `open` gave, a failure too.
    explicit FileDescriptor(int value) noexcept : value_(value) {}
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor() {
        if (isOpen()) {
            ::close(value_);
        }
    }

    bool isOpen() const noexcept { return value_ >= 0; }
    int get() const noexcept { return value_; }
    int release() noexcept { return std::exchange(value_, -1); }

private:
    int value_;
};

} // namespace Zelm::details::platform
