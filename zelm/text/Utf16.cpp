#include <zelm/text/AsciiCase.h>
#include <zelm/text/BlockSum.h>
#include <zelm/text/TextConversions.h>
#include <zelm/text/Utf16.h>

#include <utf8.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace Zelm {

namespace {

using details::blockSum;
using details::isAscii;

constexpr bool isTrail(char byte) noexcept {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}
constexpr bool isSurrogate(unsigned unit) noexcept {
    return unit >= 0xD800 && unit <= 0xDFFF;
}

/// Whether eight units are below 128: in one or two words, where a run may be too short for a vector.
template <class Unit>
bool areEightAscii(const Unit* text) noexcept {
    std::uint64_t words[sizeof(Unit)];
    std::memcpy(words, text, sizeof words);
    constexpr std::uint64_t kOthers = sizeof(Unit) == 1 ? 0x8080808080808080 : 0xFF80FF80FF80FF80;
    return ((words[0] | words[sizeof(Unit) - 1]) & kOthers) == 0;
}

/// Copies the characters below 128 that a text begins with, in blocks as long as they last; their number.
template <std::size_t kBlock, class From, class To>
std::size_t copyAscii(const From* from, std::size_t count, To* __restrict to) noexcept {
    std::size_t done = 0;
    for (; count - done >= kBlock; done += kBlock) {
        if (!(kBlock == 8 ? areEightAscii(from + done) : isAscii(from + done, kBlock))) {
            break;
        }
        for (std::size_t i = done; i < done + kBlock; ++i) {
            to[i] = static_cast<To>(from[i]);
        }
    }
    if constexpr (kBlock > 8) {
        return done + copyAscii<8>(from + done, count - done, to + done);
    }
    for (; done < count && static_cast<std::make_unsigned_t<From>>(from[done]) < 128; ++done) {
        to[done] = static_cast<To>(from[done]);
    }
    return done;
}

/// How many units of UTF-16 the character takes that a byte of UTF-8 begins; none if it begins none.
int unitsBegunBy(char byte) noexcept {
    return !isTrail(byte) + (static_cast<unsigned char>(byte) >= 0xF0);
}
/// How many bytes of UTF-8 a unit of UTF-16 takes, those of a surrogate being half of its pair's.
int bytesFor(char16_t unit) noexcept {
    return 1 + (unit >= 0x80) + (unit >= 0x800) - isSurrogate(unit);
}

} // namespace

// What is common and right is converted here; characters of two units and whatever is wrong are left to
// utf8-cpp, character by character, so that what is refused and how is its own.

std::u16string convertZStringToUtf16(const ZString& text) {
    if (isAscii(text.data(), text.size())) {
        return std::u16string(text.begin(), text.end());
    }
    std::u16string result(blockSum(text.size(), [&](std::size_t i) { return unitsBegunBy(text[i]); }), u'\0');
    char16_t* out = result.data();
    for (const char *at = text.begin(), *const end = text.end(); at != end;) {
        const auto left = static_cast<std::size_t>(end - at);
        const auto bits = [at](int i, unsigned mask) { return static_cast<unsigned char>(at[i]) & mask; };
        const unsigned lead = bits(0, 0xFF);
        if (lead < 0x80) {
            const std::size_t run = copyAscii<8>(at, left, out);
            at += run;
            out += run;
            continue;
        }
        if (lead >= 0xC2 && lead < 0xE0 && left >= 2 && isTrail(at[1])) {
            *out++ = static_cast<char16_t>((lead & 0x1F) << 6 | bits(1, 0x3F));
            at += 2;
            continue;
        }
        if (lead >= 0xE0 && lead < 0xF0 && left >= 3 && isTrail(at[1]) && isTrail(at[2])) {
            const unsigned unit = (lead & 0xF) << 12 | bits(1, 0x3F) << 6 | bits(2, 0x3F);
            if (unit >= 0x800 && !isSurrogate(unit)) {
                *out++ = static_cast<char16_t>(unit);
                at += 3;
                continue;
            }
        }
        const char* next = at;
        const std::uint32_t character = utf8::next(next, end);
        at = next;
        *out++ = static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10));
        *out++ = static_cast<char16_t>(0xDC00 + (character & 0x3FF));
    }
    return result;
}

std::string details::utf16ToUtf8(std::u16string_view text) {
    std::string result(text.size(), '\0');
    if (copyAscii<64>(text.data(), text.size(), result.data()) == text.size()) {
        return result;
    }
    result.assign(blockSum(text.size(), [=](std::size_t i) { return bytesFor(text[i]); }), '\0');
    char* out = result.data();
    for (const char16_t *at = text.data(), *const end = at + text.size(); at != end;) {
        const auto left = static_cast<std::size_t>(end - at);
        const unsigned unit = *at;
        const auto trail = [unit](int shift) { return static_cast<char>(0x80 | (unit >> shift & 0x3F)); };
        if (unit < 0x80) {
            const std::size_t run = copyAscii<8>(at, left, out);
            at += run;
            out += run;
        } else if (unit < 0x800) {
            *out++ = static_cast<char>(0xC0 | unit >> 6);
            *out++ = trail(0);
            ++at;
        } else if (!isSurrogate(unit)) {
            *out++ = static_cast<char>(0xE0 | unit >> 12);
            *out++ = trail(6);
            *out++ = trail(0);
            ++at;
        } else {
            const char16_t* const next = at + std::min<std::size_t>(left, 2);
            out = utf8::utf16to8(at, next, out);
            at = next;
        }
    }
    return result;
}

ZString convertUtf16ToZString(const std::u16string& text) {
    return ZString(details::utf16ToUtf8(text));
}

} // namespace Zelm
