#include <zelm/text/AsciiCase.h>
#include <zelm/text/LinearSearch.h>
#include <zelm/text/ZString.h>

#include <algorithm>

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

/// The first position of a letter in either case at or behind `from`, the size of the text if there is none.
/// Looks ahead in growing windows, so that the case that does not occur is not sought through the whole text
/// each time.
std::size_t findEitherCase(ZStringView text, char letter, std::size_t from) noexcept {
    for (std::size_t window = 64; from < text.size(); window *= 2) {
        ZStringView ahead(text.data() + from, std::min(window, text.size() - from));
        const std::size_t windowSize = ahead.size();
        const std::size_t lower = ahead.find(details::toLower(letter));
        ahead.remove_suffix(windowSize - std::min(lower, windowSize));
        const std::size_t first = std::min(lower, ahead.find(details::toUpper(letter)));
        if (first != ZStringView::npos) {
            return from + first;
        }
        from += windowSize;
    }
    return text.size();
}

/// The first match of a needle at or after `pos`; `npos` if there is none.
std::size_t findIgnoringCase(ZStringView text, ZStringView needle, std::size_t pos) noexcept {
    if (needle.size() > text.size() || pos > text.size() - needle.size()) {
        return ZStringView::npos;
    }
    if (needle.empty()) {
        return pos;
    }
    text.remove_prefix(pos);
    const std::size_t found =
        details::findMatch([=](std::size_t i) { return details::toLower(text[i]); }, text.size(),
                           [=](std::size_t i) { return details::toLower(needle[i]); }, needle.size(),
                           [=](std::size_t from) { return findEitherCase(text, needle.front(), from); });
    return found == ZStringView::npos ? found : pos + found;
}

/// `text` with every match replaced by `to`: `find(pos)` finds the first one at or after a position, and each
/// is taken to be `matchLength` long. Shares `text` if there is none.
template <class Find>
ZString replaced(const ZString& text, std::size_t matchLength, ZStringView to, Find find) {
    std::size_t match = find(0);
    if (match == ZString::npos) {
        return text;
    }
    std::string result;
    result.reserve(text.size() + to.size());
    std::size_t kept = 0;
    while (match != ZString::npos) {
        result.append(text.data() + kept, match - kept).append(to.data(), to.size());
        kept = std::min(match + matchLength, text.size());
        match = find(kept);
    }
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
    return static_cast<std::size_t>(std::count(begin(), end(), c));
}

} // namespace Zelm
