#include <zelm/files/FileOperations.h>
#include <zelm/files/Utf8Files.h>
#include <zelm/files/platform/Platform.h>
#include <zelm/text/TextConversions.h>

namespace Zelm {

namespace {

/// What a call of the C library would return.
template <class Action>
int resultOf(Action&& action) noexcept {
    try {
        return action() ? 0 : -1;
    } catch (...) {
        return -1;
    }
}

} // namespace

ZString fixFilenameSlashes(const ZString& name) {
    return name.replace("/", "\\");
}

int access_utf8(const ZString& name, int mode) {
    return details::platform::access(ZPath(name), mode);
}

int chmod_utf8(const ZString& name, int mode) {
    return details::platform::chmod(ZPath(name), mode);
}

int stat_utf8(const ZString& name, _stat64i32* status) {
    return details::platform::stat(ZPath(name), status);
}

int open_utf8(const ZString& name, int oflag, int pmode) {
    return details::platform::open(ZPath(name), oflag, pmode);
}

std::FILE* freopen_utf8(const ZString& name, const ZString& mode, std::FILE* file) {
    return details::platform::freopen(ZPath(name), convertZStringToUtf16(mode), file);
}

int chdir_utf8(const ZPath& path) {
    return details::platform::chdir(path);
}

int mkdir_utf8(const ZString& name) noexcept {
    return resultOf([&] { return ZPath(name).create_directory(); });
}

int mkpath_utf8(const ZString& name) noexcept {
    return resultOf([&] { return ZPath(name).create_directories(); });
}

int rmdir_utf8(const ZString& name) noexcept {
    return resultOf([&] { return ZPath(name).delete_directory(); });
}

int unlink_utf8(const ZString& name) noexcept {
    return resultOf([&] { return ZPath(name).delete_file(); });
}

int remove_utf8(const ZString& name) noexcept {
    return unlink_utf8(name);
}

int rename_utf8(const ZString& from, const ZString& to) noexcept {
    return resultOf([&] {
        details::renamePath(ZPath(from), ZPath(to));
        return true;
    });
}

std::size_t filesize_utf8(const ZString& name) noexcept {
    try {
        return static_cast<std::size_t>(details::fileSize(ZPath(name)));
    } catch (...) {
        return 0;
    }
}

ZString getcwd_utf8() {
    return ZPath::current_path().native();
}

} // namespace Zelm
