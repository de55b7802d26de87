/// \file
/// Numbers from zero-terminated text. No function allocates, locks, throws or uses the locale, and every function may
/// be called from any thread.
///
/// A scan stops at the first character that is not part of the number. `end`, if not null, receives that position.
/// White space is space, tab, line feed and carriage return, and in wide text also the no-break space U+00A0. Digits
/// are '0' to '9', and the decimal point is '.'. Words such as "NaN" and "Inf" are not accepted.
///
/// The table shows results for some texts. "At" gives the character at `end`; without "at", the whole text is read.
///
/// | text     | stringToInt | tryStringToInteger | canCoerceToInteger | stringToDouble | tryStringToDouble |
/// |----------|-------------|--------------------|--------------------|----------------|-------------------|
/// | " 42 "   | 42          | 42                 | yes                | 42, at ' '     | 42                |
/// | "-12.00" | -12, at '.' | -12                | yes                | -12            | -12               |
/// | "0123"   | 123         | 123                | only if allowed    | 123            | 123               |
/// | "1e0"    | 1, at 'e'   | no                 | no                 | 1              | no                |
/// | "abc"    | 0, at 'a'   | no                 | no                 | 0, at 'a'      | no                |
#pragma once

#include "vorel/Export.h"

namespace vorel::util {

/// Parse signed and unsigned decimal integers: white space, an optional sign, and digits. If `skipTrailingSpace` is
/// true, the white space after the digits is skipped too. By design, a value out of range wraps around. Without any
/// digit the result is 0, and `end` does not move back: for " -x", `end` is at the 'x'. An unsigned integer cannot
/// begin with a '-', so an unsigned scan of " -x" stops at the '-'. Null gives 0 and a null end.
VOREL_API int stringToInteger(const char* text, const char** end, bool skipTrailingSpace) noexcept;
VOREL_API int stringToInteger(const wchar_t* text, const wchar_t** end, bool skipTrailingSpace) noexcept;
VOREL_API long long stringToInteger64(const char* text, const char** end, bool skipTrailingSpace) noexcept;
VOREL_API long long stringToInteger64(const wchar_t* text, const wchar_t** end, bool skipTrailingSpace) noexcept;
VOREL_API unsigned long long stringToUnsignedInteger64(const char* text, const char** end,
                                                       bool skipTrailingSpace) noexcept;
VOREL_API unsigned long long stringToUnsignedInteger64(const wchar_t* text, const wchar_t** end,
                                                       bool skipTrailingSpace) noexcept;

/// The same with `skipTrailingSpace` true. `end` points into the caller's text.
VOREL_API int stringToInt(const char* text, char** end) noexcept;
VOREL_API int stringToInt(const wchar_t* text, wchar_t** end) noexcept;
VOREL_API unsigned int stringToUInt(const char* text, char** end) noexcept;
VOREL_API unsigned int stringToUInt(const wchar_t* text, wchar_t** end) noexcept;
VOREL_API long long stringToInt64(const char* text, char** end) noexcept;
VOREL_API long long stringToInt64(const wchar_t* text, wchar_t** end) noexcept;
VOREL_API unsigned long long stringToUInt64(const char* text, char** end) noexcept;
VOREL_API unsigned long long stringToUInt64(const wchar_t* text, wchar_t** end) noexcept;

/// Parse hexadecimal digits in either case, with white space on both sides; no sign, and no "0x". By design, at most 8
/// digits of wide text are read. At most 16 digits of narrow text are read, and only the last 8 of them determine the
/// value. Null gives 0 and a null end.
///
///     "1234567890"  ->  0x12345678, at the '9' (wide); 0x34567890, at the end (narrow)
VOREL_API int hexToInteger(const char* text, char** end) noexcept;
VOREL_API int hexToInteger(const wchar_t* text, wchar_t** end) noexcept;
VOREL_API int hexToInt(const char* text, char** end) noexcept;
VOREL_API int hexToInt(const wchar_t* text, wchar_t** end) noexcept;

/// Parses a decimal number with fraction and exponent. Only the first 18 digits count, including leading zeros; each
/// further digit counts as 0. The result may differ by a few units in the last place from the double that is nearest to
/// this number; the bits are the same in every program that uses the library. A value out of range becomes infinity or
/// 0. The digits that count are read as an integer, which is multiplied by a power of ten. If the power is below
/// 10^-308, the result is 0 even if the value is in range (1.5e-308 is 15 * 10^-309). If the power is above 10^308, the
/// result is infinity, or NaN if all digits that count are zeros ("0e309"). By design, the exponent wraps around at 32
/// bits ("1e4294967296" is 1). An exponent marker without digits is accepted ("1e" is 1). The white space after the
/// number is not skipped. Without any digit the result is 0.0 (-0.0 after a '-') and `end` is `text`. Null gives 0.0
/// and a null end.
///
///     "1.5e3x"  ->  1500.0, at the 'x'
VOREL_API double stringToDouble(const char* text, char** end) noexcept;
VOREL_API double stringToDouble(const wchar_t* text, wchar_t** end) noexcept;

/// Whether the whole text, except white space at both ends, is an integer, including "12.", "12.0" and "12.000". For a
/// null text, `value` is unchanged. Otherwise `value` is the integer that was read, even if the result is false.
VOREL_API bool tryStringToInteger(const char* text, int& value) noexcept;
VOREL_API bool tryStringToInteger(const wchar_t* text, int& value) noexcept;

/// Whether the whole text, except white space at both ends, is a number. By design, an exponent of 0 is rejected
/// ("1e0", "1e"); `value` is then the first 18 digits of the mantissa as an integer without sign (15 for "-1.5e0"). For
/// null and for a text without digits, `value` is unchanged. Otherwise `value` is the number before the first invalid
/// character.
VOREL_API bool tryStringToDouble(const char* text, double& value) noexcept;
VOREL_API bool tryStringToDouble(const wchar_t* text, double& value) noexcept;

/// Whether the whole text has the form of an integer as `tryStringToInteger` accepts it; false for null. Without
/// `allowLeadingZeros`, "0123" is rejected, but "00" and "0123.0" are accepted.
VOREL_API bool canCoerceToInteger(const char* text, bool allowLeadingZeros) noexcept;
VOREL_API bool canCoerceToInteger(const wchar_t* text, bool allowLeadingZeros) noexcept;

/// Whether the whole text, except white space at both ends, has the form of a number; false for null. An exponent must
/// have a digit. It may be 0, unlike an exponent in `tryStringToDouble`. Without `allowLeadingZeros`, "007" is
/// rejected, but "007.5" and "007e1" are accepted.
VOREL_API bool canCoerceToDouble(const char* text, bool allowLeadingZeros) noexcept;
VOREL_API bool canCoerceToDouble(const wchar_t* text, bool allowLeadingZeros) noexcept;

}  // namespace vorel::util
