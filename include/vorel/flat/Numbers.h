/// \file
/// The flat interface: numbers and booleans from and to text. vorelCoreC.h has the rules for all functions.
///
/// Nothing depends on the locale: digits are '0' to '9', the decimal point is '.', and white space is space, tab, line
/// feed, carriage return and the no-break space.
#pragma once

#include "vorel/flat/Status.h"

#ifdef __cplusplus
extern "C" {
#endif

/// \name Parsing a whole text
/// White space is allowed at both ends of a number, and before a boolean. The status is `VOREL_ERROR_INVALID_TEXT` if
/// the text contains anything else, or no value.
/// \{

/// Parses an integer with an optional sign; "12.", "12.0" and "12.000" are 12. A value out of range wraps around.
/// The functions for unsigned integers do not accept '-'.
VOREL_API vorel_status vorel_parse_int32(const vorel_char16* text, size_t length, int32_t* value);
VOREL_API vorel_status vorel_parse_uint32(const vorel_char16* text, size_t length, uint32_t* value);
VOREL_API vorel_status vorel_parse_int64(const vorel_char16* text, size_t length, int64_t* value);
VOREL_API vorel_status vorel_parse_uint64(const vorel_char16* text, size_t length, uint64_t* value);

/// Parses one to eight hexadecimal digits in either case, without "0x".
VOREL_API vorel_status vorel_parse_hex32(const vorel_char16* text, size_t length, uint32_t* value);

/// Parses a decimal number, which may have a fraction and an exponent. Only the first 18 digits count, including
/// leading zeros. The result may differ by a few units in the last place from the nearest double, but is the same in
/// every program that uses the library. A value out of range becomes infinity or 0. Near and beyond the limits of a
/// double, other rules apply: "1.5e-308" is 0, and "0e309" is NaN; see `stringToDouble` in
/// vorel/values/NumberParsing.h. Words such as "NaN" are not accepted.
VOREL_API vorel_status vorel_parse_double(const vorel_char16* text, size_t length, double* value);

/// Parses one of true, false, yes, no, 0, 1, t, f, y, n, in upper or lower case.
VOREL_API vorel_status vorel_parse_boolean(const vorel_char16* text, size_t length, int32_t* value);

/// \}
/// \name Parsing the beginning of a text
/// These functions skip white space, parse the value that follows, and report in `used` how many units they read. A
/// boolean must be the whole rest of the text. If the text has no value, the value is 0 and the status is `VOREL_OK`.
/// vorel/values/NumberParsing.h has the rules for numbers (`stringToInt` and the related functions), and
/// vorel/values/BooleanParsing.h has the rules for booleans (`stringToBoolean`).
///
///     vorel_scan_int32:   "42 apples"  ->  42, 3 units used        "-x"  ->  0, 1 unit used
///     vorel_scan_double:  "42 apples"  ->  42, 2 units used
/// \{

/// Each function parses a value of the type in the function's name, as described above, and sets `used` to the number
/// of units read.
VOREL_API vorel_status vorel_scan_int32(const vorel_char16* text, size_t length, int32_t* value, size_t* used);
VOREL_API vorel_status vorel_scan_uint32(const vorel_char16* text, size_t length, uint32_t* value, size_t* used);
VOREL_API vorel_status vorel_scan_int64(const vorel_char16* text, size_t length, int64_t* value, size_t* used);
VOREL_API vorel_status vorel_scan_uint64(const vorel_char16* text, size_t length, uint64_t* value, size_t* used);
VOREL_API vorel_status vorel_scan_hex32(const vorel_char16* text, size_t length, uint32_t* value, size_t* used);
VOREL_API vorel_status vorel_scan_double(const vorel_char16* text, size_t length, double* value, size_t* used);
VOREL_API vorel_status vorel_scan_boolean(const vorel_char16* text, size_t length, int32_t* value, size_t* used);

/// \}
/// \name Values as text
/// \{

/// The options of `vorel_format_double`.
enum {
    VOREL_FORMAT_DEFAULT = 0,
    /// NaN and the infinities are JSON strings, and a mantissa with an exponent always has a digit after the point.
    VOREL_FORMAT_JSON = 1,
};

/// Writes an integer in decimal, at most 20 units.
VOREL_API vorel_status vorel_format_int64(int64_t value, vorel_char16* output, size_t capacity, size_t* outputLength);
VOREL_API vorel_status vorel_format_uint64(uint64_t value, vorel_char16* output, size_t capacity, size_t* outputLength);

/// Writes a double in the form that vorel/values/NumberFormatting.h describes, at most 63 units.
///
///     123.456  ->  "123.456"        0.05  ->  "5.e-002", with JSON "5.0e-002"
///     NaN  ->  "NaN", with JSON "\"NaN\""
VOREL_API vorel_status vorel_format_double(double value, int32_t options, vorel_char16* output, size_t capacity,
                                           size_t* outputLength);

/// \}

#ifdef __cplusplus
}
#endif
