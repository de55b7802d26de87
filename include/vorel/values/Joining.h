/// \file
/// Joins strings into one text. If the delimiter is one character other than a double quote,
/// `singleStringToMultipleStrings` can split this text again. But it does not restore an empty last item, and it
/// removes the quotes of a single item that was already quoted.
#pragma once

#include "vorel/Export.h"
#include "vorel/core/Array.h"
#include "vorel/core/BaseString.h"

namespace vorel::util {

/// Sets `result` to the items, separated by `delimiter`. An item that contains the delimiter or a double quote is put
/// in double quotes, and the double quotes in it are doubled. If there is only one item, and it already begins with a
/// double quote and ends with another, it is not changed. A null delimiter is empty, and no item contains an empty
/// delimiter. The delimiter may point into `result`, and `result` may be one of the items.
///
/// By design, the search for the delimiter in an item is one pass that never goes back: it does not find "ab" in "aab",
/// so that item is not quoted.
///
///     a   b,c   d"e with ","  ->  a,"b,c","d""e"
///
/// \throws MemoryException; `result` then holds the items joined so far. But if the first allocation fails, if the
///         delimiter points into `result`, or if `result` is one of the items, `result` keeps its old text.
VOREL_API void multipleStringsToSingleString(const Array<BaseString<wchar_t>>& items, const wchar_t* delimiter,
                                             BaseString<wchar_t>& result);

/// Returns the result as a new string.
VOREL_API BaseString<wchar_t> multipleStringsToSingleString(const Array<BaseString<wchar_t>>& items,
                                                            const wchar_t* delimiter);

}  // namespace vorel::util
