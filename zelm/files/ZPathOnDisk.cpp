#include <zelm/files/FileOperations.h>
#include <zelm/files/ZPath.h>
#include <zelm/files/platform/Platform.h>
#include <zelm/text/TextConversions.h>

namespace Zelm {

using std::filesystem::file_type;

namespace {

constexpr int kMayWrite = 2;
constexpr int kMayRead = 4;

bool isThere(file_type type) noexcept {
    return type != file_type::not_found && type != file_type::unknown;
}

} // namespace

bool ZPath::exists() const {
    return isThere(details::platform::fileType(path_));
}

bool ZPath::is_directory() const {
    return details::platform::fileType(path_) == file_type::directory;
}

bool ZPath::is_regular_file() const {
    return details::platform::fileType(path_) == file_type::regular;
}

bool ZPath::is_readable() const {
    return details::platform::access(path_, kMayRead) == 0;
}

bool ZPath::is_writable() const {
    return details::platform::access(path_, kMayWrite) == 0;
}

bool ZPath::equivalent(const ZPath& other) {
    if (equal_filenames(complete_path(), other.complete_path())) {
        return true;
    }
    try {
        return details::areEquivalent(path_, other.path_);
    } catch (...) {
        return false;
    }
}

bool ZPath::create_directory() const {
    if (is_directory()) {
        return true;
    }
    details::createDirectory(path_);
    return is_directory();
}

bool ZPath::create_directories() const {
    if (is_directory()) {
        return true;
    }
    details::createDirectories(path_);
    return is_directory();
}

bool ZPath::delete_directory() const {
    return is_directory() && details::removePath(path_);
}

bool ZPath::delete_file() const {
    const file_type type = details::platform::fileType(path_);
    return isThere(type) && type != file_type::directory && details::removePath(path_);
}

bool ZPath::delete_file_or_directory() const {
    return exists() && details::removePath(path_);
}

bool ZPath::removeAllFilesDirectoriesRecursively() const {
    details::removeAll(path_);
    return false;
}

void ZPath::rename(const ZPath& to) const {
    details::renamePath(path_, to.path_);
}

std::uintmax_t ZPath::file_size() const {
    return details::fileSize(path_);
}

std::FILE* ZPath::fopen(const char* mode) const {
    return details::platform::fopen(path_, convertZStringToUtf16(mode));
}

ZPath ZPath::current_path() {
    return from_fs_path(details::currentPath());
}

} // namespace Zelm
