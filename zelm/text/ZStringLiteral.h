#pragma once

#include <cstddef>
#include <string>

namespace Zelm {

/// Text of static lifetime that ends in a NUL: the constants of a program. A ZString made of one allocates
/// nothing.
class ZStringLiteral {
public:
    constexpr ZStringLiteral(const char* text, std::size_t length) noexcept : length_(length), data_(text) {}

    constexpr std::size_t size() const noexcept { return length_; }
    constexpr const char* data() const noexcept { return data_; }

    explicit constexpr operator const char*() const noexcept { return data_; }
    /// Measures the text by its NUL, whatever the length says.
    operator std::string() const { return std::string(data_); }

private:
    std::size_t length_;
    const char* data_;
};

} // namespace Zelm
