/// \file
/// Lists of values from zero-terminated text. With `append` the values are added behind what the array holds, without
/// it they replace that. True means that the whole text was read; after false, the array keeps what was read before.
/// An array that cannot grow is a reason for false, too, and the error log names it: nothing here throws, but for
/// `stringToLongRanges`. A null text is an empty list. The arrays are the caller's; otherwise everything may be called
/// from any thread.
#pragma once

#include "vorel/Export.h"
#include "vorel/core/Array.h"

namespace vorel::util {

/// Integers, each with an optional sign, white space behind it, and one comma. A fraction is cut off ("2.9" is 2).
/// White space behind a comma, and nothing between two commas, is an item of its own, and 0; that is meant.
///
///     "1 ,2 3"  →  1 2 3, true        "1, 2"  →  1 0 2, true        "1;2"  →  1, false
VOREL_API bool stringToIntegerArray(const char* text, Array<int>& values, bool append) noexcept;
VOREL_API bool stringToIntegerArray(const wchar_t* text, Array<int>& values, bool append) noexcept;
VOREL_API bool stringToUIntegerArray(const wchar_t* text, Array<unsigned int>& values, bool append) noexcept;

/// Numbers between white space, read as `stringToDouble` reads them. What has not the form of a number is passed over;
/// a word of 80 characters or more ends the list, with false.
///
///     "1.5 2e3 abc 4"  →  1.5 2000 4, true        "1,5"  →  nothing, true
VOREL_API bool stringToDoubleArray(const char* text, Array<double>& values, bool append) noexcept;
VOREL_API bool stringToDoubleArray(const wchar_t* text, Array<double>& values, bool append) noexcept;

/// Truth values between white space: true, t, false, f in either case, and integers. Any other word is passed over,
/// "yes" among them; one of 80 characters or more ends the list, with false.
///
///     "T f 1 0 yes 3"  →  true false true false true, true
VOREL_API bool stringToBooleanArray(const char* text, Array<bool>& values, bool append) noexcept;
VOREL_API bool stringToBooleanArray(const wchar_t* text, Array<bool>& values, bool append) noexcept;

/// Whether the text is a list of integers between white space; commas and points are not accepted, on purpose. A null
/// or empty text is.
VOREL_API bool canCoerceToIntegerArray(const char* text) noexcept;
VOREL_API bool canCoerceToIntegerArray(const wchar_t* text) noexcept;

/// Ranges between commas: "1-5" gives the start 1 and the end 5, "7" both, and -1 stands for an end that is left open
/// ("5-", "-5"). So no number can be negative; that is meant. Empty items are passed over.
///
///     "1-5,7"  →  starts 1 7, ends 5 7        " 3 - 9 , 12-"  →  starts 3 12, ends 9 -1
///
/// \throws Exception "Found nonnumeric text in numeric item: \"%ls\"" with the item. The arrays hold what was read, the
///         number in front of that text included.
VOREL_API void stringToLongRanges(const wchar_t* text, Array<int>& starts, Array<int>& ends);

}  // namespace vorel::util
