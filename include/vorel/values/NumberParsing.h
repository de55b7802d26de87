/// \file
/// Numbers from zero-terminated text. Nothing in here allocates, locks, throws or asks the locale, and everything may
/// be called from any thread.
///
/// A scan stops at the first character that is not part of the number; `end`, if it is not null, receives that place.
/// White space is space, tab, line feed and carriage return, and in wide text the no-break space U+00A0. Digits are '0'
/// to '9', the decimal point is '.', and there are no words ("NaN", "Inf").
///
/// | text      | stringToInt | tryStringToInteger | canCoerceToInteger | stringToDouble | tryStringToDouble |
/// |-----------|-------------|--------------------|--------------------|----------------|-------------------|
/// | " 42 "    | 42          | 42                 | yes                | 42             | 42                |
/// | "-12.00"  | -12, at '.' | -12                | yes                | -12            | -12               |
/// | "0123"    | 123         | 123                | with leading zeros | 123            | 123               |
/// | "1e0"     | 1, at 'e'   | no                 | no                 | 1              | no                |
/// | "abc"     | 0           | no                 | no                 | 0              | no                |
#pragma once

#include "vorel/Export.h"

namespace vorel::util {

/// Signed and unsigned decimal integers: white space, one sign, digits, and with `skipTrailingSpace` the white space
/// behind them. What does not fit wraps around; that is meant. An unsigned number takes no '-': the scan stops there,
/// with 0. Nothing is rolled back: for "  -x" the result is 0 and `end` is at the 'x'. Null gives 0, and a null end.
VOREL_API int stringToInteger(const char* text, const char** end, bool skipTrailingSpace) noexcept;
VOREL_API int stringToInteger(const wchar_t* text, const wchar_t** end, bool skipTrailingSpace) noexcept;
VOREL_API long long stringToInteger64(const char* text, const char** end, bool skipTrailingSpace) noexcept;
VOREL_API long long stringToInteger64(const wchar_t* text, const wchar_t** end, bool skipTrailingSpace) noexcept;
VOREL_API unsigned long long stringToUnsignedInteger64(const char* text, const char** end,
                                                       bool skipTrailingSpace) noexcept;
VOREL_API unsigned long long stringToUnsignedInteger64(const wchar_t* text, const wchar_t** end,
                                                       bool skipTrailingSpace) noexcept;

/// The same, always with the white space behind the digits. `end` points into the caller's text.
VOREL_API int stringToInt(const char* text, char** end) noexcept;
VOREL_API int stringToInt(const wchar_t* text, wchar_t** end) noexcept;
VOREL_API unsigned int stringToUInt(const char* text, char** end) noexcept;
VOREL_API unsigned int stringToUInt(const wchar_t* text, wchar_t** end) noexcept;
VOREL_API long long stringToInt64(const char* text, char** end) noexcept;
VOREL_API long long stringToInt64(const wchar_t* text, wchar_t** end) noexcept;
VOREL_API unsigned long long stringToUInt64(const char* text, char** end) noexcept;
VOREL_API unsigned long long stringToUInt64(const wchar_t* text, wchar_t** end) noexcept;

/// Hexadecimal digits of either case between white space; no sign, and no "0x". Of wide text at most 8 digits are read,
/// of narrow text 16, of which the last 8 count: that difference is meant. Null gives 0, and a null end.
///
///     "1234567890"  →  0x12345678, at the '9' (wide); 0x34567890, at the end (narrow)
VOREL_API int hexToInteger(const char* text, char** end) noexcept;
VOREL_API int hexToInteger(const wchar_t* text, wchar_t** end) noexcept;
VOREL_API int hexToInt(const char* text, char** end) noexcept;
VOREL_API int hexToInt(const wchar_t* text, wchar_t** end) noexcept;

/// A decimal number with fraction and exponent. Only the first 18 digits count, leading zeros among them, and the
/// result may differ in its last bit from the nearest double: every program that follows the same steps gets the same
/// bits. Beyond the range the result is infinite, or 0. A marker without digits is taken as well ("1e" is 1). The white
/// space behind the number is not skipped.
/// Without any digit the result is 0.0 (-0.0 behind a '-') and `end` is `text`. Null gives 0.0, and a null end.
///
///     "1.5e3x"  →  1500.0, at the 'x'
VOREL_API double stringToDouble(const char* text, char** end) noexcept;
VOREL_API double stringToDouble(const wchar_t* text, wchar_t** end) noexcept;

/// Whether the whole text, white space at both ends aside, is an integer; "12.", "12.0" and "12.000" are, too. `value`
/// is left alone for null, and holds what was read otherwise, also when the answer is no.
VOREL_API bool tryStringToInteger(const char* text, int& value) noexcept;
VOREL_API bool tryStringToInteger(const wchar_t* text, int& value) noexcept;

/// Whether the whole text, white space at both ends aside, is a number. An exponent of 0 is refused ("1e0", "1e"), on
/// purpose, with the mantissa in `value`. `value` is left alone for null and for a text without digits, and holds the
/// number in front of what does not belong to it otherwise.
VOREL_API bool tryStringToDouble(const char* text, double& value) noexcept;
VOREL_API bool tryStringToDouble(const wchar_t* text, double& value) noexcept;

/// Whether the whole text has the form of an integer, as `tryStringToInteger` takes it. Without `allowLeadingZeros`,
/// "0123" is refused, while "00" and "0123.0" pass.
VOREL_API bool canCoerceToInteger(const char* text, bool allowLeadingZeros) noexcept;
VOREL_API bool canCoerceToInteger(const wchar_t* text, bool allowLeadingZeros) noexcept;

/// Whether the whole text has the form of a number. An exponent needs a digit, which may be 0. Without
/// `allowLeadingZeros`, "007" is refused, while "007.5" and "007e1" pass.
VOREL_API bool canCoerceToDouble(const char* text, bool allowLeadingZeros) noexcept;
VOREL_API bool canCoerceToDouble(const wchar_t* text, bool allowLeadingZeros) noexcept;

}  // namespace vorel::util
