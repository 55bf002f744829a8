#include <zelm/text/TextConversions.h>

#include <utf8.h>

#include <iterator>
#include <type_traits>

namespace Zelm {

namespace {

/// Whether every unit is below 128. One pass without a branch, which vectorises.
template <class Unit>
bool isAscii(const Unit* text, std::size_t count) noexcept {
    std::make_unsigned_t<Unit> bits = 0;
    for (std::size_t i = 0; i < count; ++i) {
        bits =
            static_cast<std::make_unsigned_t<Unit>>(bits | static_cast<std::make_unsigned_t<Unit>>(text[i]));
    }
    return bits < 128;
}

} // namespace

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
