#pragma once

#include <zelm/Export.h>
#include <zelm/text/ZString.h>

#include <cstddef>
#include <string>
#include <vector>

namespace Zelm {

// Numbers. None of this depends on a locale.

/// Blanks or tabs, an optional sign, decimal digits, blanks or tabs, at most one newline at the very end.
ZELM_EXPORT bool isValidInt(const ZString& text) noexcept;
/// The same with an optional fraction and an optional exponent: `1.`, `.5`, `-1.5e3`. No `inf`, `nan`,
/// hexadecimal.
ZELM_EXPORT bool isValidNumber(const ZString& text) noexcept;

/// Throws `std::runtime_error` "Expected a string containing a number". Too large gives an infinity, too
/// small a zero of the same sign.
ZELM_EXPORT double toDouble(const ZString& text);
/// 0 and `*ok` false for an invalid text; `ok` may be null.
ZELM_EXPORT double toDouble_nothrow(const ZString& text, bool* ok);

/// The number, fraction and exponent allowed, rounded to the nearest integer, halves away from zero. Throws
/// as toDouble(), and `std::range_error` "Overflow occured while rounding double precision value to 32-bit
/// integer".
ZELM_EXPORT int toInt(const ZString& text);
ZELM_EXPORT int toInt_nothrow(const ZString& text, bool* ok) noexcept;
/// The bits of a 32-bit unsigned integer. Every negative number is out of range, also one that would round to
/// 0.
ZELM_EXPORT int toUnsignedInt(const ZString& text);
ZELM_EXPORT int toUnsignedInt_nothrow(const ZString& text, bool* ok) noexcept;

ZELM_EXPORT ZString fromInt(int value, int width = 0);
ZELM_EXPORT ZString fromUnsignedInt(unsigned int value, int width = 0);
/// `format` is `e`, `E` (exponent), `f` (fixed), `G`, or anything else for the shorter of both as printf's
/// `%g`; `E` and `G` write upper-case. A negative precision counts as 6.
ZELM_EXPORT ZString fromDouble(double value, char format, int precision, int width = 0);

/// Throws `std::range_error` "Overflow occured while rounding double precision value to 32-bit integer".
[[noreturn]] ZELM_EXPORT void throw_checked_round_range_error();
/// Throws `std::range_error` "Overflow occured while truncating double precision value to 32-bit integer".
[[noreturn]] ZELM_EXPORT void throw_checked_truncate_range_error();

/// Blanks on the left for a positive width, on the right for a negative one; a longer text is not cut. Counts
/// bytes. Width 0 shares the text.
ZELM_EXPORT ZString padString(const ZString& text, int width);
/// Throws `std::length_error` for counts that no string holds.
ZELM_EXPORT ZString repeatChar(char character, std::size_t count);

/// The pieces between characters of `delimiters`, each of which separates; empty ones only if `keep_empty`
/// says so. The pieces share the text.
ZELM_EXPORT std::vector<ZString> tokenize(const ZString& text, const ZString& delimiters, bool keep_empty);
ZELM_EXPORT std::vector<std::string> tokenize_to_std(const ZString& text, const ZString& delimiters,
                                                     bool keep_empty);
/// to_string() of each element, which gives cut texts a Storage of their own.
ZELM_EXPORT std::vector<std::string> convertZStringVectorToStd(const std::vector<ZString>& texts);

/// A double quote at both ends; quotes inside are not escaped.
ZELM_EXPORT ZString add_quotes(const ZString& text);
ZELM_EXPORT bool enclosed_in_quotes(const ZString& text) noexcept;
/// Without one pair of enclosing quotes, if there is one. Shares the text.
ZELM_EXPORT ZString strip_quotes(const ZString& text);

/// Throws utf8-cpp's `utf8::invalid_utf8` "Invalid UTF-8", `utf8::invalid_code_point` "Invalid code point",
/// `utf8::not_enough_room` "Not enough space".
ZELM_EXPORT std::u16string convertZStringToUtf16(const ZString& text);
/// Throws utf8-cpp's `utf8::invalid_utf16` "Invalid UTF-16".
ZELM_EXPORT ZString convertUtf16ToZString(const std::u16string& text);

} // namespace Zelm
