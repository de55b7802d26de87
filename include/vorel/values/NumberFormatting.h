/// \file
/// Conversion of numbers to text. The text is the same on every machine: fifteen significant digits, exponents with
/// three digits, fixed words for the special values. The library computes the digits itself from the exact value, so
/// the result does not depend on the runtime or the locale. Only the `append...` functions throw.
///
/// Every function may be called from any thread. No other thread may change any of the `size` units of a buffer during
/// a call, because the call may also rewrite units with their old values.
#pragma once

#include "vorel/Export.h"
#include "vorel/core/BaseString.h"
#include "vorel/values/Doubles.h"

namespace vorel::util {

/// Options for the format of numbers; bits.
enum FormattingOptions : int {
    FO_Default = 0,
    FO_JSON = 1,  ///< special values are JSON strings; a mantissa with an exponent has a digit after the point
};

/// Writes `value` to `buffer` of `size` characters and returns the buffer.
///
/// | value                          | `FO_Default`     | `FO_JSON`           |
/// |--------------------------------|------------------|---------------------|
/// | 0.0 and -0.0                   | 0                | 0                   |
/// | 123.456                        | 123.456          | 123.456             |
/// | 1e20                           | 1e+020           | 1.0e+020            |
/// | 0.05                           | 5.e-002          | 5.0e-002            |
/// | infinite                       | Inf, -Inf        | "Infinity", "-Infinity" |
/// | the quiet NaN of payload 1954  | NA               | "NA"                |
/// | every other NaN                | NaN              | "NaN"               |
///
/// For a magnitude of 0.1 or more, the text is the result of "%.15g", but an exponent has at least three digits. An
/// exact tie is rounded to the even digit. Below 0.1 there is always an exponent, and a tie is rounded away from zero.
/// Both rules are by design.
///
/// A narrow buffer must not be null and must have space for 64 characters, whatever `size` is. The words in the table
/// and the texts for magnitudes of 0.1 or more are truncated to `size - 1` characters, and the unit at `size - 1`
/// becomes a terminator. If `size` is 0, these texts are not written. For magnitudes of 0.1 or more, the third digit of
/// the exponent and the ".0" of `FO_JSON` are added only if they fit. For 0.0 and -0.0, `size` has no effect. For other
/// magnitudes below 0.1, `size` only decides whether the exponent gets a third digit.
///
/// For a wide buffer, at most `size` units are written, including the terminator. By design, a text that does not fit
/// has no terminator. If the wide buffer is null, the result is null. In both forms, the rest of the buffer is
/// unchanged.
VOREL_API const char* doubleToString(double value, char* buffer, unsigned long long size, FormattingOptions options);
VOREL_API const wchar_t* doubleToString(double value, wchar_t* buffer, unsigned long long size,
                                        FormattingOptions options);

/// Appends `value`: a double in the form of `doubleToString` with `FO_Default`, an integer in decimal.
/// \throws MemoryException if `text` cannot grow.
VOREL_API void appendDouble(BaseString<wchar_t>& text, double value);
VOREL_API void appendInteger(BaseString<wchar_t>& text, int value);

/// Writes at most `size - 1` characters of `value` in decimal. Writes a terminator after them and another at index
/// `size - 1`. If `size` is 0, writes nothing. The rest of the buffer is unchanged. Returns the buffer; null for a null
/// buffer. A size of 21 is always enough.
VOREL_API const char* Int64ToStr(long long value, char* buffer, unsigned long long size);
VOREL_API const wchar_t* Int64ToStr(long long value, wchar_t* buffer, unsigned long long size);
VOREL_API const char* UInt64ToStr(unsigned long long value, char* buffer, unsigned long long size);
VOREL_API const wchar_t* UInt64ToStr(unsigned long long value, wchar_t* buffer, unsigned long long size);

}  // namespace vorel::util
