#pragma once

#include <zelm/text/ZString.h>

#include <charconv>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <system_error>

namespace Zelm::details {

/// The number that stands for a positive infinity in documents; a sign in front makes the negative one.
inline constexpr std::string_view kJsonInfinity = "1e+9999";

/// Steps through a document whose form is known beforehand: each member expects something, steps over it and
/// returns true. False, where something else stands, ends the scan for good: the position is lost then.
///
/// A number ends where its characters end; what has to follow it is the next expectation. What is stepped
/// over means to `Json::Reader`, followed by the conversion to that type, the same to the last bit.
class JsonScanner {
public:
    /// The document has to outlive the scanner. The NUL behind it can be looked at like any character.
    explicit JsonScanner(const std::string& document)
        : position_(document.data()), end_(document.data() + document.size()) {}

    const char* position() const noexcept { return position_; }
    bool isAtEnd() const noexcept { return position_ == end_; }

    template <std::size_t N>
    bool isAt(const char (&expected)[N]) const noexcept {
        return static_cast<std::size_t>(end_ - position_) >= N - 1 &&
               std::memcmp(position_, expected, N - 1) == 0;
    }
    template <std::size_t N>
    bool accept(const char (&expected)[N]) noexcept {
        const bool isThere = isAt(expected);
        position_ += isThere ? N - 1 : 0;
        return isThere;
    }
    /// Steps behind the next place where this text stands.
    bool skipBehind(std::string_view text) noexcept;

    /// A string with quotation marks around it.
    bool string(std::string& text);
    bool string(ZString& text);

    /// A number without point and exponent that the type holds.
    template <class Integer>
    bool integer(Integer& value) noexcept {
        const std::from_chars_result result = std::from_chars(position_, end_, value);
        position_ = result.ptr;
        return result.ec == std::errc();
    }
    /// A number, an infinity, or `null` for 0.
    bool real(double& value) noexcept;
    bool real(float& value) noexcept;
    bool boolean(bool& value) noexcept;

private:
    template <class Text>
    bool anyString(Text& text);
    bool escapedString(std::string& text);
    bool escape(std::string& text);
    bool codeUnit(std::string& text);

    const char* position_;
    const char* end_;
};

} // namespace Zelm::details
