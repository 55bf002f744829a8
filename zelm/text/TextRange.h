#pragma once

#include <zelm/Export.h>

#include <cassert>
#include <cstddef>
#include <iterator>
#include <string_view>

namespace Zelm {

class ZStringView;

namespace details {

/// Throws `std::out_of_range` "ZStringView range error".
[[noreturn]] ZELM_EXPORT void throwTextRangeError();

/// What ZStringView and ZString share: a length and a pointer to characters that somebody keeps alive, and
/// all reading, searching and comparing of them.
///
/// Searches are case-sensitive, work on bytes, allocate nothing and never throw: they return an index from
/// the start of the range, or `npos`. Where a `const char*` is taken without a count it is measured to its
/// first NUL, and null counts as empty. Characters are compared as unsigned bytes.
class ZELM_EXPORT TextRange {
public:
    using value_type = char;
    using size_type = std::size_t;
    using difference_type = std::ptrdiff_t;
    using const_reference = const char&;
    using reference = const_reference;
    using const_iterator = const char*;
    using iterator = const_iterator;
    using const_reverse_iterator = std::reverse_iterator<const char*>;
    using reverse_iterator = const_reverse_iterator;

    /// "Nowhere" as a position, "all of it" as a count: all bits set.
    static constexpr std::size_t npos = static_cast<std::size_t>(-1);

    constexpr std::size_t size() const noexcept { return length_; }
    constexpr std::size_t length() const noexcept { return length_; }
    constexpr bool empty() const noexcept { return length_ == 0; }
    /// The first character; in general there is no NUL behind the last one. May be null if the range is
    /// empty.
    constexpr const char* data() const noexcept { return data_; }

    constexpr const_iterator begin() const noexcept { return data_; }
    constexpr const_iterator end() const noexcept { return data_ + length_; }
    constexpr const_iterator cbegin() const noexcept { return begin(); }
    constexpr const_iterator cend() const noexcept { return end(); }
    constexpr const_reverse_iterator rbegin() const noexcept { return const_reverse_iterator(end()); }
    constexpr const_reverse_iterator rend() const noexcept { return const_reverse_iterator(begin()); }
    constexpr const_reverse_iterator crbegin() const noexcept { return rbegin(); }
    constexpr const_reverse_iterator crend() const noexcept { return rend(); }

    /// Unchecked, as are `front` and `back`.
    constexpr const char& operator[](std::size_t i) const noexcept {
        assert(i < length_);
        return data_[i];
    }
    constexpr const char& front() const noexcept { return (*this)[0]; }
    constexpr const char& back() const noexcept { return (*this)[length_ - 1]; }
    /// Throws `std::out_of_range` "ZStringView range error" if `i >= size()`.
    const char& at(std::size_t i) const;

    /// Shortens the range in place; unchecked, `n` must not exceed the length.
    constexpr void remove_prefix(std::size_t n) noexcept {
        assert(n <= length_);
        length_ -= n;
        data_ += n;
    }
    constexpr void remove_suffix(std::size_t n) noexcept {
        assert(n <= length_);
        length_ -= n;
    }

    /// Copies the `min(size() - pos, n)` characters at `pos` to `destination`, adds no NUL and returns their
    /// count. Throws `std::out_of_range` "ZStringView range error" if `pos > size()`.
    std::size_t copy(char* destination, std::size_t n, std::size_t pos = 0) const;

    constexpr operator std::string_view() const noexcept { return {data_, length_}; }

    /// The first match at or after `pos`. An empty needle is found at every `pos <= size()`. Linear time.
    std::size_t find(ZStringView needle, std::size_t pos = 0) const noexcept;
    std::size_t find(const char* needle, std::size_t pos = 0) const noexcept;
    std::size_t find(const char* needle, std::size_t pos, std::size_t n) const noexcept;
    std::size_t find(char c, std::size_t pos = 0) const noexcept;

