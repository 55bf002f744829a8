#pragma once

#include <zelm/Export.h>

#include <cassert>
#include <cstddef>
#include <iterator>

namespace Zelm {

class ZStringView;

namespace details {

/// A run of characters, in two words: what ZString and ZStringView have in common. All searching and
/// comparing of text is written once, here.
///
/// Positions count bytes from the start. Searches take any position and return `npos` if there is nothing to
/// be found. Each comes in four forms: for a view, for a pointer measured to its first NUL (null counts as
/// empty), for the first `n` bytes of a pointer, and for one character.
class ZELM_EXPORT TextRange {
public:
    using value_type = char;
    using const_iterator = const char*;
    using const_reverse_iterator = std::reverse_iterator<const char*>;

    static constexpr std::size_t npos = static_cast<std::size_t>(-1);

    constexpr std::size_t size() const noexcept { return length_; }
    constexpr std::size_t length() const noexcept { return length_; }
    constexpr bool empty() const noexcept { return length_ == 0; }
    /// The first character; may be null if there is none. No NUL stands behind the text in general.
    constexpr const char* data() const noexcept { return data_; }

    constexpr const char* begin() const noexcept { return data_; }
    constexpr const char* cbegin() const noexcept { return data_; }
    constexpr const char* end() const noexcept { return data_ + length_; }
    constexpr const char* cend() const noexcept { return data_ + length_; }
    const_reverse_iterator rbegin() const noexcept { return const_reverse_iterator(end()); }
    const_reverse_iterator crbegin() const noexcept { return rbegin(); }
    const_reverse_iterator rend() const noexcept { return const_reverse_iterator(begin()); }
    const_reverse_iterator crend() const noexcept { return rend(); }

    /// Unchecked.
    constexpr const char& operator[](std::size_t index) const noexcept { return data_[index]; }
    constexpr const char& front() const noexcept { return data_[0]; }
    constexpr const char& back() const noexcept { return data_[length_ - 1]; }
    /// Throws `std::out_of_range` "ZStringView range error".
    const char& at(std::size_t index) const;

    /// Drops characters from the front or the back, unchecked: `count` is at most size().
    void remove_prefix(std::size_t count) noexcept {
        assert(count <= length_);
        length_ -= count;
        data_ += count;
    }
    void remove_suffix(std::size_t count) noexcept {
        assert(count <= length_);
        length_ -= count;
    }

    /// Copies up to `count` characters from `position` on to `target`, without a NUL, and returns how many.
    /// Throws `std::out_of_range` "ZStringView range error" if `position` is past the end.
    std::size_t copy(char* target, std::size_t count, std::size_t position = 0) const;

    /// The first occurrence at or after `position`. An empty needle is found at `position` itself, up to the
    /// end.
    std::size_t find(ZStringView needle, std::size_t position = 0) const noexcept;
    std::size_t find(const char* needle, std::size_t position = 0) const noexcept;
    std::size_t find(const char* needle, std::size_t position, std::size_t n) const noexcept;
    std::size_t find(char character, std::size_t position = 0) const noexcept;

    /// The last occurrence that starts at or before `position`.
    std::size_t rfind(ZStringView needle, std::size_t position = npos) const noexcept;
    std::size_t rfind(const char* needle, std::size_t position = npos) const noexcept;
    std::size_t rfind(const char* needle, std::size_t position, std::size_t n) const noexcept;
    std::size_t rfind(char character, std::size_t position = npos) const noexcept;

    /// The first character at or after `position` that is in `set`.
    std::size_t find_first_of(ZStringView set, std::size_t position = 0) const noexcept;
    std::size_t find_first_of(const char* set, std::size_t position = 0) const noexcept;
    std::size_t find_first_of(const char* set, std::size_t position, std::size_t n) const noexcept;
    std::size_t find_first_of(char character, std::size_t position = 0) const noexcept;

    /// The first character at or after `position` that is not in `set`.
    std::size_t find_first_not_of(ZStringView set, std::size_t position = 0) const noexcept;
    std::size_t find_first_not_of(const char* set, std::size_t position = 0) const noexcept;
    std::size_t find_first_not_of(const char* set, std::size_t position, std::size_t n) const noexcept;
    std::size_t find_first_not_of(char character, std::size_t position = 0) const noexcept;

    /// The last character at or before `position` that is in `set`.
    std::size_t find_last_of(ZStringView set, std::size_t position = npos) const noexcept;
    std::size_t find_last_of(const char* set, std::size_t position = npos) const noexcept;
    std::size_t find_last_of(const char* set, std::size_t position, std::size_t n) const noexcept;
    std::size_t find_last_of(char character, std::size_t position = npos) const noexcept;

    /// The last character at or before `position` that is not in `set`.
    std::size_t find_last_not_of(ZStringView set, std::size_t position = npos) const noexcept;
    std::size_t find_last_not_of(const char* set, std::size_t position = npos) const noexcept;
    std::size_t find_last_not_of(const char* set, std::size_t position, std::size_t n) const noexcept;
    std::size_t find_last_not_of(char character, std::size_t position = npos) const noexcept;

    bool contains(ZStringView needle) const noexcept;
    bool starts_with(char character) const noexcept { return length_ != 0 && front() == character; }
    bool ends_with(char character) const noexcept { return length_ != 0 && back() == character; }
    bool starts_with(ZStringView prefix) const noexcept;
    bool ends_with(ZStringView suffix) const noexcept;

    /// Negative, zero or positive: by unsigned bytes, then -1 if this text is a true prefix of the other and
    /// 1 the other way round. The forms with positions throw `std::out_of_range` "ZStringView range error"
    /// past the end.
    int compare(ZStringView other) const noexcept;
    int compare(const char* other) const noexcept;
    int compare(std::size_t position, std::size_t count, ZStringView other) const;
    int compare(std::size_t position, std::size_t count, const char* other) const;
    int compare(std::size_t position, std::size_t count, const char* other, std::size_t otherCount) const;
    int compare(std::size_t position, std::size_t count, ZStringView other, std::size_t otherPosition,
                std::size_t otherCount) const;

protected:
    constexpr TextRange() noexcept = default;
    constexpr TextRange(const char* data, std::size_t length) noexcept : length_(length), data_(data) {}

    std::size_t length_ = 0;
    const char* data_ = nullptr;
};

/// Throws `std::out_of_range` "ZStringView range error".
[[noreturn]] ZELM_EXPORT void throwTextRangeError();

} // namespace details
} // namespace Zelm
