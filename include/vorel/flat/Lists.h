/// \file
/// The flat interface: lists of values and of texts. vorelCoreC.h has the rules for all functions.
///
/// Nothing depends on the locale: digits are '0' to '9', the decimal point is '.', and white space is space, tab, line
/// feed, carriage return and the no-break space.
#pragma once

#include "vorel/flat/Status.h"

#ifdef __cplusplus
extern "C" {
#endif

/// \name Lists of values
/// The output is an array of values. Its capacity and its length are counted in values. The status is
/// `VOREL_ERROR_INVALID_TEXT` if the text cannot be parsed to its end. vorel/values/ListParsing.h describes the items
/// that each function accepts or skips.
/// \{

/// Parse integers separated by commas or white space. Fractions are dropped. By design, an item without digits has the
/// value 0, such as an empty item before a comma, and white space after a comma is itself an item with the value 0. A
/// value out of range wraps around.
///
///     "1,2.9,-3"  ->  1 2 -3
VOREL_API vorel_status vorel_parse_int32_list(const vorel_char16* text, size_t length, int32_t* values, size_t capacity,
                                              size_t* count);
VOREL_API vorel_status vorel_parse_uint32_list(const vorel_char16* text, size_t length, uint32_t* values,
                                               size_t capacity, size_t* count);

/// Parses numbers separated by white space. Text that is not a number is skipped.
///
///     "1.5 2e3 abc 4"  ->  1.5 2000 4
VOREL_API vorel_status vorel_parse_double_list(const vorel_char16* text, size_t length, double* values, size_t capacity,
                                               size_t* count);

/// Parses booleans separated by white space: true, t, false, f and integers. Other words are skipped.
///
///     "T f 1 0 yes"  ->  1 0 1 0
VOREL_API vorel_status vorel_parse_boolean_list(const vorel_char16* text, size_t length, int32_t* values,
                                                size_t capacity, size_t* count);

/// A range from `start` to `end`, both included; -1 means an open end.
// NOLINTNEXTLINE(modernize-use-using): C includes this header too
typedef struct vorel_range {
    int32_t start;  ///< the first number, or -1 for no lower limit
    int32_t end;    ///< the last number, or -1 for no upper limit
} vorel_range;

/// Parses ranges separated by commas. The first '-' of an item separates the start from the end; a second '-', directly
/// before the digits of the end, is a sign. Empty items are skipped.
///
///     "1-5,7,12-"  ->  1 to 5, 7 to 7, 12 to -1
VOREL_API vorel_status vorel_parse_ranges(const vorel_char16* text, size_t length, vorel_range* ranges, size_t capacity,
                                          size_t* count);

/// \}
/// \name Lists of texts
/// A list of texts is one text with a zero after each item. Its length includes these zeros: the list of "a" and "bc"
/// has the five units 'a' 0 'b' 'c' 0. An empty list has no units.
/// \{

/// Splits `text` at each occurrence of the whole `delimiter`. Two adjacent delimiters have an empty item between them.
/// No item follows a delimiter at the end of the text. If `delimiter` is empty, the text is one item. An empty text has
/// no items.
///
///     "a::b::" at "::"  ->  "a" "b"
VOREL_API vorel_status vorel_split_text(const vorel_char16* text, size_t length, const vorel_char16* delimiter,
                                        size_t delimiterLength, vorel_char16* items, size_t capacity,
                                        size_t* itemsLength);

/// Splits `text` at each character in `delimiters`. Two adjacent delimiters have an empty item between them. No item
/// follows a delimiter at the end of the text. An item in double quotes may contain delimiters, and two consecutive
/// double quotes in it are one double quote. If the quotes are incorrect (text after the closing quote, or no closing
/// quote), they are ordinary characters of the item, which ends at the first delimiter. If `trim` is not 0, white space
/// at both ends of an item is removed.
///
///     a,"b,c","d""e" at ","  ->  a   b,c   d"e
VOREL_API vorel_status vorel_split_list(const vorel_char16* text, size_t length, const vorel_char16* delimiters,
                                        size_t delimitersLength, int32_t trim, vorel_char16* items, size_t capacity,
                                        size_t* itemsLength);

/// Joins the items with `delimiter`. An item that contains the delimiter or a double quote is put in double quotes, and
/// the double quotes in it are doubled. If there is only one item and it already begins and ends with a double quote,
/// it is not changed. If `delimiter` is one unit other than a double quote, `vorel_split_list` without `trim` can split
/// the result again, except for that single item and for an empty item at the end, which is lost.
/// vorel/values/Joining.h describes the search for a longer delimiter. The status is `VOREL_ERROR_INVALID_TEXT` if the
/// last item does not end in a zero. `VOREL_ZERO_TERMINATED` is not allowed here and gives
/// `VOREL_ERROR_INVALID_ARGUMENT`.
VOREL_API vorel_status vorel_join_list(const vorel_char16* items, size_t length, const vorel_char16* delimiter,
                                       size_t delimiterLength, vorel_char16* output, size_t capacity,
                                       size_t* outputLength);

/// \}

#ifdef __cplusplus
}
#endif
