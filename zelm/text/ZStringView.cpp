#include <zelm/text/ZStringView.h>

#include <ostream>

namespace Zelm::details {

std::ostream& writeText(std::ostream& stream, ZStringView text) {
    return stream << std::string_view(text);
}

} // namespace Zelm::details
