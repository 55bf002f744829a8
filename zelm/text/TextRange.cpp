#include <zelm/text/CharacterSet.h>
#include <zelm/text/FoldedSearch.h>
#include <zelm/text/ZStringView.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace Zelm::details {

namespace {

/// The index of a character that a C search function found, `npos` for null.
std::size_t indexOf(const void* found, const char* start) noexcept {
    return found ? static_cast<std::size_t>(static_cast<const char*>(found) - start) : ZStringView::npos;
}

} // namespace

void throwTextRangeError() {
    throw std::out_of_range("ZStringView range error");
}

const char& TextRange::at(std::size_t i) const {
    if (i >= length_) {
        throwTextRangeError();
    }
    return data_[i];
}

std::size_t TextRange::copy(char* destination, std::size_t n, std::size_t pos) const {
    const std::size_t count = cutLength(pos, n);
    if (count != 0) {
        std::memcpy(destination, data_ + pos, count);
    }
    return count;
}

std::size_t TextRange::find(ZStringView needle, std::size_t pos) const noexcept {
    if (needle.size() > length_ || pos > length_ - needle.size()) {
        return npos;
    }
    if (needle.size() <= 1) {
        return needle.empty() ? pos : find(needle.front(), pos);
    }
    return findFolded<same>(*this, needle, pos);
}

std::size_t TextRange::find(char c, std::size_t pos) const noexcept {
    return pos >= length_ ? npos : indexOf(std::memchr(data_ + pos, c, length_ - pos), data_);
}

std::size_t TextRange::rfind(ZStringView needle, std::size_t pos) const noexcept {
    if (needle.size() > length_) {
        return npos;
    }
    const std::size_t last = std::min(length_ - needle.size(), pos);
    if (needle.empty()) {
        return last;
    }
    const std::size_t searched = last + needle.size();
    const char* const textEnd = data_ + searched;
    const auto next = [&](std::size_t from) {
        const void* const found = ::memrchr(data_, needle.back(), searched - from);
        return found ? static_cast<std::size_t>(textEnd - 1 - static_cast<const char*>(found)) : searched;
    };
    const std::size_t back =
        findMatch([=](std::size_t i) { return *(textEnd - 1 - i); }, searched,
                  [=](std::size_t i) { return *(needle.end() - 1 - i); }, needle.size(), next);
    return back == npos ? npos : last - back;
}

std::size_t TextRange::rfind(char c, std::size_t pos) const noexcept {
    return length_ == 0 ? npos : indexOf(::memrchr(data_, c, std::min(pos, length_ - 1) + 1), data_);
}

std::size_t TextRange::find_first_of(ZStringView set, std::size_t pos) const noexcept {
    return CharacterSet(set).findFirstIn(*this, pos);
}
std::size_t TextRange::find_first_not_of(ZStringView set, std::size_t pos) const noexcept {
    return CharacterSet(set).findFirstNotIn(*this, pos);
}
std::size_t TextRange::find_last_of(ZStringView set, std::size_t pos) const noexcept {
    return CharacterSet(set).findLastIn(*this, pos);
}
std::size_t TextRange::find_last_not_of(ZStringView set, std::size_t pos) const noexcept {
    return CharacterSet(set).findLastNotIn(*this, pos);
}

std::size_t TextRange::find_first_of(char c, std::size_t pos) const noexcept {
    return find(c, pos);
}
std::size_t TextRange::find_first_not_of(char c, std::size_t pos) const noexcept {
    return find_first_not_of(ZStringView(&c, 1), pos);
}
std::size_t TextRange::find_last_of(char c, std::size_t pos) const noexcept {
    return rfind(c, pos);
}
std::size_t TextRange::find_last_not_of(char c, std::size_t pos) const noexcept {
    return find_last_not_of(ZStringView(&c, 1), pos);
}

// The forms for pointers are those for views.
#define ZELM_POINTER_FORMS(search)                                                                           \
    std::size_t TextRange::search(const char* text, std::size_t pos) const noexcept {                        \
        return search(ZStringView(text), pos);                                                               \
    }                                                                                                        \
    std::size_t TextRange::search(const char* text, std::size_t pos, std::size_t n) const noexcept {         \
        return search(ZStringView(text, n), pos);                                                            \
    }
ZELM_POINTER_FORMS(find)
ZELM_POINTER_FORMS(rfind)
ZELM_POINTER_FORMS(find_first_of)
ZELM_POINTER_FORMS(find_first_not_of)
ZELM_POINTER_FORMS(find_last_of)
ZELM_POINTER_FORMS(find_last_not_of)
#undef ZELM_POINTER_FORMS

bool TextRange::contains(ZStringView needle) const noexcept {
    return find(needle) != npos;
}
bool TextRange::starts_with(ZStringView start) const noexcept {
    return start.size() <= length_ && equal(start, {data_, start.size()});
}
bool TextRange::ends_with(ZStringView end) const noexcept {
    return end.size() <= length_ && equal(end, {data_ + (length_ - end.size()), end.size()});
}

int TextRange::compare(const char* other) const noexcept {
    return compare(ZStringView(other));
}
int TextRange::compare(std::size_t pos, std::size_t n, ZStringView other) const {
    return ZStringView(*this).substr(pos, n).compare(other);
}
int TextRange::compare(std::size_t pos, std::size_t n, const char* other) const {
    return compare(pos, n, ZStringView(other));
}
int TextRange::compare(std::size_t pos, std::size_t n, const char* other, std::size_t count2) const {
    return compare(pos, n, ZStringView(other, count2));
}
int TextRange::compare(std::size_t pos, std::size_t n, ZStringView other, std::size_t pos2,
                       std::size_t count2) const {
    return compare(pos, n, other.substr(pos2, count2));
}

} // namespace Zelm::details
