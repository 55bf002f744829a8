#pragma once

#include <zelm/Export.h>
#include <zelm/files/FilesystemPath.h>

#include <filesystem>
#include <string>
#include <system_error>

namespace Zelm {

/// A failed operation on files, with fixed texts that do not depend on the standard library's wording, such
/// as "remove(p): invalid argument". The paths and the code are those of the operation.
class ZELM_EXPORT FilesystemError : public std::filesystem::filesystem_error {
public:
    FilesystemError(const char* text, std::error_code code);
    FilesystemError(const char* text, const FilesystemPath& path, std::error_code code);
    FilesystemError(const char* text, const FilesystemPath& from, const FilesystemPath& to,
                    std::error_code code);

    /// The text alone.
    const char* what() const noexcept override { return text_; }

private:
    /// A string literal.
    const char* text_;
};

} // namespace Zelm
