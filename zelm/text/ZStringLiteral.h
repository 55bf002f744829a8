#pragma once

#include <cstddef>
#include <string>

namespace Zelm {

/// Text of static lifetime that ends in a NUL: the constants of a program. A ZString made of one allocates
/// nothing.
///
///     constexpr ZStringLiteral kScale("Scale");
///
/// It converts to ZStringView and ZString by itself, to `const char*` only on request, so that `==` and `+`
/// on literals never become operations on pointers.
class ZStringLiteral {
public:
    constexpr ZStringLiteral(const char* text, std::size_t length) noexcept : length_(length), data_(text) {}
    /// A literal of the source text, without the NUL at its end.
    template <std::size_t N>
    constexpr explicit ZStringLiteral(const char (&text)[N]) noexcept : length_(N - 1), data_(text) {}

    constexpr std::size_t size() const noexcept { return length_; }
    constexpr std::size_t length() const noexcept { return length_; }
    constexpr const char* data() const noexcept { return data_; }

    constexpr explicit operator const char*() const noexcept { return data_; }
    /// Measures the text by its NUL, whatever the length says.
    operator std::string() const { return std::string(data_); }

private:
    std::size_t length_;
    const char* data_;
};

} // namespace Zelm
