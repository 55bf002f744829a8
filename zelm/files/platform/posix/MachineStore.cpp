#include <zelm/files/platform/Platform.h>
#include <zelm/files/platform/posix/FileDescriptor.h>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

namespace Zelm::details::platform {

namespace {

/// As much as a registry takes; more is a mistake or an attack.
constexpr std::size_t kMaxValueSize = std::size_t{1} << 20;

std::string& storeRoot() {
    static std::string root = "/etc/zelm/registry";
    return root;
}

/// Whether a file of this name would be an entry of the directory in which it is looked for.
bool isEntryName(std::string_view name) {
    return !name.empty() && name != "." && name != ".." &&
           name.find_first_of(std::string_view("/\0", 2)) == name.npos;
}

bool readAll(int file, ZString* value) {
    std::string text;
    char chunk[4096];
    for (;;) {
        const ssize_t count = ::read(file, chunk, sizeof chunk);
        if (count == 0) {
            *value = std::move(text);
            return true;
        }
        if (count > 0) {
            text.append(chunk, static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            return false;
        }
        if (text.size() > kMaxValueSize) {
            return false;
        }
    }
}

} // namespace

MachineStore::MachineStore(ZStringView key) {
    std::string path = storeRoot() + '\\' + std::string(key.data(), key.size());
    std::replace(path.begin(), path.end(), '\\', '/');
    handle_ = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
}

bool MachineStore::value(ZStringView name, ZString* value) const {
    const std::string entry(name.data(), name.size());
    if (handle_ < 0 || !isEntryName(entry)) {
        return false;
    }
    // A pipe would wait for its writer for ever, so it is opened without waiting and then refused.
    const FileDescriptor file(
        ::openat(handle_, entry.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct ::stat status;
    return file.isOpen() && ::fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode) &&
           readAll(file.get(), value);
}

void testing_setMachineStoreRoot(ZStringView directory) {
    storeRoot().assign(directory.data(), directory.size());
}

} // namespace Zelm::details::platform
