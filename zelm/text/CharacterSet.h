#pragma once

#include <zelm/text/ZStringView.h>

namespace Zelm::details {

/// A set of characters, made ready once for any number of searches, or by the compiler.
class CharacterSet {
public:
    constexpr explicit CharacterSet(ZStringView characters) noexcept : size_(characters.size()) {
        for (const char c : characters) {
            contained_[static_cast<unsigned char>(c)] = true;
        }
        if (size_ == 1) {
            only_ = characters.front();
        }
    }

    bool contains(char c) const noexcept { return contained_[static_cast<unsigned char>(c)]; }

    /// The first character of `text` at or after `pos` that is in the set; `npos` if there is none.
    std::size_t findFirstIn(ZStringView text, std::size_t pos) const noexcept {
        return size_ == 1 ? text.find(only_, pos) : findFirst(text, pos, true);
    }
    std::size_t findFirstNotIn(ZStringView text, std::size_t pos) const noexcept {
        return findFirst(text, pos, false);
    }
    /// The last character of `text` at or before `pos` that is in the set; `npos` if there is none.
    std::size_t findLastIn(ZStringView text, std::size_t pos) const noexcept {
        return findLast(text, pos, true);
    }
    std::size_t findLastNotIn(ZStringView text, std::size_t pos) const noexcept {
        return findLast(text, pos, false);
    }

private:
    std::size_t findFirst(ZStringView text, std::size_t pos, bool wanted) const noexcept {
        for (std::size_t i = pos; i < text.size(); ++i) {
            if (contains(text[i]) == wanted) {
                return i;
            }
        }
        return ZStringView::npos;
    }
    std::size_t findLast(ZStringView text, std::size_t pos, bool wanted) const noexcept {
        for (std::size_t i = pos < text.size() ? pos + 1 : text.size(); i-- > 0;) {
            if (contains(text[i]) == wanted) {
                return i;
            }
        }
        return ZStringView::npos;
    }

    bool contained_[256] = {};
    std::size_t size_;
    char only_ = '\0';
};

} // namespace Zelm::details
