#pragma once

#include <string>
#include <string_view>

/// The text of paths: from one encoding into another, and joined.
namespace Zelm::details {

enum class Separators { AsGiven, Turned };

/// UTF-8 to UTF-16, with '\' for '/' where separators are turned. Throws the exceptions of utf8-cpp, as
/// convertZStringToUtf16().
std::u16string decodePath(std::string_view text, Separators separators);

/// UTF-16 to UTF-8, with '/' for '\' where separators are turned. Throws `utf8::invalid_utf16` "Invalid
/// UTF-16" for a surrogate alone.
std::string encodePath(std::u16string_view text, Separators separators);

/// The same for wide characters, which hold a code point each where they have 32 bits. A surrogate alone
/// stays what it is.
std::wstring widenPath(std::u16string_view text, Separators separators);

/// Appends a path as `/=` of FilesystemPath does; `other` may show `path`.
void joinPath(std::u16string& path, std::u16string_view other);

} // namespace Zelm::details
