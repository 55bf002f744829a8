#include <zelm/files/PathText.h>
#include <zelm/text/AsciiCase.h>
#include <zelm/text/Utf16.h>

#include <utf8.h>

#include <algorithm>
#include <utility>

namespace Zelm::details {

namespace {

/// Turns the separators of a text that is otherwise complete.
template <class Text>
Text turned(Text text, Separators separators) {
    using Unit = typename Text::value_type;
    if (separators == Separators::Turned) {
        std::replace(text.begin(), text.end(), static_cast<Unit>('\\'), static_cast<Unit>('/'));
    }
    return text;
}

bool isHighSurrogate(char16_t unit) noexcept {
    return (unit & 0xFC00) == 0xD800;
}

bool isLowSurrogate(char16_t unit) noexcept {
    return (unit & 0xFC00) == 0xDC00;
}

} // namespace

std::u16string decodePath(std::string_view text, Separators separators) {
    const char slash = separators == Separators::Turned ? '\\' : '/';
    std::u16string result(text.size(), u'\0');
    if (isAscii(text.data(), text.size())) {
        std::transform(text.begin(), text.end(), result.begin(),
                       [slash](char c) { return static_cast<char16_t>(c == '/' ? slash : c); });
        return result;
    }
    auto to = result.begin();
    for (const char *at = text.data(), *const end = at + text.size(); at != end;) {
        const auto codePoint = utf8::next(at, end);
        if (codePoint > 0xFFFF) {
            *to++ = static_cast<char16_t>(0xD7C0 + (codePoint >> 10));
            *to++ = static_cast<char16_t>(0xDC00 + (codePoint & 0x3FF));
        } else {
            *to++ = static_cast<char16_t>(codePoint == '/' ? static_cast<unsigned char>(slash) : codePoint);
        }
    }
    result.erase(to, result.end());
    return result;
}

std::string encodePath(std::u16string_view text, Separators separators) {
    return turned(utf16ToUtf8(text), separators);
}

std::wstring widenPath(std::u16string_view text, Separators separators) {
    if constexpr (sizeof(wchar_t) == sizeof(char16_t)) {
        return turned(std::wstring(text.begin(), text.end()), separators);
    }
    std::wstring result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char16_t unit = text[i];
        if (isHighSurrogate(unit) && i + 1 < text.size() && isLowSurrogate(text[i + 1])) {
            result += static_cast<wchar_t>(0x10000 + ((unit & 0x3FF) << 10) + (text[++i] & 0x3FF));
        } else {
            result += static_cast<wchar_t>(unit);
        }
    }
    return turned(std::move(result), separators);
}

} // namespace Zelm::details
