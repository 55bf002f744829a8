#pragma once

#include <zelm/text/ZString.h>

#include <string>
#include <vector>

/// Text to numbers and back, padding, tokens, quotes and UTF-16. No function here depends on a locale.
namespace Zelm {

/// Whether the whole text is a decimal integer: blanks and tabs, a sign, digits, blanks and tabs, and at most
/// one newline at the very end. All but the digits may be missing. The size of the number does not matter.
ZELM_EXPORT bool isValidInt(const ZString& text) noexcept;
/// The same with a decimal number: digits with at most one '.' among them or at their ends, and an exponent
/// if wanted. Neither "inf" nor "nan", nor hexadecimal digits, nor thousands separators.
ZELM_EXPORT bool isValidNumber(const ZString& text) noexcept;

/// The nearest double of a text that `isValidNumber`; infinite if it is too large. Throws
/// `std::runtime_error` "Expected a string containing a number" otherwise.
ZELM_EXPORT double toDouble(const ZString& text);
/// The same, with 0.0 for a text that is not valid. Here and below `ok`, which may be null, tells of success.
ZELM_EXPORT double toDouble_nothrow(const ZString& text, bool* ok) noexcept;

/// The number of a text that `isValidNumber` ("1.5e3" too), rounded half away from zero. Throws as
/// `toDouble`, and as `throw_checked_round_range_error` if the result is no `int`.
ZELM_EXPORT int toInt(const ZString& text);
/// The same, with 0 for a text that is not valid and a number that does not fit.
ZELM_EXPORT int toInt_nothrow(const ZString& text, bool* ok) noexcept;

/// The same for 32-bit unsigned numbers; the result has their bits. Every negative number is out of range,
/// one that would be rounded to zero too.
ZELM_EXPORT int toUnsignedInt(const ZString& text);
ZELM_EXPORT int toUnsignedInt_nothrow(const ZString& text, bool* ok) noexcept;

/// Throws `std::range_error` "Overflow occured while rounding double precision value to 32-bit integer".
[[noreturn]] ZELM_EXPORT void throw_checked_round_range_error();
/// Throws `std::range_error` "Overflow occured while truncating double precision value to 32-bit integer".
[[noreturn]] ZELM_EXPORT void throw_checked_truncate_range_error();

/// Decimal text, padded as by `padString`.
ZELM_EXPORT ZString fromInt(int value, int width = 0);
ZELM_EXPORT ZString fromUnsignedInt(unsigned int value, int width = 0);
/// As `printf` prints: 'f' fixed, 'e' and 'E' scientific, 'G' the shorter of both in upper case, any other
/// letter the same in lower case. A negative precision counts as 6. Padded as by `padString`.
ZELM_EXPORT ZString fromDouble(double value, char format, int precision, int width = 0);

/// The text filled with blanks to `width` bytes on the left or, for a negative width, to `-width` bytes on
/// the right. Longer text is not cut. Width 0 shares the text, every other one makes a new Storage.
ZELM_EXPORT ZString padString(const ZString& text, int width);
/// `count` copies of `c`, in a Storage of their own. Throws `std::length_error` if they are too many.
ZELM_EXPORT ZString repeatChar(char c, std::size_t count);

/// The pieces between the characters of `text` that are in `delimiters`, sharing the characters of `text`.
/// Empty pieces, also those at both ends, are dropped unless `keep_empty`.
ZELM_EXPORT std::vector<ZString> tokenize(const ZString& text, const ZString& delimiters, bool keep_empty);
ZELM_EXPORT std::vector<std::string> tokenize_to_std(const ZString& text, const ZString& delimiters,
                                                     bool keep_empty);
/// `to_string()` of each element; leaves each with a Storage of its exact text.
ZELM_EXPORT std::vector<std::string> convertZStringVectorToStd(const std::vector<ZString>& texts);

/// The text between double quotes; quotes in it are not escaped.
ZELM_EXPORT ZString add_quotes(const ZString& text);
/// Whether there are at least two characters, the first and the last being double quotes.
ZELM_EXPORT bool enclosed_in_quotes(const ZString& text) noexcept;
/// The text without one enclosing pair of double quotes, if it has one; sharing either way.
ZELM_EXPORT ZString strip_quotes(const ZString& text) noexcept;

/// UTF-8 to UTF-16. Throws the exceptions of utf8-cpp, all derived from `utf8::exception`:
/// `utf8::invalid_utf8` "Invalid UTF-8", `utf8::invalid_code_point` "Invalid code point",
/// `utf8::not_enough_room` "Not enough space" for a character that is cut off at the end.
ZELM_EXPORT std::u16string convertZStringToUtf16(const ZString& text);
/// UTF-16 to UTF-8, always with a Storage. Throws `utf8::invalid_utf16` "Invalid UTF-16" for a surrogate
/// alone.
ZELM_EXPORT ZString convertUtf16ToZString(const std::u16string& text);

} // namespace Zelm
