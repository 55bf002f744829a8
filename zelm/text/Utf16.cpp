#include <zelm/text/AsciiCase.h>
#include <zelm/text/TextConversions.h>
#include <zelm/text/Utf16.h>

#include <utf8.h>

#include <iterator>

namespace Zelm {

using details::isAscii;

std::u16string convertZStringToUtf16(const ZString& text) {
    if (isAscii(text.data(), text.size())) {
        return std::u16string(text.begin(), text.end());
    }
    std::u16string result;
    result.reserve(text.size());
    utf8::utf8to16(text.begin(), text.end(), std::back_inserter(result));
    return result;
}

std::string details::utf16ToUtf8(std::u16string_view text) {
    if (isAscii(text.data(), text.size())) {
        return std::string(text.begin(), text.end());
    }
    std::string result;
    result.reserve(text.size());
    utf8::utf16to8(text.begin(), text.end(), std::back_inserter(result));
    return result;
}

ZString convertUtf16ToZString(const std::u16string& text) {
    return ZString(details::utf16ToUtf8(text));
}

} // namespace Zelm
