#include <zelm/text/AsciiCase.h>
#include <zelm/text/TextConversions.h>

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

ZString convertUtf16ToZString(const std::u16string& text) {
    std::string result;
    if (isAscii(text.data(), text.size())) {
        result.assign(text.begin(), text.end());
    } else {
        result.reserve(text.size());
        utf8::utf16to8(text.begin(), text.end(), std::back_inserter(result));
    }
    return ZString(std::move(result));
}

} // namespace Zelm
