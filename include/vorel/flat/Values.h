/// \file
/// The flat interface: numbers, truth values, lists and times from and to text, and comparing texts. The rules that
/// hold for every function stand in vorelCoreC.h.
///
/// No locale has a say: digits are '0' to '9', the decimal point is '.', white space is space, tab, line feed, carriage
/// return and the no-break space.
#pragma once

#include "vorel/flat/Status.h"

#ifdef __cplusplus
extern "C" {
#endif

/// \name A whole text as one value
/// White space may stand at both ends; `VOREL_ERROR_INVALID_TEXT` when anything else does, or nothing is there.
/// \{

/// An integer, with a sign or without; "12.", "12.0" and "12.000" are 12. What does not fit wraps around, as everywhere
/// in the library. The unsigned ones take no '-'.
VOREL_API vorel_status vorel_parse_int32(const vorel_char16* text, size_t length, int32_t* value);
VOREL_API vorel_status vorel_parse_uint32(const vorel_char16* text, size_t length, uint32_t* value);
VOREL_API vorel_status vorel_parse_int64(const vorel_char16* text, size_t length, int64_t* value);
VOREL_API vorel_status vorel_parse_uint64(const vorel_char16* text, size_t length, uint64_t* value);

/// One to eight hexadecimal digits of either case, without "0x".
VOREL_API vorel_status vorel_parse_hex32(const vorel_char16* text, size_t length, uint32_t* value);

/// A decimal number with fraction and exponent. Only the first 18 digits count, leading zeros among them, and the
/// result may differ in its last bit from the nearest double: it is the same for every program of the library. Beyond
/// the range it is infinite, or 0. There are no words.
VOREL_API vorel_status vorel_parse_double(const vorel_char16* text, size_t length, double* value);

/// One of true, false, yes, no, 0, 1, t, f, y, n in any case.
VOREL_API vorel_status vorel_parse_boolean(const vorel_char16* text, size_t length, int32_t* value);

/// \}
/// \name A value at the beginning of a text
/// They read what is there, behind white space, and say how many units they have used; a text without a value gives 0,
/// and is no failure. The contracts are those of `stringToInt` and its like in vorel/values/NumberParsing.h, and of
/// `stringToBoolean` in vorel/values/BooleanParsing.h.
///
///     "42 apples"  →  42, 3 units used        "-x"  →  0, 1 unit used
/// \{

/// Reads what its name says, as told above, and sets `used` to the units that were read.
VOREL_API vorel_status vorel_scan_int32(const vorel_char16* text, size_t length, int32_t* value, size_t* used);
VOREL_API vorel_status vorel_scan_uint32(const vorel_char16* text, size_t length, uint32_t* value, size_t* used);
VOREL_API vorel_status vorel_scan_int64(const vorel_char16* text, size_t length, int64_t* value, size_t* used);
VOREL_API vorel_status vorel_scan_uint64(const vorel_char16* text, size_t length, uint64_t* value, size_t* used);
VOREL_API vorel_status vorel_scan_hex32(const vorel_char16* text, size_t length, uint32_t* value, size_t* used);
VOREL_API vorel_status vorel_scan_double(const vorel_char16* text, size_t length, double* value, size_t* used);
VOREL_API vorel_status vorel_scan_boolean(const vorel_char16* text, size_t length, int32_t* value, size_t* used);

/// \}
/// \name Lists of values
/// The output is an array, its capacity and length counted in values. `VOREL_ERROR_INVALID_TEXT` when the text is not
/// read to its end. See vorel/values/ListParsing.h for what each takes and passes over.
/// \{

/// Integers between commas; a fraction is cut off, nothing between two commas is 0.
///
///     "1,2.9,-3"  →  1 2 -3
VOREL_API vorel_status vorel_parse_int32_list(const vorel_char16* text, size_t length, int32_t* values, size_t capacity,
                                              size_t* count);
VOREL_API vorel_status vorel_parse_uint32_list(const vorel_char16* text, size_t length, uint32_t* values,
                                               size_t capacity, size_t* count);

/// Numbers between white space; what has not the form of a number is passed over.
///
///     "1.5 2e3 abc 4"  →  1.5 2000 4
VOREL_API vorel_status vorel_parse_double_list(const vorel_char16* text, size_t length, double* values, size_t capacity,
                                               size_t* count);

/// Truth values between white space: true, t, false, f and integers; any other word is passed over.
///
///     "T f 1 0 yes"  →  1 0 1 0
VOREL_API vorel_status vorel_parse_boolean_list(const vorel_char16* text, size_t length, int32_t* values,
                                                size_t capacity, size_t* count);

/// From `start` to `end`, both included; -1 stands for an end that is open.
// NOLINTNEXTLINE(modernize-use-using): C reads this, too
typedef struct vorel_range {
    int32_t start;  ///< the first number, or -1: from the beginning
    int32_t end;    ///< the last number, or -1: to the end
} vorel_range;

/// Ranges between commas. No number can be negative; empty items are passed over.
///
///     "1-5,7,12-"  →  1 to 5, 7 to 7, 12 to -1
VOREL_API vorel_status vorel_parse_ranges(const vorel_char16* text, size_t length, vorel_range* ranges, size_t capacity,
                                          size_t* count);

/// \}
/// \name Values as text
/// \{

enum {
    VOREL_FORMAT_DEFAULT = 0,
    VOREL_FORMAT_JSON = 1,  ///< special values as JSON strings, and a digit behind the point of every mantissa
};

/// Decimal digits, 20 units at most.
VOREL_API vorel_status vorel_format_int64(int64_t value, vorel_char16* output, size_t capacity, size_t* outputLength);
VOREL_API vorel_status vorel_format_uint64(uint64_t value, vorel_char16* output, size_t capacity, size_t* outputLength);

/// A double in the one form that the library has for it, 63 units at most; see vorel/values/NumberFormatting.h.
///
///     123.456  →  "123.456"        0.05  →  "5.e-002", with JSON "5.0e-002"        NaN  →  "NaN", with JSON "\"NaN\""
VOREL_API vorel_status vorel_format_double(double value, int32_t options, vorel_char16* output, size_t capacity,
                                           size_t* outputLength);

/// A time in seconds since 1970-01-01 UTC, in local time or in UTC, 24 units. `VOREL_ERROR_INVALID_ARGUMENT` for a time
/// that the runtime cannot convert.
///
///     1234567890  →  "Fri Feb 13 23:31:30 2009" in UTC
VOREL_API vorel_status vorel_format_local_time(int64_t seconds, vorel_char16* output, size_t capacity,
                                               size_t* outputLength);
VOREL_API vorel_status vorel_format_utc_time(int64_t seconds, vorel_char16* output, size_t capacity,
                                             size_t* outputLength);

/// Microseconds since 1970-01-01 UTC.
VOREL_API vorel_status vorel_current_time(int64_t* microseconds);

/// The system's text for one of its error codes, in the user's language; empty for a code without one.
VOREL_API vorel_status vorel_system_error_text(int32_t code, vorel_char16* output, size_t capacity,
                                               size_t* outputLength);

/// \}
/// \name Lists of texts
/// A list of texts is one text in which every item is followed by a zero, and the list counted with those zeros: "a",
/// "bc" is the five units 'a' 0 'b' 'c' 0, no item is no unit.
/// \{

/// The pieces of `text` between the occurrences of the whole `delimiter`. Neighbouring delimiters give empty pieces, a
/// delimiter at the very end gives none.
///
///     "a::b::" at "::"  →  "a" "b"
VOREL_API vorel_status vorel_split_text(const vorel_char16* text, size_t length, const vorel_char16* delimiter,
                                        size_t delimiterLength, vorel_char16* items, size_t capacity,
                                        size_t* itemsLength);

/// The pieces of `text` between the characters that stand in `delimiters`. An item in double quotes may hold
/// delimiters, and '""' for a double quote; where the quotes are wrong the item is taken as it stands. If `trim` is not
/// 0, white space at both ends of an item goes.
///
///     a,"b,c","d""e" at ","  →  a   b,c   d"e
VOREL_API vorel_status vorel_split_list(const vorel_char16* text, size_t length, const vorel_char16* delimiters,
                                        size_t delimitersLength, int32_t trim, vorel_char16* items, size_t capacity,
                                        size_t* itemsLength);

/// One text of the items with `delimiter` between neighbours, which `vorel_split_list` takes apart again: an item that
/// holds the delimiter or a double quote is quoted. `VOREL_ERROR_INVALID_TEXT` when no zero stands at the end of the
/// last item; `VOREL_ZERO_TERMINATED` has no meaning here, and is `VOREL_ERROR_INVALID_ARGUMENT`.
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
    VOREL_COMPARE_REVERSE = 0x100,        ///< the texts change places
};

/// Sets `order` to -1, 0 or 1, as `a` comes before, is equal to, or comes behind `b`. Units are compared as numbers.
///
///     "file9", "file10"  →  1, with VOREL_COMPARE_NUMERIC -1
VOREL_API vorel_status vorel_compare(const vorel_char16* a, size_t aLength, const vorel_char16* b, size_t bLength,
                                     uint32_t flags, int32_t* order);

/// Whether `version` is at least `required`, number by number; any one character separates two numbers. A version with
/// fewer numbers than required fails, also when the missing ones are zero. False for an empty text.
///
///     "10.2", "9.9"  →  1        "1.2", "1.2.0"  →  0
VOREL_API vorel_status vorel_version_at_least(const vorel_char16* version, size_t versionLength,
                                              const vorel_char16* required, size_t requiredLength, int32_t* isAtLeast);

/// \}

#ifdef __cplusplus
}
#endif
