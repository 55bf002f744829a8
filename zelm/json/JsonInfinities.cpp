#include <zelm/json/JsonInfinities.h>

#include <zelm/json/JsonDocument.h>
#include <zelm/json/JsonScanner.h>
#include <zelm/text/Decimal.h>

#include <algorithm>
#include <limits>
#include <string_view>

namespace Zelm::details {

namespace {

/// As long as an infinity, and read as 1.0.
constexpr std::string_view kReplacement = "1e+0000";
static_assert(kReplacement.size() == kJsonInfinity.size());

} // namespace

JsonInfinities::JsonInfinities(std::string& document) {
    const std::string_view text = document;
    for (std::size_t start = 0, length = 0; start < text.size(); start += length) {
        const std::string_view rest = text.substr(start);
        length = std::max<std::size_t>(lengthOfJsonText(rest), 1);
        if (isDigit(rest.front())) {
            length = std::min(rest.find_first_not_of("0123456789.eE+-"), rest.size());
            if (rest.substr(0, length) == kJsonInfinity) {
                kReplacement.copy(&document[start], length);
                places_.push_back(static_cast<std::ptrdiff_t>(start));
            }
        }
    }
}

std::optional<double> JsonInfinities::take(const Json::Value& number) {
    const double sign = number.isDouble() ? number.asDouble() : 0;
    const std::ptrdiff_t place = number.getOffsetStart() + (sign < 0 ? 1 : 0);
    if ((sign != 1 && sign != -1) || !std::binary_search(places_.begin(), places_.end(), place)) {
        return std::nullopt;
    }
    ++taken_;
    return sign * std::numeric_limits<double>::infinity();
}

} // namespace Zelm::details
