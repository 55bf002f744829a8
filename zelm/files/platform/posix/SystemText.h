#pragma once

#include <zelm/files/FilesystemPath.h>

#include <string>
#include <string_view>

namespace Zelm::details::platform {

/// A path as the calls of this system take it: UTF-8, NUL-terminated, with forward slashes. Empty, which no
/// file is called, for a path that can name nothing here: one with a root name, a NUL or a surrogate alone.
/// Paths of usual lengths cost no allocation.
class SystemText {
public:
    explicit SystemText(const FilesystemPath& path);
    SystemText(const SystemText&) = delete;
    SystemText& operator=(const SystemText&) = delete;

    const char* c_str() const noexcept { return text_; }
    std::string_view view() const noexcept { return {text_, size_}; }

private:
    char buffer_[1024];
    std::string long_;
    char* text_ = buffer_;
    std::size_t size_ = 0;
};

} // namespace Zelm::details::platform
