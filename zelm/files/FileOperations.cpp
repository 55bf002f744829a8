#include <zelm/files/FileOperations.h>
#include <zelm/files/FilesystemError.h>
#include <zelm/files/platform/Platform.h>

#include <cstddef>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

namespace Zelm::details {

namespace {

void check(std::error_code code, const char* text, const FilesystemPath& path) {
    if (code) {
        throw FilesystemError(text, path, code);
    }
}

void check(std::error_code code, const char* text, const FilesystemPath& a, const FilesystemPath& b) {
    if (code) {
        throw FilesystemError(text, a, b, code);
    }
}

/// A failure to make a directory counts unless something else has its name.
void checkMade(std::error_code code, const char* text, const FilesystemPath& path) {
    if (code && !platform::isSomethingAt(path)) {
        throw FilesystemError(text, path, code);
    }
}

/// A path that the system has told.
FilesystemPath told(const std::filesystem::path& path, std::error_code code, const char* text) {
    if (std::optional<FilesystemPath> result = platform::pathFromSystem(path); result && !code) {
        return *std::move(result);
    }
    throw FilesystemError(text, code ? code : std::make_error_code(std::errc::illegal_byte_sequence));
}

/// Without the elements "." at the end, a separator at the end among them: behind them a link counts as what
/// it leads to.
FilesystemPath withoutFinalDots(const FilesystemPath& path) {
    std::size_t end = path.rootPathView().size();
    for (auto element = path.beginBehindRoot(); element != path.end(); ++element) {
        if (const std::u16string_view name = *element; name != u".") {
            end = static_cast<std::size_t>(name.data() + name.size() - path.native().data());
        }
    }
    return end > 0 ? FilesystemPath(std::u16string_view(path.native()).substr(0, end)) : path;
}

} // namespace

void createDirectory(const FilesystemPath& path) {
    std::error_code code;
    std::filesystem::create_directory(platform::systemPath(path), code);
    checkMade(code, "create_directory(p): invalid argument", path);
}

void createDirectories(const FilesystemPath& path) {
    std::error_code code;
    std::filesystem::create_directories(platform::systemPath(path), code);
    checkMade(code, "create_directories(p): invalid argument", path);
}

bool removePath(const FilesystemPath& path) {
    std::error_code code;
    const bool removed = std::filesystem::remove(platform::systemPath(path), code);
    check(code, "remove(p): invalid argument", path);
    return removed;
}

void removeAll(const FilesystemPath& path) {
    std::error_code code;
    std::filesystem::remove_all(platform::systemPath(withoutFinalDots(path)), code);
    check(code, "remove_all(p): invalid argument", path);
}

void renamePath(const FilesystemPath& from, const FilesystemPath& to) {
    std::error_code code;
    std::filesystem::rename(platform::systemPath(from), platform::systemPath(to), code);
    check(code, "rename(p1, p2): invalid arguments", from, to);
}

std::uintmax_t fileSize(const FilesystemPath& path) {
    std::error_code code;
    const std::uintmax_t size = std::filesystem::file_size(platform::systemPath(path), code);
    check(code, "file_size(p): invalid argument", path);
    return size;
}

bool areEquivalent(const FilesystemPath& a, const FilesystemPath& b) {
    std::error_code code;
    const bool same = std::filesystem::equivalent(platform::systemPath(a), platform::systemPath(b), code);
    check(code, "equivalent(p1, p2): invalid arguments", a, b);
    return same;
}

FilesystemPath currentPath() {
    std::error_code code;
    const std::filesystem::path path = std::filesystem::current_path(code);
    return told(path, code, "current_path(): can't get current working directory");
}

FilesystemPath temporaryDirectoryPath() {
    std::error_code code;
    const std::filesystem::path path = std::filesystem::temp_directory_path(code);
    return told(path, code, "temp_directory_path(): can't find temp directory");
}

} // namespace Zelm::details
