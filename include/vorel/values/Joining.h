/// \file
/// Joining strings into one text that `singleStringToMultipleStrings` can take apart again.
#pragma once

#include "vorel/Export.h"
#include "vorel/core/Array.h"
#include "vorel/core/BaseString.h"

namespace vorel::util {

/// Sets `result` to the items with `delimiter` between neighbours. An item that holds the delimiter or a double quote
/// is put in double quotes, its own doubled. One item alone that already begins and ends with a double quote is taken
/// as it is. The delimiter may lie in `result`, and `result` may be one of the items.
///
/// Whether an item holds the delimiter is found in one pass that never goes back: "aab" is not seen to hold "ab", and
/// stays without quotes. That is meant.
///
///     a   b,c   d"e with ","  →  a,"b,c","d""e"
///
/// \throws MemoryException; `result` then holds the items so far.
VOREL_API void multipleStringsToSingleString(const Array<BaseString<wchar_t>>& items, const wchar_t* delimiter,
                                             BaseString<wchar_t>& result);

/// The same into a new string.
VOREL_API BaseString<wchar_t> multipleStringsToSingleString(const Array<BaseString<wchar_t>>& items,
                                                            const wchar_t* delimiter);

}  // namespace vorel::util
