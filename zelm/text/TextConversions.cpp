#include <zelm/text/BlockSum.h>
#include <zelm/text/CharacterSet.h>
#include <zelm/text/Padding.h>
#include <zelm/text/TextConversions.h>

namespace Zelm {

ZString details::padded(ZStringView text, int width) {
    const auto field = static_cast<std::size_t>(width < 0 ? -static_cast<long long>(width) : width);
    const std::size_t padding = text.size() < field ? field - text.size() : 0;
    if (padding == 0) {
        return ZString(text);
    }
    std::string result;
    result.reserve(text.size() + padding);
    result.append(width > 0 ? padding : 0, ' ').append(text.data(), text.size());
    result.append(width < 0 ? padding : 0, ' ');
    return ZString(std::move(result));
}

ZString padString(const ZString& text, int width) {
    return width == 0 ? text : details::padded(text, width);
}

ZString repeatChar(char c, std::size_t count) {
    return ZString(std::string(count, c));
}

namespace {

/// How many tokens one delimiter leaves: as many as it ends and one more, or as there are last characters of
/// tokens that are not empty.
std::size_t countTokens(ZStringView text, char delimiter, bool keep_empty) {
    if (keep_empty) {
        return 1 + details::blockSum(text.size(), [=](std::size_t i) { return text[i] == delimiter; });
    }
    return text.empty() ? 0
                        : (text.back() != delimiter) + details::blockSum(text.size() - 1, [=](std::size_t i) {
                              return int{text[i] != delimiter} & int{text[i + 1] == delimiter};
                          });
}

} // namespace

std::vector<ZString> tokenize(const ZString& text, const ZString& delimiters, bool keep_empty) {
    const details::CharacterSet separators(delimiters);
    std::vector<ZString> tokens;
    if (delimiters.size() == 1) {
        tokens.reserve(countTokens(text, delimiters.front(), keep_empty));
    }
    std::size_t start = 0;
    while (true) {
        const std::size_t end = separators.findFirstIn(text, start);
        ZString token = text.substr(start, end - start);
        if (keep_empty || !token.empty()) {
            tokens.push_back(std::move(token));
        }
        if (end == ZString::npos) {
            return tokens;
        }
        start = end + 1;
    }
}

std::vector<std::string> tokenize_to_std(const ZString& text, const ZString& delimiters, bool keep_empty) {
    return convertZStringVectorToStd(tokenize(text, delimiters, keep_empty));
}

std::vector<std::string> convertZStringVectorToStd(const std::vector<ZString>& texts) {
    std::vector<std::string> result;
    result.reserve(texts.size());
    for (const ZString& text : texts) {
        result.push_back(text.to_string());
    }
    return result;
}

ZString add_quotes(const ZString& text) {
    std::string quoted;
    quoted.reserve(text.size() + 2);
    quoted.append(1, '"').append(text.data(), text.size()).append(1, '"');
    return ZString(std::move(quoted));
}

bool enclosed_in_quotes(const ZString& text) noexcept {
    return text.size() >= 2 && text.front() == '"' && text.back() == '"';
}

ZString strip_quotes(const ZString& text) noexcept {
    return enclosed_in_quotes(text) ? text.mid(1, text.size() - 2) : text;
}

} // namespace Zelm
