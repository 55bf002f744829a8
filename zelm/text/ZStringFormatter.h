#pragma once

#include <zelm/text/ZString.h>

#include <vector>

namespace Zelm {

/// Composes text from a format with numbered markers, "%1" to "%99":
///
///     ZStringFormatter("%1 of %2").arg(3).arg(total).toString()
///
/// The n-th `arg` call gives the text of marker n. Markers stand in any order and any number of times; one
/// without an argument, "%0" too, disappears. At most two digits belong to a marker, and both do if there are
/// two: "%10" is never "%1" before a "0". Write "%%" for a '%'; a '%' at the very end stays as well, one
/// before any other character is dropped. What stands between "%%" and the next '%' is ordinary text.
///
/// `arg` takes a field width in bytes, as `padString` does: blanks fill the text up on the left or, for a
/// negative width, on the right; longer text is not cut.
///
/// The text is made by the `arg` call itself, in a Storage of its own unless it is said to share.
///
/// A formatter is used by one thread at a time. If memory runs out, `std::bad_alloc` leaves it as it was.
class ZELM_EXPORT ZStringFormatter {
public:
    /// Shares the characters of `format`. The flag is kept for the caller and copied along; it has no effect
    /// on the result.
    explicit ZStringFormatter(const ZString& format, bool flag = false) : format_(format), flag_(flag) {}

    /// Shares the characters of `value` at width 0.
    ZStringFormatter& arg(const ZString& value, int width = 0);
    /// Copies the text up to its first NUL; null counts as empty.
    ZStringFormatter& arg(const char* value, int width = 0) { return argCopy(value, width); }
    ZStringFormatter& arg(char value, int width = 0) { return argCopy(ZStringView(&value, 1), width); }

    ZStringFormatter& arg(int value, int width = 0) { return arg(static_cast<long long>(value), width); }
    ZStringFormatter& arg(unsigned int value, int width = 0) {
        return arg(static_cast<unsigned long long>(value), width);
    }
    /// CAUTION: only the low 32 bits count, as a signed number. 4294967301 prints as "5". `long` has 64 bits
    /// on some systems and 32 on others, and the text is to be the same on all of them. For a number that may
    /// need more, call with `long long`.
    ZStringFormatter& arg(long value, int width = 0) { return arg(static_cast<int>(value), width); }
    /// CAUTION: only the low 32 bits count. `std::size_t` and `std::uint64_t` may be this type: call with
    /// `unsigned long long` for a number that may need more.
    ZStringFormatter& arg(unsigned long value, int width = 0) {
        return arg(static_cast<unsigned int>(value), width);
    }
    /// All 64 bits.
    ZStringFormatter& arg(long long value, int width = 0);
    ZStringFormatter& arg(unsigned long long value, int width = 0);

    /// As `fromDouble` writes it. The letter has no default, so that a width cannot be taken for it.
    ZStringFormatter& arg(double value, char format, int precision = 6, int width = 0);

    /// The format with its markers replaced; what replaces them is not searched for markers. Linear time, one
    /// new Storage, or none if the result is empty. More `arg` calls may follow.
    ZString toString() const;

private:
    ZStringFormatter& argCopy(ZStringView value, int width);
    ZStringFormatter& add(ZString&& text);

    ZString format_;
    std::vector<ZString> arguments_;
    [[maybe_unused]] bool flag_;
};

} // namespace Zelm
