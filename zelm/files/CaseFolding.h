#pragma once

#include <string_view>

/// File names without regard to case: unit by unit in upper case, up to the first NUL.
namespace Zelm::details {

/// Unicode's upper case of one UTF-16 unit. Sharp s, long s and dotless i stay as they are: the first has
/// none of one letter in common use, the others would become ASCII letters and so collide with plain names.
char16_t toUpper(char16_t unit) noexcept;

/// -1, 0 or 1.
int compareFolded(std::u16string_view a, std::u16string_view b) noexcept;
bool startsWithFolded(std::u16string_view text, std::u16string_view prefix) noexcept;

} // namespace Zelm::details
