#include <zelm/text/ZStringView.h>

#include <algorithm>
#include <ostream>

namespace Zelm {

ZStringView ZStringView::substr(std::size_t position, std::size_t count) const {
    if (position > length_) {
        details::throwTextRangeError();
    }
    return ZStringView(data_ + position, std::min(length_ - position, count));
}

std::ostream& operator<<(std::ostream& out, ZStringView text) {
    return out << std::string_view(text.data(), text.size());
}

} // namespace Zelm
