#include <zelm/files/platform/posix/SystemText.h>

#include <utf8.h>

namespace Zelm::details::platform {

namespace {

/// No unit of UTF-16 takes more bytes of UTF-8, a pair of surrogates four together.
constexpr std::size_t kMaxBytesOfUnit = 3;

bool isSurrogate(char16_t unit) {
    return unit >= 0xD800 && unit < 0xE000;
}

/// Writes the text at `out` and returns its end; null if it has no form.
char* encode(std::u16string_view path, char* out) {
    for (std::size_t i = 0; i < path.size(); ++i) {
        const char16_t unit = path[i];
        if (unit < 0x80) {
            if (unit == 0) {
                return nullptr;
            }
            *out++ = unit == u'\\' ? '/' : static_cast<char>(unit);
            continue;
        }
        char32_t character = unit;
        if (isSurrogate(unit)) {
            const char16_t next = i + 1 < path.size() ? path[i + 1] : u'\0';
            if (unit >= 0xDC00 || !isSurrogate(next) || next < 0xDC00) {
                return nullptr;
            }
            character = 0x10000 + ((character - 0xD800) << 10) + (next - 0xDC00u);
            ++i;
        }
        out = utf8::unchecked::append(character, out);
    }
    return out;
}

} // namespace

SystemText::SystemText(const FilesystemPath& path) {
    const std::u16string_view text = path.native();
    const std::size_t room = text.size() * kMaxBytesOfUnit + 1;
    if (room > sizeof buffer_) {
        long_.resize(room);
        text_ = long_.data();
    }
    if (!path.has_root_name()) {
        const char* const end = encode(text, text_);
        size_ = end ? static_cast<std::size_t>(end - text_) : 0;
    }
    text_[size_] = '\0';
}

} // namespace Zelm::details::platform
