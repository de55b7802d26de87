/// \file
/// Numbers to text, in one form on every machine: fifteen significant digits, exponents of three digits, fixed words
/// for the special values. The digits are written by the library itself, rounded from the exact value, so no runtime
/// and no locale has a say. Nothing in here throws but for the `append…` functions, and everything may be called from
/// any thread.
#pragma once

#include "vorel/Export.h"
#include "vorel/core/BaseString.h"

namespace vorel::util {

/// How numbers are written; bits.
enum FormattingOptions : int {
    FO_Default = 0,
    FO_JSON = 1,  ///< special values as JSON strings, and a digit behind the point of every mantissa with an exponent
};

/// Writes `value` into `buffer` of `size` characters and returns the buffer.
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
/// From a magnitude of 0.1 on the text is that of "%.15g" with a longer exponent, an exact tie rounded to the even
/// digit; below 0.1 it always has an exponent, and a tie goes away from zero. Both are meant.
///
/// Narrow: the buffer must have room for 64 characters. A smaller `size` cuts the words and the texts from 0.1 on,
/// whose last place (`size - 1`) always becomes a terminator; below 0.1 it only limits the exponent's extra digit.
/// Wide: at most `size` units are written, the terminator among them; a text that does not fit has none, on purpose. A
/// null buffer gives null. Nothing else in the buffer is written.
VOREL_API const char* doubleToString(double value, char* buffer, unsigned long long size, FormattingOptions options);
VOREL_API const wchar_t* doubleToString(double value, wchar_t* buffer, unsigned long long size,
                                        FormattingOptions options);

/// Appends `value` as `doubleToString` writes it with `FO_Default`, or as decimal digits.
/// \throws MemoryException when `text` cannot grow.
VOREL_API void appendDouble(BaseString<wchar_t>& text, double value);
VOREL_API void appendInteger(BaseString<wchar_t>& text, int value);

/// Writes `value` in decimal, at most `size - 1` characters of it, and a terminator behind them and at `size - 1`.
/// Nothing else in the buffer is written. Returns the buffer; null for a null buffer. A size of 21 is always enough.
VOREL_API const char* Int64ToStr(long long value, char* buffer, unsigned long long size);
VOREL_API const wchar_t* Int64ToStr(long long value, wchar_t* buffer, unsigned long long size);
VOREL_API const char* UInt64ToStr(unsigned long long value, char* buffer, unsigned long long size);
VOREL_API const wchar_t* UInt64ToStr(unsigned long long value, wchar_t* buffer, unsigned long long size);

/// The nearest whole number; a half goes down, towards negative infinity, on purpose.
///
///     2.5 → 2.0    -2.5 → -3.0    1.6 → 2.0
VOREL_API double round(double value) noexcept;

/// A hash over the eight bytes of `value`, the least significant first: h = h * 31 + byte. Positive and negative zero
/// differ.
///
///     1.0 → 7503
VOREL_API unsigned int doubleHashCode(double value) noexcept;

}  // namespace vorel::util
