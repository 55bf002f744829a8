#include <zelm/files/platform/Platform.h>
#include <zelm/files/platform/posix/FileDescriptor.h>
#include <zelm/files/platform/posix/SystemText.h>
#include <zelm/text/TextConversions.h>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

namespace Zelm::details::platform {

namespace {

std::error_code lastError() {
    return {errno, std::generic_category()};
}

std::filesystem::file_type typeOf(mode_t mode) {
    using std::filesystem::file_type;
    switch (mode & S_IFMT) {
    case S_IFREG:
        return file_type::regular;
    case S_IFDIR:
        return file_type::directory;
    case S_IFCHR:
        return file_type::character;
    case S_IFBLK:
        return file_type::block;
    case S_IFIFO:
        return file_type::fifo;
    case S_IFSOCK:
        return file_type::socket;
    default:
        return file_type::unknown;
    }
}

bool isMissing(int error) {
    return error == ENOENT || error == ENOTDIR;
}

} // namespace

std::filesystem::path systemPath(const FilesystemPath& path) {
    return std::filesystem::path(SystemText(path).view());
}

std::optional<FilesystemPath> pathFromSystem(const std::filesystem::path& path) {
    std::string text = path.native();
    // More separators at the front say the same here, but not in the grammar of paths.
    const std::size_t separators = std::min(text.find_first_not_of('/'), text.size());
    text.erase(0, separators > 1 ? separators - 1 : 0);
    try {
        FilesystemPath result = FilesystemPath::fromSystem(text);
        if (SystemText(result).view() == text) {
            return result;
        }
    } catch (const std::invalid_argument&) {
        // No UTF-8.
    }
    return std::nullopt;
}

std::filesystem::file_type fileType(const FilesystemPath& path) {
    struct ::stat status;
    if (platform::stat(path, &status) == 0) {
        return typeOf(status.st_mode);
    }
    return isMissing(errno) ? std::filesystem::file_type::not_found : std::filesystem::file_type::unknown;
}

bool isSomethingAt(const FilesystemPath& path) {
    struct ::stat status;
    return ::lstat(SystemText(path).c_str(), &status) == 0;
}

int access(const FilesystemPath& path, int mode) {
    return ::access(SystemText(path).c_str(), mode);
}

int chmod(const FilesystemPath& path, int mode) {
    return ::chmod(SystemText(path).c_str(), static_cast<mode_t>(mode));
}

int stat(const FilesystemPath& path, struct ::stat* status) {
    return ::stat(SystemText(path).c_str(), status);
}

int open(const FilesystemPath& path, int flags, int mode) {
    return ::open(SystemText(path).c_str(), flags, static_cast<mode_t>(mode));
}

int chdir(const FilesystemPath& path) {
    return ::chdir(SystemText(path).c_str());
}

std::FILE* fopen(const FilesystemPath& path, const std::u16string& mode) {
    return std::fopen(SystemText(path).c_str(), convertUtf16ToZString(mode).c_str());
}

std::FILE* freopen(const FilesystemPath& path, const std::u16string& mode, std::FILE* file) {
    return std::freopen(SystemText(path).c_str(), convertUtf16ToZString(mode).c_str(), file);
}

std::filebuf* open(std::filebuf& buffer, const FilesystemPath& path, std::ios_base::openmode mode) {
    // A directory opens for reading and every read of it fails, by an exception that the stream swallows.
    if (fileType(path) == std::filesystem::file_type::directory) {
        errno = EISDIR;
        return nullptr;
    }
    return buffer.open(SystemText(path).c_str(), mode);
}

std::error_code makeDirectory(const FilesystemPath& path, unsigned permissions) {
    const SystemText text(path);
    if (::mkdir(text.c_str(), static_cast<mode_t>(permissions)) != 0) {
        return lastError();
    }
    // Gives back what the process's mask took. Where that fails, the directory has less, never more.
    const FileDescriptor directory(::open(text.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (directory.isOpen()) {
        static_cast<void>(::fchmod(directory.get(), static_cast<mode_t>(permissions)));
    }
    return {};
}

bool isPrivateDirectory(const FilesystemPath& path) {
    struct ::stat status;
    return ::lstat(SystemText(path).c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == ::geteuid() && (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

} // namespace Zelm::details::platform
