#include <zelm/json/JsonDocument.h>

#include <zelm/json/JsonInfinities.h>
#include <zelm/json/JsonReading.h>
#include <zelm/text/Decimal.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <istream>
#include <locale>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace Zelm::details {

namespace {

std::size_t lengthOfString(std::string_view rest) {
    std::size_t length = 1;
    while (length < rest.size() && rest[length] != '"') {
        length += rest[length] == '\\' ? 2 : 1;
    }
    return length + 1;
}

std::size_t lengthOfComment(std::string_view rest) {
    if (rest.substr(0, 2) != "/*") {
        return rest.find_first_of("\r\n");
    }
    const std::size_t end = rest.find("*/", 2);
    return end == std::string_view::npos ? end : end + 2;
}

/// Writes the fractions of a document as exponents, `-2.50e3` as `-250e1`: the same numbers, and still real
/// ones, for a reader that would stop at the point. Strings and comments stay as they are.
class FractionRewriter {
public:
    explicit FractionRewriter(std::string_view document) : rest_(document) {}

    std::string rewrite() {
        while (!rest_.empty()) {
            if (const std::size_t length = lengthOfJsonText(rest_)) {
                result_ += take(length);
            } else if (isDigit(rest_.front())) {
                rewriteNumber();
            } else {
                result_ += take(1);
            }
        }
        return std::move(result_);
    }

private:
    bool isAt(char character) const { return !rest_.empty() && rest_.front() == character; }

    std::string_view take(std::size_t length) {
        const std::string_view taken = rest_.substr(0, length);
        rest_.remove_prefix(taken.size());
        return taken;
    }
    std::string_view takeDigits() {
        const auto end = std::find_if_not(rest_.begin(), rest_.end(), isDigit);
        return take(static_cast<std::size_t>(end - rest_.begin()));
    }

    void rewriteNumber() {
        result_ += takeDigits();
        if (!isAt('.')) {
            return;
        }
        take(1);
        const std::string_view fraction = takeDigits();
        result_ += fraction;
        result_ += 'e';
        if (const auto exponent = takeExponent()) {
            result_ += std::to_string(std::int64_t{*exponent} - static_cast<std::int64_t>(fraction.size()));
        }
    }

    /// The exponent that follows, 0 if there is none, nothing for one without digits.
    std::optional<std::int32_t> takeExponent() {
        if (!isAt('e') && !isAt('E')) {
            return 0;
        }
        take(1);
        const bool isNegative = isAt('-');
        if (isNegative || isAt('+')) {
            take(1);
        }
        const std::string_view digits = takeDigits();
        if (digits.empty()) {
            return std::nullopt;
        }
        std::int32_t exponent = 1'000'000'000; // beyond all doubles; stays if the digits are too many
        std::from_chars(digits.data(), digits.data() + digits.size(), exponent);
        return isNegative ? -exponent : exponent;
    }

    std::string_view rest_;
    std::string result_;
};

bool parse(Json::Reader& parser, const std::string& document, Json::Value& root) {
    return parser.parse(document.data(), document.data() + document.size(), root, true);
}

[[noreturn]] void throwMalformed(const std::string& fault) {
    throw std::invalid_argument("error parsing JSON: " + fault);
}

/// Reads what the parser has refused with this fault, in case it was for infinities.
ZPropertyHandle parseWithInfinities(Json::Reader& parser, std::string document, const std::string& fault) {
    JsonInfinities infinities(document);
    if (infinities.isEmpty()) {
        throwMalformed(fault);
    }
    Json::Value root;
    if (!parse(parser, document, root)) {
        throwMalformed(parser.getFormattedErrorMessages());
    }
    ZPropertyHandle tree = readJsonTree(root, JsonArrays::Full, &infinities);
    if (!infinities.allTaken()) {
        throwMalformed(fault);
    }
    return tree;
}

} // namespace

std::size_t lengthOfJsonText(std::string_view rest) noexcept {
    if (rest.front() != '"' && rest.front() != '/') {
        return 0;
    }
    return std::min(rest.front() == '"' ? lengthOfString(rest) : lengthOfComment(rest), rest.size());
}

std::string readToEnd(std::istream& in) {
    constexpr std::size_t kChunk = 1 << 16;
    std::string text;
    if (std::istream::sentry ready{in, true}) {
        std::size_t size = 0;
        std::size_t received = 0;
        do {
            size += received;
            if (text.capacity() < size + kChunk) {
                // At the start of a file, and behind what its buffer held, that is all the rest of it.
                const std::streamsize expected = std::max<std::streamsize>(in.rdbuf()->in_avail(), 0);
                text.reserve(std::max(size + static_cast<std::size_t>(expected) + kChunk,
                                      size == 0 ? 0 : 2 * text.capacity()));
            }
            text.resize(size + kChunk);
            received = static_cast<std::size_t>(in.rdbuf()->sgetn(&text[size], kChunk));
        } while (received != 0);
        text.resize(size);
        in.setstate(std::ios_base::eofbit);
    }
    return text;
}

ZPropertyHandle parseJsonTree(Json::Reader& parser, std::string document) {
    if (std::use_facet<std::numpunct<char>>(std::locale()).decimal_point() != '.') {
        document = FractionRewriter(document).rewrite();
    }
    Json::Value root;
    if (!parse(parser, document, root)) {
        const std::string fault = parser.getFormattedErrorMessages();
        return parseWithInfinities(parser, std::move(document), fault);
    }
    return readJsonTree(root, JsonArrays::Full);
}

} // namespace Zelm::details
