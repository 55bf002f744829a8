#include <zelm/files/platform/Platform.h>
#include <zelm/files/platform/posix/FileDescriptor.h>
#include <zelm/files/platform/posix/SystemText.h>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <memory>
#include <vector>

namespace Zelm::details::platform {

namespace {

/// Each level holds a file open and a piece of the stack, and others choose how many there are.
constexpr int kMaxDepth = 256;

struct CloseDirectory {
    void operator()(DIR* directory) const noexcept { ::closedir(directory); }
};
using Directory = std::unique_ptr<DIR, CloseDirectory>;

/// Null if there is none, or a link.
Directory openDirectory(int parent, const char* name, int flags) {
    FileDescriptor file(::openat(parent, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC | flags));
    Directory directory(file.isOpen() ? ::fdopendir(file.get()) : nullptr);
    if (directory) {
        file.release();
    }
    return directory;
}

/// The names are listed before any entry goes, since removing disturbs the listing on some file systems.
std::vector<std::string> entriesOf(DIR* directory, bool (*isWanted)(std::string_view)) {
    std::vector<std::string> names;
    while (const dirent* entry = ::readdir(directory)) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != ".." && isWanted(name)) {
            names.emplace_back(name);
        }
    }
    return names;
}

/// Whatever is looked at is named by its open parent, so that no link put in place meanwhile leads away.
void removeEntriesOf(DIR* directory, bool (*isWanted)(std::string_view), int depth) {
    const int parent = ::dirfd(directory);
    for (const std::string& name : entriesOf(directory, isWanted)) {
        if (::unlinkat(parent, name.c_str(), 0) == 0) {
            continue;
        }
        if (depth < kMaxDepth) {
            if (const Directory inner = openDirectory(parent, name.c_str(), O_NOFOLLOW)) {
                removeEntriesOf(
                    inner.get(), [](std::string_view) { return true; }, depth + 1);
            }
        }
        static_cast<void>(::unlinkat(parent, name.c_str(), AT_REMOVEDIR));
    }
}

} // namespace

bool isForeignLink(const FilesystemPath& path) {
    struct ::stat status;
    return ::lstat(SystemText(path).c_str(), &status) == 0 && S_ISLNK(status.st_mode) &&
           status.st_uid != ::geteuid() && status.st_uid != 0;
}

void removeEntries(const FilesystemPath& directory, bool (*isWanted)(std::string_view name)) {
    if (const Directory opened = openDirectory(AT_FDCWD, SystemText(directory).c_str(), 0)) {
        removeEntriesOf(opened.get(), isWanted, 1);
    }
}

} // namespace Zelm::details::platform
