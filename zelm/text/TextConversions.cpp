#include <zelm/text/TextConversions.h>

#include <utf8.h>

#include <cstdint>
#include <cstring>
#include <iterator>

namespace Zelm {

namespace {

constexpr char kQuote = '"';

/// Whether every unit is below 128. Looks at eight bytes at a time.
template <class Unit>
bool isAscii(const Unit* units, std::size_t count) {
    constexpr std::size_t unitsPerWord = sizeof(std::uint64_t) / sizeof(Unit);
    constexpr std::uint64_t highBits = sizeof(Unit) == 1 ? 0x8080808080808080u : 0xFF80FF80FF80FF80u;
    std::uint64_t seen = 0;
    std::size_t i = 0;
    for (; i + unitsPerWord <= count; i += unitsPerWord) {
        std::uint64_t word;
        std::memcpy(&word, units + i, sizeof word);
        seen |= word;
    }
    for (; i < count; ++i) {
        seen |= static_cast<std::make_unsigned_t<Unit>>(units[i]);
    }
    return (seen & highBits) == 0;
}

} // namespace

ZString padString(const ZString& text, int width) {
    if (width == 0) {
        return text;
    }
    // Widened, since the absolute value of the lowest int is no int.
    const auto wanted = static_cast<std::size_t>(std::abs(static_cast<std::int64_t>(width)));
    const std::string padding(wanted > text.size() ? wanted - text.size() : 0, ' ');
    return width < 0 ? text + padding : padding + text;
}

ZString repeatChar(char character, std::size_t count) {
    return ZString(std::string(count, character));
}

std::vector<ZString> tokenize(const ZString& text, const ZString& delimiters, bool keep_empty) {
    std::vector<ZString> tokens;
    std::size_t start = 0;
    for (;;) {
        const std::size_t end = text.find_first_of(delimiters, start);
        if (keep_empty || (end == ZString::npos ? start < text.size() : start < end)) {
            tokens.push_back(text.substr(start, end == ZString::npos ? end : end - start));
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
    return kQuote + text + kQuote;
}

bool enclosed_in_quotes(const ZString& text) noexcept {
    return text.size() >= 2 && text.front() == kQuote && text.back() == kQuote;
}

ZString strip_quotes(const ZString& text) {
    return enclosed_in_quotes(text) ? text.mid(1, text.size() - 2) : text;
}

std::u16string convertZStringToUtf16(const ZString& text) {
    if (isAscii(text.data(), text.size())) {
        return std::u16string(text.begin(), text.end());
    }
    std::u16string result;
    result.reserve(text.size());
    utf8::utf8to16(text.begin(), text.end(), std::back_inserter(result));
    return result;
}

ZString convertUtf16ToZString(const std::u16string& text) {
    std::string result;
    if (isAscii(text.data(), text.size())) {
        result.resize(text.size());
        for (std::size_t i = 0; i < text.size(); ++i) {
            result[i] = static_cast<char>(text[i]);
        }
    } else {
        result.reserve(text.size());
        utf8::utf16to8(text.begin(), text.end(), std::back_inserter(result));
    }
    return ZString(std::move(result));
}

} // namespace Zelm
