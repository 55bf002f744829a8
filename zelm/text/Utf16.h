#pragma once

#include <string>
#include <string_view>

namespace Zelm::details {

/// Throws `utf8::invalid_utf16` "Invalid UTF-16" for a surrogate alone.
std::string utf16ToUtf8(std::u16string_view text);

} // namespace Zelm::details
