/// \file
/// The flat interface: numbers, booleans, lists and times from and to text, and text comparison. This header includes
/// those of the single families.
#pragma once

#include "vorel/flat/Status.h"

#ifdef __cplusplus
extern "C" {
#endif

/// \name Parsing a whole text
/// White space is allowed at both ends. `VOREL_ERROR_INVALID_TEXT` if the text contains anything else, or no value.
/// \{

/// An integer with an optional sign; "12.", "12.0" and "12.000" are 12. A value out of range wraps around, as
/// everywhere in the library. Unsigned integers do not accept '-'.
VOREL_API vorel_status vorel_parse_int32(const vorel_char16* text, size_t length, int32_t* value);
VOREL_API vorel_status vorel_parse_uint32(const vorel_char16* text, size_t length, uint32_t* value);
VOREL_API vorel_status vorel_parse_int64(const vorel_char16* text, size_t length, int64_t* value);
VOREL_API vorel_status vorel_parse_uint64(const vorel_char16* text, size_t length, uint64_t* value);

/// One to eight hexadecimal digits in either case, without "0x".
VOREL_API vorel_status vorel_parse_hex32(const vorel_char16* text, size_t length, uint32_t* value);

/// A decimal number with fraction and exponent. Only the first 18 digits count, including leading zeros. The result may
/// differ in its last bit from the nearest double, but is the same in every program that uses the library. A value out
/// of range becomes infinity or 0. Words such as "NaN" are not accepted.
VOREL_API vorel_status vorel_parse_double(const vorel_char16* text, size_t length, double* value);

/// One of true, false, yes, no, 0, 1, t, f, y, n in any case.
VOREL_API vorel_status vorel_parse_boolean(const vorel_char16* text, size_t length, int32_t* value);

/// \}
/// \name Parsing the beginning of a text
/// These functions skip white space, parse the value that follows, and return how many units they read. A text without
/// a value gives 0 and is not a failure. The contracts are those of `stringToInt` and the related functions in
/// vorel/values/NumberParsing.h, and of `stringToBoolean` in vorel/values/BooleanParsing.h.
///
///     "42 apples"  →  42, 3 units used        "-x"  →  0, 1 unit used
/// \{

/// Parses a value of the type in its name, as described above, and sets `used` to the number of units read.
VOREL_API vorel_status vorel_scan_int32(const vorel_char16* text, size_t length, int32_t* value, size_t* used);
VOREL_API vorel_status vorel_scan_uint32(const vorel_char16* text, size_t length, uint32_t* value, size_t* used);
VOREL_API vorel_status vorel_scan_int64(const vorel_char16* text, size_t length, int64_t* value, size_t* used);
VOREL_API vorel_status vorel_scan_uint64(const vorel_char16* text, size_t length, uint64_t* value, size_t* used);
VOREL_API vorel_status vorel_scan_hex32(const vorel_char16* text, size_t length, uint32_t* value, size_t* used);
VOREL_API vorel_status vorel_scan_double(const vorel_char16* text, size_t length, double* value, size_t* used);
VOREL_API vorel_status vorel_scan_boolean(const vorel_char16* text, size_t length, int32_t* value, size_t* used);

/// \}
/// \name Lists of values
/// The output is an array; its capacity and length are numbers of values. `VOREL_ERROR_INVALID_TEXT` if the text cannot
/// be parsed to its end. vorel/values/ListParsing.h describes what each function accepts and skips.
/// \{

/// Integers separated by commas. Fractions are cut off; an empty item is 0.
///
///     "1,2.9,-3"  →  1 2 -3
VOREL_API vorel_status vorel_parse_int32_list(const vorel_char16* text, size_t length, int32_t* values, size_t capacity,
                                              size_t* count);
VOREL_API vorel_status vorel_parse_uint32_list(const vorel_char16* text, size_t length, uint32_t* values,
                                               size_t capacity, size_t* count);

/// Numbers separated by white space. Text that does not have the form of a number is skipped.
///
///     "1.5 2e3 abc 4"  →  1.5 2000 4
VOREL_API vorel_status vorel_parse_double_list(const vorel_char16* text, size_t length, double* values, size_t capacity,
                                               size_t* count);

/// Booleans separated by white space: true, t, false, f and integers. Other words are skipped.
///
///     "T f 1 0 yes"  →  1 0 1 0
VOREL_API vorel_status vorel_parse_boolean_list(const vorel_char16* text, size_t length, int32_t* values,
                                                size_t capacity, size_t* count);

/// A range from `start` to `end`, both included; -1 means an open end.
// NOLINTNEXTLINE(modernize-use-using): C includes this header too
typedef struct vorel_range {
    int32_t start;  ///< the first number, or -1 for no lower limit
    int32_t end;    ///< the last number, or -1 for no upper limit
} vorel_range;

/// Ranges separated by commas. Numbers cannot be negative; empty items are skipped.
///
///     "1-5,7,12-"  →  1 to 5, 7 to 7, 12 to -1
VOREL_API vorel_status vorel_parse_ranges(const vorel_char16* text, size_t length, vorel_range* ranges, size_t capacity,
                                          size_t* count);

/// \}
/// \name Values as text
/// \{

enum {
    VOREL_FORMAT_DEFAULT = 0,
    /// Special values as JSON strings, and a digit after the point of every mantissa with an exponent.
    VOREL_FORMAT_JSON = 1,
};

/// Writes decimal digits, at most 20 units.
VOREL_API vorel_status vorel_format_int64(int64_t value, vorel_char16* output, size_t capacity, size_t* outputLength);
VOREL_API vorel_status vorel_format_uint64(uint64_t value, vorel_char16* output, size_t capacity, size_t* outputLength);

/// Writes a double in the library's only form for it, at most 63 units; see vorel/values/NumberFormatting.h.
///
///     123.456  →  "123.456"        0.05  →  "5.e-002", with JSON "5.0e-002"        NaN  →  "NaN", with JSON "\"NaN\""
VOREL_API vorel_status vorel_format_double(double value, int32_t options, vorel_char16* output, size_t capacity,
                                           size_t* outputLength);

/// Writes a time in seconds since 1970-01-01 UTC as local time or UTC, 24 units. `VOREL_ERROR_INVALID_ARGUMENT` for a
/// time that the runtime cannot convert.
///
///     1234567890  →  "Fri Feb 13 23:31:30 2009" in UTC
VOREL_API vorel_status vorel_format_local_time(int64_t seconds, vorel_char16* output, size_t capacity,
                                               size_t* outputLength);
VOREL_API vorel_status vorel_format_utc_time(int64_t seconds, vorel_char16* output, size_t capacity,
                                             size_t* outputLength);

/// Returns the current time in microseconds since 1970-01-01 UTC.
VOREL_API vorel_status vorel_current_time(int64_t* microseconds);

/// Writes the system's text for one of its error codes, in the user's language. Empty if the code has no text.
VOREL_API vorel_status vorel_system_error_text(int32_t code, vorel_char16* output, size_t capacity,
                                               size_t* outputLength);

/// \}
/// \name Lists of texts
/// A list of texts is one text in which a zero follows every item. The length of the list includes these zeros: "a",
/// "bc" is the five units 'a' 0 'b' 'c' 0. An empty list has no units.
/// \{

/// Splits `text` at each occurrence of the whole `delimiter`. Adjacent delimiters give empty items; a delimiter at the
/// very end does not.
///
///     "a::b::" at "::"  →  "a" "b"
VOREL_API vorel_status vorel_split_text(const vorel_char16* text, size_t length, const vorel_char16* delimiter,
                                        size_t delimiterLength, vorel_char16* items, size_t capacity,
                                        size_t* itemsLength);

/// Splits `text` at each character in `delimiters`. An item in double quotes may contain delimiters, and '""' for a
/// double quote. An item with incorrect quotes is taken unchanged. If `trim` is not 0, white space at both ends of an
/// item is removed.
///
///     a,"b,c","d""e" at ","  →  a   b,c   d"e
VOREL_API vorel_status vorel_split_list(const vorel_char16* text, size_t length, const vorel_char16* delimiters,
                                        size_t delimitersLength, int32_t trim, vorel_char16* items, size_t capacity,
                                        size_t* itemsLength);

/// Joins the items with `delimiter`, so that `vorel_split_list` can split them again: an item that contains the
/// delimiter or a double quote is quoted. `VOREL_ERROR_INVALID_TEXT` if the last item does not end in a zero.
/// `VOREL_ZERO_TERMINATED` is not allowed here and gives `VOREL_ERROR_INVALID_ARGUMENT`.
VOREL_API vorel_status vorel_join_list(const vorel_char16* items, size_t length, const vorel_char16* delimiter,
                                       size_t delimiterLength, vorel_char16* output, size_t capacity,
                                       size_t* outputLength);

/// \}
/// \name Comparing
/// \{

enum {
    VOREL_COMPARE_IGNORE_CASE = 0x001,    ///< A to Z, and no other letters, equal a to z
    VOREL_COMPARE_NUMERIC = 0x002,        ///< runs of digits are compared as numbers: the natural order
    VOREL_COMPARE_SLASHES_EQUAL = 0x004,  ///< '/' and '\' are equal
    VOREL_COMPARE_REVERSE = 0x100,        ///< `a` and `b` are swapped
};

/// Sets `order` to -1, 0 or 1 if `a` is before, equal to, or after `b`. Units are compared by their values.
///
///     "file9", "file10"  →  1, with VOREL_COMPARE_NUMERIC -1
VOREL_API vorel_status vorel_compare(const vorel_char16* a, size_t aLength, const vorel_char16* b, size_t bLength,
                                     uint32_t flags, int32_t* order);

/// Compares two versions number by number; any single character separates two numbers. `isAtLeast` becomes 1 if
/// `version` is at least `required`, else 0. It is 0 for an empty text, and for a version with fewer numbers than
/// `required`, even if the missing numbers are zero.
///
///     "10.2", "9.9"  →  1        "1.2", "1.2.0"  →  0
VOREL_API vorel_status vorel_version_at_least(const vorel_char16* version, size_t versionLength,
                                              const vorel_char16* required, size_t requiredLength, int32_t* isAtLeast);

/// \}

#ifdef __cplusplus
}
#endif
