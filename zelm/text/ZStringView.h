#pragma once

#include <zelm/Export.h>
#include <zelm/text/TextRange.h>
#include <zelm/text/ZStringLiteral.h>

#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>

namespace Zelm {

/// Characters that somebody else owns: the argument type of search and comparison, passed by value. The text
/// has to outlive the view.
class ZELM_EXPORT ZStringView : public details::TextRange {
public:
    constexpr ZStringView() noexcept = default;
    /// Up to the first NUL; a null pointer gives an empty view.
    constexpr ZStringView(const char* text) noexcept
        : TextRange(text, text ? std::char_traits<char>::length(text) : 0) {}
    constexpr ZStringView(const char* text, std::size_t length) noexcept : TextRange(text, length) {}
    ZStringView(const std::string& text) noexcept : TextRange(text.data(), text.size()) {}
    constexpr ZStringView(const ZStringLiteral& text) noexcept : TextRange(text.data(), text.size()) {}
    /// The characters that a ZString shows.
    constexpr ZStringView(const details::TextRange& text) noexcept : TextRange(text) {}

    void swap(ZStringView& other) noexcept {
        const ZStringView before = *this;
        *this = other;
        other = before;
    }

    /// Throws `std::out_of_range` "ZStringView range error" if `position` is past the end.
    ZStringView substr(std::size_t position, std::size_t count = npos) const;

    std::string to_string() const { return std::string(data_, length_); }
    operator std::string() const { return to_string(); }
};

// Comparison, concatenation and output take views: text in any form converts to one without a copy.

inline bool operator==(ZStringView a, ZStringView b) noexcept {
    return a.size() == b.size() && a.compare(b) == 0;
}
inline bool operator!=(ZStringView a, ZStringView b) noexcept {
    return !(a == b);
}
inline bool operator<(ZStringView a, ZStringView b) noexcept {
    return a.compare(b) < 0;
}
inline bool operator>(ZStringView a, ZStringView b) noexcept {
    return b < a;
}
inline bool operator<=(ZStringView a, ZStringView b) noexcept {
    return !(b < a);
}
inline bool operator>=(ZStringView a, ZStringView b) noexcept {
    return !(a < b);
}

ZELM_EXPORT std::ostream& operator<<(std::ostream& out, ZStringView text);

} // namespace Zelm

template <>
struct std::hash<Zelm::ZStringView> {
    std::size_t operator()(Zelm::ZStringView text) const noexcept {
        return std::hash<std::string_view>()(std::string_view(text.data(), text.size()));
    }
};
