#pragma once

#include <zelm/text/ZString.h>

namespace Zelm::details {

/// `text` filled with blanks to `width` bytes, on the left if positive, on the right if negative; always a
/// Storage of its own.
ZString padded(ZStringView text, int width);

} // namespace Zelm::details