    /// The last match that begins at or before `pos`. An empty needle is found at `min(size(), pos)`.
    std::size_t rfind(ZStringView needle, std::size_t pos = npos) const noexcept;
    std::size_t rfind(const char* needle, std::size_t pos = npos) const noexcept;
    std::size_t rfind(const char* needle, std::size_t pos, std::size_t n) const noexcept;
    std::size_t rfind(char c, std::size_t pos = npos) const noexcept;

    /// The first character at or after `pos` that is in `set`.
    std::size_t find_first_of(ZStringView set, std::size_t pos = 0) const noexcept;
    std::size_t find_first_of(const char* set, std::size_t pos = 0) const noexcept;
    std::size_t find_first_of(const char* set, std::size_t pos, std::size_t n) const noexcept;
    std::size_t find_first_of(char c, std::size_t pos = 0) const noexcept;

    /// The first character at or after `pos` that is not in `set`.
    std::size_t find_first_not_of(ZStringView set, std::size_t pos = 0) const noexcept;
    std::size_t find_first_not_of(const char* set, std::size_t pos = 0) const noexcept;
    std::size_t find_first_not_of(const char* set, std::size_t pos, std::size_t n) const noexcept;
    std::size_t find_first_not_of(char c, std::size_t pos = 0) const noexcept;

    /// The last character at or before `pos` that is in `set`.
    std::size_t find_last_of(ZStringView set, std::size_t pos = npos) const noexcept;
    std::size_t find_last_of(const char* set, std::size_t pos = npos) const noexcept;
    std::size_t find_last_of(const char* set, std::size_t pos, std::size_t n) const noexcept;
    std::size_t find_last_of(char c, std::size_t pos = npos) const noexcept;

    /// The last character at or before `pos` that is not in `set`.
    std::size_t find_last_not_of(ZStringView set, std::size_t pos = npos) const noexcept;
    std::size_t find_last_not_of(const char* set, std::size_t pos = npos) const noexcept;
    std::size_t find_last_not_of(const char* set, std::size_t pos, std::size_t n) const noexcept;
    std::size_t find_last_not_of(char c, std::size_t pos = npos) const noexcept;

    bool contains(ZStringView needle) const noexcept;
    bool starts_with(char c) const noexcept { return length_ != 0 && data_[0] == c; }
    bool ends_with(char c) const noexcept { return length_ != 0 && data_[length_ - 1] == c; }
    /// An empty argument begins and ends every text.
    bool starts_with(ZStringView start) const noexcept;
    bool ends_with(ZStringView end) const noexcept;

    /// Negative, zero or positive: by the first bytes that differ, else exactly -1, 0 or 1 by the lengths.
    int compare(ZStringView other) const noexcept;
    int compare(const char* other) const noexcept;
    /// The forms with positions compare `substr(pos, n)`, and throw `std::out_of_range` "ZStringView range
    /// error" if a position lies behind the end of its own range.
    int compare(std::size_t pos, std::size_t n, ZStringView other) const;
    int compare(std::size_t pos, std::size_t n, const char* other) const;
    int compare(std::size_t pos, std::size_t n, const char* other, std::size_t count2) const;
    int compare(std::size_t pos, std::size_t n, ZStringView other, std::size_t pos2,
                std::size_t count2) const;

protected:
    constexpr TextRange() noexcept = default;
    constexpr TextRange(const char* data, std::size_t length) noexcept : length_(length), data_(data) {}
    constexpr TextRange(const TextRange&) noexcept = default;
    constexpr TextRange& operator=(const TextRange&) noexcept = default;
    ~TextRange() = default;

    /// The length of the cut of at most `n` characters at `pos`; throws if `pos` lies behind the end.
    std::size_t cutLength(std::size_t pos, std::size_t n) const {
        if (pos > length_) {
            throwTextRangeError();
        }
        return n < length_ - pos ? n : length_ - pos;
    }

    std::size_t length_ = 0;
    const char* data_ = nullptr;
};

} // namespace details
} // namespace Zelm
