/// \file
/// Lists of values from zero-terminated text. If `append` is true, the values are appended to the array; otherwise they
/// replace its content. The result is true if the whole text was read. If the result is false, the array holds the
/// values that were read. If memory runs out, the result is false too, and the error log has the reason; only
/// `stringToLongRanges` throws. A null text is an empty list. `text` may point into an array that the function changes.
/// Every function may be called from any thread, but no other thread may use the arrays during the call.
#pragma once

#include "vorel/Export.h"
#include "vorel/core/Array.h"

namespace vorel::util {

/// Integers separated by white space, by a comma, or by white space and then a comma. An integer may have a sign, and a
/// sign also begins the next integer ("1-2" is 1 -2). A fraction is dropped ("2.9" is 2). A value out of range wraps
/// around. By design, an item without digits has the value 0, such as "-" or an empty item before a comma, and white
/// space after a comma is itself an item with the value 0. A comma at the end of the text does not begin another item.
///
///     "1 ,2 3"  ->  1 2 3, true        "1, 2"  ->  1 0 2, true        "1;2"  ->  1, false
VOREL_API bool stringToIntegerArray(const char* text, Array<int>& values, bool append) noexcept;
VOREL_API bool stringToIntegerArray(const wchar_t* text, Array<int>& values, bool append) noexcept;
VOREL_API bool stringToUIntegerArray(const wchar_t* text, Array<unsigned int>& values, bool append) noexcept;

/// Numbers separated by white space, in the form that `canCoerceToDouble` accepts, with the values that
/// `stringToDouble` returns. Other words are skipped, including "1e". A word of 80 or more characters ends the list,
/// and the result is false.
///
///     "1.5 2e3 abc 4"  ->  1.5 2000 4, true        "1,5"  ->  nothing, true
VOREL_API bool stringToDoubleArray(const char* text, Array<double>& values, bool append) noexcept;
VOREL_API bool stringToDoubleArray(const wchar_t* text, Array<double>& values, bool append) noexcept;

/// Booleans separated by white space: true, t, false and f in either case, and integers as `stringToBoolean` reads them
/// (including 2 to 9, in both widths). Other words are skipped, including "yes". A word of 80 or more characters ends
/// the list, and the result is false.
///
///     "T f 1 0 yes 3"  ->  true false true false true, true
VOREL_API bool stringToBooleanArray(const char* text, Array<bool>& values, bool append) noexcept;
VOREL_API bool stringToBooleanArray(const wchar_t* text, Array<bool>& values, bool append) noexcept;

/// Whether the text has only digits, signs and white space, like a list of integers separated by white space. By
/// design, commas and points are not accepted, but the position of a sign is not checked. True for a text without
/// digits, for an empty text and for null.
VOREL_API bool canCoerceToIntegerArray(const char* text) noexcept;
VOREL_API bool canCoerceToIntegerArray(const wchar_t* text) noexcept;

/// Ranges separated by commas: "1-5" gives the start 1 and the end 5, "7" gives 7 for both, and an open end is -1
/// ("5-", "-5"). By design, only the first '-' of an item separates the start from the end, so a start cannot be
/// negative. A '-' directly before the digits of the end is a sign: "3--5" gives the end -5. A sign without digits is
/// 0: "+" gives 0 for both, and "5--" gives the end 0. A value out of range wraps around. Empty items are skipped. The
/// ranges replace the content of both arrays.
///
///     "1-5,7"  ->  starts 1 7, ends 5 7        " 3 - 9 , 12-"  ->  starts 3 12, ends 9 -1
///
/// \throws Exception "Found nonnumeric text in numeric item: \"%ls\"" with the item. The arrays then hold the ranges
///         before the item, and the numbers in the item before the nonnumeric text, 0 for a missing number: for "5-x"
///         the start 5 and the end 0, for "x-5" only the start 0. MemoryException if memory runs out.
VOREL_API void stringToLongRanges(const wchar_t* text, Array<int>& starts, Array<int>& ends);

}  // namespace vorel::util
