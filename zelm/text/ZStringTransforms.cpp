#include <zelm/text/AsciiCase.h>
#include <zelm/text/BlockSum.h>
#include <zelm/text/FoldedSearch.h>
#include <zelm/text/ZString.h>

#include <algorithm>
#include <cstring>

namespace Zelm {

namespace {

template <char (*fold)(char) noexcept>
ZString folded(ZStringView text) {
    std::string result(text.data(), text.size());
    for (char& c : result) {
        c = fold(c);
    }
    return ZString(std::move(result));
}

bool equalIgnoringCase(const char* a, const char* b, std::size_t count) noexcept {
    return std::equal(a, a + count, b,
                      [](char x, char y) { return details::toLower(x) == details::toLower(y); });
}

/// The first match of a needle at or after `pos`, letters of either case being equal; `npos` if there is
/// none.
std::size_t findIgnoringCase(ZStringView text, ZStringView needle, std::size_t pos) noexcept {
    return needle.empty() ? text.find(needle, pos) : details::findFolded<details::toLower>(text, needle, pos);
}

/// Copies `count` characters, mostly few: all at once where there is room for as many in both texts.
void copyPiece(const char* from, std::size_t count, std::size_t room, char* to) noexcept {
    constexpr std::size_t kFew = 16;
    if (count <= kFew && room >= kFew) {
        std::memcpy(to, from, kFew);
    } else {
        std::memcpy(to, from, count);
    }
}

/// `text` with every match replaced by `to`: `find(pos)` finds the first one at or after a position, and each
/// is taken to be `matchLength` long. Shares `text` if there is none.
template <class Find>
ZString replaced(const ZString& text, std::size_t matchLength, ZStringView to, Find find) {
    std::size_t match = find(0);
    if (match == ZString::npos) {
        return text;
    }
    std::string result(text.size() + to.size(), '\0');
    std::size_t size = 0, kept = 0;
    do {
        const std::size_t between = match - kept;
        if (size + between + to.size() > result.size()) {
            result.resize(2 * (size + between + to.size()));
        }
        copyPiece(text.data() + kept, between, std::min(text.size() - kept, result.size() - size),
                  result.data() + size);
        size += between;
        std::copy(to.begin(), to.end(), result.data() + size);
        size += to.size();
        kept = std::min(match + matchLength, text.size());
        match = find(kept);
    } while (match != ZString::npos);
    result.resize(size);
    result.append(text.data() + kept, text.size() - kept);
    return ZString(std::move(result));
}

/// The needle of a search that ignores case: measured to its first NUL, wherever the view ends.
ZStringView measured(ZStringView needle) noexcept {
    return needle.data();
}

} // namespace

ZString ZString::to_lower() const {
    return folded<details::toLower>(*this);
}

ZString ZString::to_upper() const {
    return folded<details::toUpper>(*this);
}

int ZString::compare_ignore_case(ZStringView other) const noexcept {
    const std::size_t common = std::min(length_, other.size());
    for (std::size_t i = 0; i < common; ++i) {
        const int difference = static_cast<signed char>(details::toLower(data_[i])) -
                               static_cast<signed char>(details::toLower(other[i]));
        if (difference != 0) {
            return difference;
        }
    }
    return length_ == other.size() ? 0 : length_ < other.size() ? -1 : 1;
}

bool ZString::starts_with_ignore_case(ZStringView start) const noexcept {
    return start.size() <= length_ && equalIgnoringCase(data_, start.data(), start.size());
}

bool ZString::ends_with_ignore_case(ZStringView end) const noexcept {
    return end.size() <= length_ && equalIgnoringCase(data_ + (length_ - end.size()), end.data(), end.size());
}

std::size_t ZString::find_ignore_case(ZStringView needle, std::size_t pos) const noexcept {
    return findIgnoringCase(*this, measured(needle), pos);
}

ZString ZString::replace(ZStringView from, ZStringView to) const {
    if (from.empty()) {
        return *this;
    }
    return replaced(*this, from.size(), to, [&](std::size_t pos) { return find(from, pos); });
}

ZString ZString::replace_ignore_case(ZStringView from, ZStringView to) const {
    const ZStringView needle = from.empty() ? from : measured(from);
    if (needle.empty()) {
        return *this;
    }
    return replaced(*this, from.size(), to,
                    [&](std::size_t pos) { return findIgnoringCase(*this, needle, pos); });
}

std::size_t ZString::count_occurrences(char c) const noexcept {
    return details::blockSum(length_, [=](std::size_t i) { return data_[i] == c; });
}

} // namespace Zelm
