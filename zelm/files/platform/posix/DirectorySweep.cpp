#include <zelm/files/platform/Platform.h>
#include <zelm/files/platform/posix/FileDescriptor.h>
#include <zelm/files/platform/posix/SystemText.h>

#include <algorithm>
#include <climits>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
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
Directory openDirectory(int parent, const char* name) {
    FileDescriptor file(::openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    Directory directory(file.isOpen() ? ::fdopendir(file.get()) : nullptr);
    if (directory) {
        file.release();
    }
    return directory;
}

bool isForeignLink(const struct ::stat& status) {
    return S_ISLNK(status.st_mode) && status.st_uid != ::geteuid() && status.st_uid != 0;
}

/// A directory for use as a parent, -1 if there is none or a foreign link. A link is read through the file
/// that was judged, since another one could take its place in the meantime.
int openLevel(int parent, const char* name) {
    FileDescriptor found(::openat(parent, name, O_PATH | O_NOFOLLOW | O_CLOEXEC));
    struct ::stat status;
    if (!found.isOpen() || ::fstat(found.get(), &status) != 0 || isForeignLink(status)) {
        return -1;
    }
    if (!S_ISLNK(status.st_mode)) {
        return found.release();
    }
    char target[PATH_MAX];
    const ssize_t length = ::readlinkat(found.get(), "", target, sizeof target - 1);
    target[std::max<ssize_t>(length, 0)] = '\0';
    return ::openat(parent, target, O_PATH | O_CLOEXEC);
}

/// Null if there is none, or the way there goes through a foreign link.
Directory openBelow(int parent, std::string_view levels) {
    levels.remove_prefix(std::min(levels.find_first_not_of('/'), levels.size()));
    if (levels.empty()) {
        return openDirectory(parent, ".");
    }
    const std::string name(levels.substr(0, levels.find('/')));
    const FileDescriptor level(openLevel(parent, name.c_str()));
    return openBelow(level.get(), levels.substr(name.size()));
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
            if (const Directory inner = openDirectory(parent, name.c_str())) {
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
    return ::lstat(SystemText(path).c_str(), &status) == 0 && isForeignLink(status);
}

void removeEntries(const FilesystemPath& trusted, const FilesystemPath& directory,
                   bool (*isWanted)(std::string_view name)) {
    const SystemText start(trusted), whole(directory);
    const FileDescriptor parent(::open(start.c_str(), O_PATH | O_CLOEXEC));
    if (const Directory opened = openBelow(parent.get(), whole.view().substr(start.view().size()))) {
        removeEntriesOf(opened.get(), isWanted, 1);
    }
}

} // namespace Zelm::details::platform
