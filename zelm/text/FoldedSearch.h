#pragma once

#include <zelm/text/AsciiCase.h>
#include <zelm/text/LinearSearch.h>
#include <zelm/text/ZStringView.h>

#include <algorithm>

namespace Zelm::details {

/// A character that a needle has: itself alone or, one bit being taken as set, a letter in either case.
class Sought {
public:
    Sought(char c, bool ignoresCase) noexcept
        : ignored_(ignoresCase && toLower(c) != toUpper(c) ? 'a' ^ 'A' : 0),
          character_(static_cast<char>(c | ignored_)) {}

    bool is(char c) const noexcept { return static_cast<char>(c | ignored_) == character_; }

private:
    char ignored_;
    char character_;
};

/// The first position at or behind `from` where the first and the last of `length` characters are as sought,
/// else the size of the text. A few positions are tried one by one, all others in blocks: without a way out
/// of its loop, a block of them vectorises.
inline std::size_t findEnds(ZStringView text, std::size_t length, Sought first, Sought last,
                            std::size_t from) noexcept {
    constexpr std::size_t kBlock = 64, kNear = 16;
    const char* const firsts = text.data();
    const char* const lasts = firsts + (length - 1);
    const auto fits = [=](std::size_t i) { return int{first.is(firsts[i])} & int{last.is(lasts[i])}; };
    const std::size_t end = text.size() - (length - 1);
    for (const std::size_t near = std::min(end, from + kNear); from < near; ++from) {
        if (fits(from)) {
            return from;
        }
    }
    for (; from + kBlock <= end; from += kBlock) {
        unsigned char any = 0;
        for (std::size_t i = from; i < from + kBlock; ++i) {
            any = static_cast<unsigned char>(any | fits(i));
        }
        if (any) {
            break;
        }
    }
    for (; from < end; ++from) {
        if (fits(from)) {
            return from;
        }
    }
    return text.size();
}

/// The fold of a search that heeds case.
constexpr char same(char c) noexcept {
    return c;
}

/// The first match of a needle that is not empty at or after `pos`, `npos` if there is none: characters are
/// equal if `fold`, the identity or one to a case, makes them so.
template <char (*fold)(char) noexcept>
std::size_t findFolded(ZStringView text, ZStringView needle, std::size_t pos) noexcept {
    if (needle.size() > text.size() || pos > text.size() - needle.size()) {
        return ZStringView::npos;
    }
    text.remove_prefix(pos);
    const bool ignoresCase = fold('A') == fold('a');
    const Sought first(needle.front(), ignoresCase), last(needle.back(), ignoresCase);
    const std::size_t found =
        findMatch([=](std::size_t i) { return fold(text[i]); }, text.size(),
                  [=](std::size_t i) { return fold(needle[i]); }, needle.size(),
                  [=](std::size_t from) { return findEnds(text, needle.size(), first, last, from); });
    return found == ZStringView::npos ? found : pos + found;
}

} // namespace Zelm::details
