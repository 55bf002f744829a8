#include <zelm/text/TextRange.h>

#include <zelm/text/ZStringView.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>

namespace Zelm::details {

namespace {

constexpr std::size_t npos = TextRange::npos;

/// A set of characters. Few are compared one by one, many are looked up in a table that is filled once.
class CharacterSet {
public:
    explicit CharacterSet(ZStringView characters) noexcept : characters_(characters) {
        if (usesTable()) {
            for (const char c : characters) {
                table_[static_cast<unsigned char>(c)] = true;
            }
        }
    }

    bool contains(char c) const noexcept {
        if (usesTable()) {
            return table_[static_cast<unsigned char>(c)];
        }
        for (const char candidate : characters_) {
            if (candidate == c) {
                return true;
            }
        }
        return false;
    }

private:
    bool usesTable() const noexcept { return characters_.size() > 4; }

    ZStringView characters_;
    std::array<bool, 256> table_{};
};

template <class Accept>
std::size_t firstWhere(ZStringView text, std::size_t position, Accept accept) {
    for (std::size_t i = position; i < text.size(); ++i) {
        if (accept(text[i])) {
            return i;
        }
    }
    return npos;
}

template <class Accept>
std::size_t lastWhere(ZStringView text, std::size_t position, Accept accept) {
    for (std::size_t i = text.empty() ? 0 : std::min(position, text.size() - 1) + 1; i > 0; --i) {
        if (accept(text[i - 1])) {
            return i - 1;
        }
    }
    return npos;
}

} // namespace

void throwTextRangeError() {
    throw std::out_of_range("ZStringView range error");
}

const char& TextRange::at(std::size_t index) const {
    if (index >= length_) {
        throwTextRangeError();
    }
    return data_[index];
}

std::size_t TextRange::copy(char* target, std::size_t count, std::size_t position) const {
    const ZStringView source = ZStringView(*this).substr(position, count);
    if (!source.empty()) {
        std::memcpy(target, source.data(), source.size());
    }
    return source.size();
}

std::size_t TextRange::find(ZStringView needle, std::size_t position) const noexcept {
    if (needle.size() > length_ || position > length_ - needle.size()) {
        return npos;
    }
    if (needle.empty()) {
        return position;
    }
    const void* const found = memmem(data_ + position, length_ - position, needle.data(), needle.size());
    return found ? static_cast<std::size_t>(static_cast<const char*>(found) - data_) : npos;
}

std::size_t TextRange::find(char character, std::size_t position) const noexcept {
    if (position >= length_) {
        return npos;
    }
    const void* const found = std::memchr(data_ + position, character, length_ - position);
    return found ? static_cast<std::size_t>(static_cast<const char*>(found) - data_) : npos;
}

std::size_t TextRange::rfind(ZStringView needle, std::size_t position) const noexcept {
    if (needle.size() > length_) {
        return npos;
    }
    const std::size_t last = std::min(length_ - needle.size(), position);
    if (needle.empty()) {
        return last;
    }
    for (std::size_t i = last + 1; i > 0; --i) {
        if (data_[i - 1] == needle.front() && std::memcmp(data_ + i - 1, needle.data(), needle.size()) == 0) {
            return i - 1;
        }
    }
    return npos;
}

std::size_t TextRange::rfind(char character, std::size_t position) const noexcept {
    return lastWhere(*this, position, [=](char c) { return c == character; });
}

std::size_t TextRange::find_first_of(ZStringView set, std::size_t position) const noexcept {
    if (set.size() == 1) {
        return find(set.front(), position);
    }
    const CharacterSet characters(set);
    return firstWhere(*this, position, [&](char c) { return characters.contains(c); });
}

std::size_t TextRange::find_first_of(char character, std::size_t position) const noexcept {
    return find(character, position);
}

std::size_t TextRange::find_first_not_of(ZStringView set, std::size_t position) const noexcept {
    const CharacterSet characters(set);
    return firstWhere(*this, position, [&](char c) { return !characters.contains(c); });
}

std::size_t TextRange::find_first_not_of(char character, std::size_t position) const noexcept {
    return firstWhere(*this, position, [=](char c) { return c != character; });
}

std::size_t TextRange::find_last_of(ZStringView set, std::size_t position) const noexcept {
    const CharacterSet characters(set);
    return lastWhere(*this, position, [&](char c) { return characters.contains(c); });
}

std::size_t TextRange::find_last_of(char character, std::size_t position) const noexcept {
    return rfind(character, position);
}

std::size_t TextRange::find_last_not_of(ZStringView set, std::size_t position) const noexcept {
    const CharacterSet characters(set);
    return lastWhere(*this, position, [&](char c) { return !characters.contains(c); });
}

std::size_t TextRange::find_last_not_of(char character, std::size_t position) const noexcept {
    return lastWhere(*this, position, [=](char c) { return c != character; });
}

// The forms for pointers are those for views.
#define ZELM_POINTER_FORMS(search)                                                                           \
    std::size_t TextRange::search(const char* text, std::size_t position) const noexcept {                   \
        return search(ZStringView(text), position);                                                          \
    }                                                                                                        \
    std::size_t TextRange::search(const char* text, std::size_t position, std::size_t n) const noexcept {    \
        return search(ZStringView(text, n), position);                                                       \
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

bool TextRange::starts_with(ZStringView prefix) const noexcept {
    return prefix.size() <= length_ && ZStringView(data_, prefix.size()).compare(prefix) == 0;
}

bool TextRange::ends_with(ZStringView suffix) const noexcept {
    return suffix.size() <= length_ &&
           ZStringView(data_ + (length_ - suffix.size()), suffix.size()).compare(suffix) == 0;
}

int TextRange::compare(ZStringView other) const noexcept {
    const std::size_t common = std::min(length_, other.size());
    if (common != 0) {
        if (const int difference = std::memcmp(data_, other.data(), common)) {
            return difference;
        }
    }
    return length_ == other.size() ? 0 : length_ < other.size() ? -1 : 1;
}

int TextRange::compare(const char* other) const noexcept {
    return compare(ZStringView(other));
}

int TextRange::compare(std::size_t position, std::size_t count, ZStringView other) const {
    return ZStringView(*this).substr(position, count).compare(other);
}

int TextRange::compare(std::size_t position, std::size_t count, const char* other) const {
    return compare(position, count, ZStringView(other));
}

int TextRange::compare(std::size_t position, std::size_t count, const char* other,
                       std::size_t otherCount) const {
    return compare(position, count, ZStringView(other, otherCount));
}

int TextRange::compare(std::size_t position, std::size_t count, ZStringView other, std::size_t otherPosition,
                       std::size_t otherCount) const {
    return ZStringView(*this).substr(position, count).compare(other.substr(otherPosition, otherCount));
}

} // namespace Zelm::details
