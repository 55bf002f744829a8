#include <zelm/text/Decimal.h>
#include <zelm/text/TextConversions.h>
#include <zelm/text/ZStringFormatter.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace Zelm {

namespace {

/// The next '%' in [at, end), or `end`.
const char* findPercent(const char* at, const char* end) noexcept {
    const void* const found = at == end ? nullptr : std::memchr(at, '%', static_cast<std::size_t>(end - at));
    return found ? static_cast<const char*>(found) : end;
}

/// Gives `write` the pieces of the result, front to back.
template <class Write>
void forEachPiece(ZStringView format, const std::vector<ZString>& arguments, Write&& write) {
    const char* at = format.begin();
    const char* const end = format.end();
    while (true) {
        const char* const percent = findPercent(at, end);
        write(ZStringView(at, static_cast<std::size_t>(percent - at)));
        if (percent == end) {
            return;
        }
        at = percent + 1;
        if (at == end || *at == '%') {
            write(ZStringView(percent, 1));
            at += at != end;
        } else if (details::isDigit(*at)) {
            int number = *at++ - '0';
            if (at != end && details::isDigit(*at)) {
                number = 10 * number + (*at++ - '0');
            }
            // 0 becomes the largest index, which names no argument either.
            const std::size_t index = static_cast<std::size_t>(number) - 1;
            if (index < arguments.size()) {
                write(arguments[index]);
            }
        }
    }
}

} // namespace

ZStringFormatter& ZStringFormatter::add(ZString&& text) {
    constexpr std::size_t kUsualCount = 4;
    if (arguments_.capacity() == 0) {
        arguments_.reserve(kUsualCount);
    }
    arguments_.push_back(std::move(text));
    return *this;
}

ZStringFormatter& ZStringFormatter::argCopy(ZStringView value, int width) {
    return add(details::padded(value, width));
}

ZStringFormatter& ZStringFormatter::arg(const ZString& value, int width) {
    return add(padString(value, width));
}

ZStringFormatter& ZStringFormatter::arg(long long value, int width) {
    return add(details::decimal(value, width));
}

ZStringFormatter& ZStringFormatter::arg(unsigned long long value, int width) {
    return add(details::decimal(value, width));
}

ZStringFormatter& ZStringFormatter::arg(double value, char format, int precision, int width) {
    return add(fromDouble(value, format, precision, width));
}

ZString ZStringFormatter::toString() const {
    std::string text;
    // One argument in many places can add up to more than any memory holds.
    const std::size_t longest = text.max_size();
    std::size_t length = 0;
    forEachPiece(format_, arguments_, [&](ZStringView piece) {
        if (piece.size() > longest - length) {
            throw std::bad_alloc();
        }
        length += piece.size();
    });
    if (length == 0) {
        return {};
    }
    text.resize(length);
    char* out = text.data();
    forEachPiece(format_, arguments_,
                 [&](ZStringView piece) { out = std::copy(piece.begin(), piece.end(), out); });
    return ZString(std::move(text));
}

} // namespace Zelm
