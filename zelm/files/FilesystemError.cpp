#include <zelm/files/FilesystemError.h>

namespace Zelm {

FilesystemError::FilesystemError(const char* text, std::error_code code)
    : std::filesystem::filesystem_error(text, code), text_(text) {}

FilesystemError::FilesystemError(const char* text, const FilesystemPath& path, std::error_code code)
    : std::filesystem::filesystem_error(text, path, code), text_(text) {}

FilesystemError::FilesystemError(const char* text, const FilesystemPath& from, const FilesystemPath& to,
                                 std::error_code code)
    : std::filesystem::filesystem_error(text, from, to, code), text_(text) {}

} // namespace Zelm
