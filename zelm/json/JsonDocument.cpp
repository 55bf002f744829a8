#include <zelm/json/JsonDocument.h>

#include <zelm/text/Decimal.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <istream>
#include <locale>
#include <optional>
#include <string_view>
#include <utility>

namespace Zelm::details {

namespace {

std::string readToEnd(std::istream& in) {
    constexpr std::size_t kChunk = 1 << 16;
    std::string text;
    if (std::istream::sentry ready{in, true}) {
        text.reserve(static_cast<std::size_t>(std::max<std::streamsize>(in.rdbuf()->in_avail(), 0)) + kChunk);
        std::size_t size = 0;
        std::size_t received = 0;
        do {
            size += received;
            text.resize(size + kChunk);
            received = static_cast<std::size_t>(in.rdbuf()->sgetn(&text[size], kChunk));
        } while (received != 0);
        text.resize(size);
        in.setstate(std::ios_base::eofbit);
    }
    return text;
}

/// Writes the fractions of a document as exponents, `-2.50e3` as `-250e1`: the same numbers, and still real
/// ones, for a reader that would stop at the point. Strings and comments stay as they are.
class FractionRewriter {
public:
    explicit FractionRewriter(std::string_view document) : rest_(document) {}

    std::string rewrite() {
        while (!rest_.empty()) {
            if (isAt('"')) {
                result_ += take(lengthOfString());
            } else if (isAt('/')) {
                result_ += take(lengthOfComment());
            } else if (details::isDigit(rest_.front())) {
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
        const auto end = std::find_if_not(rest_.begin(), rest_.end(), details::isDigit);
        return take(static_cast<std::size_t>(end - rest_.begin()));
    }

    std::size_t lengthOfString() const {
        std::size_t length = 1;
        while (length < rest_.size() && rest_[length] != '"') {
            length += rest_[length] == '\\' ? 2 : 1;
        }
        return length + 1;
    }
    std::size_t lengthOfComment() const {
        if (rest_.substr(0, 2) != "/*") {
            return rest_.find_first_of("\r\n");
        }
        const std::size_t end = rest_.find("*/", 2);
        return end == std::string_view::npos ? end : end + 2;
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

} // namespace

std::string readJsonDocument(std::istream& in) {
    std::string text = readToEnd(in);
    if (std::use_facet<std::numpunct<char>>(std::locale()).decimal_point() != '.') {
        text = FractionRewriter(text).rewrite();
    }
    return text;
}

} // namespace Zelm::details
