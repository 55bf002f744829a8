#include <zelm/files/CaseFolding.h>

#include <utf8proc.h>

#include <cstddef>

namespace Zelm::details {

namespace {

constexpr char16_t kSharpS = 0x00DF;
constexpr char16_t kDotlessI = 0x0131;
constexpr char16_t kLongS = 0x017F;

/// Zero from the end of the text on.
char16_t foldedUnitAt(std::u16string_view text, std::size_t position) noexcept {
    return position < text.size() ? toUpper(text[position]) : u'\0';
}

} // namespace

char16_t toUpper(char16_t unit) noexcept {
    if (unit < 0x80) {
        return static_cast<char16_t>(unit >= u'a' && unit <= u'z' ? unit - (u'a' - u'A') : unit);
    }
    if (unit == kSharpS || unit == kDotlessI || unit == kLongS) {
        return unit;
    }
    return static_cast<char16_t>(utf8proc_toupper(unit));
}

int compareFolded(std::u16string_view a, std::u16string_view b) noexcept {
    for (std::size_t i = 0;; ++i) {
        const char16_t left = foldedUnitAt(a, i);
        const char16_t right = foldedUnitAt(b, i);
        if (left != right) {
            return left < right ? -1 : 1;
        }
        if (left == 0) {
            return 0;
        }
    }
}

bool startsWithFolded(std::u16string_view text, std::u16string_view prefix) noexcept {
    for (std::size_t i = 0; i < prefix.size() && prefix[i] != 0; ++i) {
        if (foldedUnitAt(text, i) != toUpper(prefix[i])) {
            return false;
        }
    }
    return true;
}

} // namespace Zelm::details
