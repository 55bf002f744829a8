#pragma once

#include <zelm/files/FilesystemPath.h>

#include <cstddef>
#include <string_view>

/// The separators and names of a path's text.
namespace Zelm::details {

inline bool isSeparatorAt(std::u16string_view text, std::size_t position) noexcept {
    return position < text.size() && FilesystemPath::isSeparator(text[position]);
}

/// The first position from here on that is no separator, or that is one; the end of the text without any.
inline std::size_t skipSeparators(std::u16string_view text, std::size_t position) noexcept {
    while (isSeparatorAt(text, position)) {
        ++position;
    }
    return position;
}
inline std::size_t skipName(std::u16string_view text, std::size_t position) noexcept {
    while (position < text.size() && !FilesystemPath::isSeparator(text[position])) {
        ++position;
    }
    return position;
}

} // namespace Zelm::details
