#pragma once

#include <zelm/Export.h>
#include <zelm/text/TextRange.h>
#include <zelm/text/ZStringLiteral.h>

#include <cstring>
#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>
#include <type_traits>

namespace Zelm {

class ZString;

namespace details {

template <class T, class... Candidates>
inline constexpr bool kIsAnyOf = (std::is_same_v<T, Candidates> || ...);

/// Lets a template take exactly the listed types, and nothing that merely converts to them.
template <class T, class... Candidates>
using IfAnyOf = std::enable_if_t<kIsAnyOf<T, Candidates...>, int>;

} // namespace details

/// A view of characters that it does not own: a length and a pointer, passed by value.
///
/// The viewed text has to outlive it. All reading, searching and comparing is that of
/// details::TextRange, which ZString shares.
class ZELM_EXPORT ZStringView : public details::TextRange {
public:
    /// Empty, with null data.
    constexpr ZStringView() noexcept = default;
    /// The text up to its first NUL; null gives the empty view.
    constexpr ZStringView(const char* text) noexcept
        : TextRange(text, text ? std::char_traits<char>::length(text) : 0) {}
    constexpr ZStringView(const char* text, std::size_t count) noexcept : TextRange(text, count) {}
    constexpr ZStringView(ZStringLiteral literal) noexcept : TextRange(literal.data(), literal.size()) {}
    /// All characters of a `std::string` or `std::string_view`.
    template <class Text, details::IfAnyOf<Text, std::string, std::string_view> = 0>
    constexpr ZStringView(const Text& text) noexcept : TextRange(text.data(), text.size()) {}

    /// The characters that a ZString shows.
    constexpr ZStringView(const details::TextRange& text) noexcept : TextRange(text) {}

    /// The view of at most `n` characters at `pos`. Throws `std::out_of_range` "ZStringView range error" if
    /// `pos > size()`.
    ZStringView substr(std::size_t pos = 0, std::size_t n = npos) const {
        const std::size_t count = cutLength(pos, n);
        return {data_ + pos, count};
    }

    /// A copy of the characters.
    std::string to_string() const { return std::string(data_, length_); }
    operator std::string() const { return to_string(); }

    constexpr void swap(ZStringView& other) noexcept {
        const ZStringView mine = *this;
        *this = other;
        other = mine;
    }
    friend constexpr void swap(ZStringView& a, ZStringView& b) noexcept { a.swap(b); }
};

static_assert(sizeof(ZStringView) == sizeof(ZStringLiteral) && std::is_trivially_copyable_v<ZStringView>);

namespace details {

template <class T>
inline constexpr bool kIsZText = kIsAnyOf<T, ZString, ZStringView, ZStringLiteral>;

template <class T>
inline constexpr bool kIsText =
    kIsZText<T> || kIsAnyOf<std::decay_t<T>, std::string, std::string_view, const char*, char*>;

/// Two texts of any kind, one of them at least of this library. The operators take them as exact matches, so
/// that no other type that converts from text can make a call ambiguous.
template <class A, class B>
using IfTexts = std::enable_if_t<kIsText<A> && kIsText<B> && (kIsZText<A> || kIsZText<B>), int>;

inline int TextRange::compare(ZStringView other) const noexcept {
    const std::size_t common = length_ < other.length() ? length_ : other.length();
    const int difference = common == 0 ? 0 : std::memcmp(data_, other.data(), common);
    if (difference != 0 || length_ == other.length()) {
        return difference;
    }
    return length_ < other.length() ? -1 : 1;
}

inline bool equal(ZStringView a, ZStringView b) noexcept {
    return a.size() == b.size() && a.compare(b) == 0;
}

ZELM_EXPORT std::ostream& writeText(std::ostream& stream, ZStringView text);

} // namespace details

/// Writes the characters, filled to the stream's width.
template <class Text, std::enable_if_t<details::kIsZText<Text>, int> = 0>
std::ostream& operator<<(std::ostream& stream, const Text& text) {
    return details::writeText(stream, text);
}

template <class A, class B, details::IfTexts<A, B> = 0>
bool operator==(const A& a, const B& b) noexcept {
    return details::equal(a, b);
}
template <class A, class B, details::IfTexts<A, B> = 0>
bool operator!=(const A& a, const B& b) noexcept {
    return !details::equal(a, b);
}
template <class A, class B, details::IfTexts<A, B> = 0>
bool operator<(const A& a, const B& b) noexcept {
    return ZStringView(a).compare(ZStringView(b)) < 0;
}
template <class A, class B, details::IfTexts<A, B> = 0>
bool operator>(const A& a, const B& b) noexcept {
    return b < a;
}
template <class A, class B, details::IfTexts<A, B> = 0>
bool operator<=(const A& a, const B& b) noexcept {
    return !(b < a);
}
template <class A, class B, details::IfTexts<A, B> = 0>
bool operator>=(const A& a, const B& b) noexcept {
    return !(a < b);
}

} // namespace Zelm

/// Equal text has equal hashes, whichever text type holds it, `std::string` and `std::string_view` included.
template <>
struct std::hash<Zelm::ZStringView> {
    std::size_t operator()(Zelm::ZStringView text) const noexcept {
        return std::hash<std::string_view>()(text);
    }
};
