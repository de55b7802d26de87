/// \file
/// Cutting texts into lists of strings. White space is space, tab, line feed and carriage return, and in wide text the
/// no-break space U+00A0. The arrays are the caller's; otherwise everything may be called from any thread.
#pragma once

#include "vorel/Export.h"
#include "vorel/core/Array.h"
#include "vorel/core/BaseString.h"

namespace vorel::util {

/// Appends the pieces of `text` between the occurrences of the whole `delimiter` to `parts`. Neighbouring delimiters
/// give empty parts, a delimiter at the very end gives none. With a null or empty delimiter the text is one part; a
/// null or empty text adds nothing. `text` and `delimiter` may be elements of `parts`.
///
///     "a::b::" at "::"  →  "a" "b"        "a::::b" at "::"  →  "a" "" "b"
///
/// \throws MemoryException; `parts` then holds the pieces so far.
VOREL_API void splitString(const char* text, const char* delimiter, Array<BaseString<char>>& parts);
VOREL_API void splitString(const wchar_t* text, const wchar_t* delimiter, Array<BaseString<wchar_t>>& parts);

/// Replaces `items` by the pieces of `text` between the characters that stand in `delimiters` (null: none). An item in
/// double quotes may hold delimiters, and '""' for a double quote. Where the quotes are wrong (something else behind
/// the closing one, or no closing one) the item is taken as it stands, quotes and all, up to the next delimiter. With
/// `trim`, white space at both ends of each item goes. A delimiter at the very end adds no item.
///
///     a,"b,c","d""e" at ","  →  a   b,c   d"e        "ab"x,c at ","  →  "ab"x   c
///
/// `items` is emptied first. The text and the delimiters may be elements of it.
/// \throws MemoryException; `items` then holds the pieces so far.
VOREL_API void singleStringToMultipleStrings(const wchar_t* text, const wchar_t* delimiters,
                                             Array<BaseString<wchar_t>>& items, bool trim);
VOREL_API void singleCStringToMultipleCStrings(const char* text, const char* delimiters, Array<BaseString<char>>& items,
                                               bool trim);

/// Cuts `text` in place at the first character of `delimiter` (no other counts; null never cuts): each such character
/// becomes a terminator. `tokens` receives the starts of the pieces, which point into the text, and the result is their
/// number. `delimiter` may lie in the text. A text, also an empty one, has one token at least; null has none. With
/// `maxTokens` of 0 or more, the last token keeps the rest of the text once there are that many; 0 counts as 1, and a
/// negative number sets no limit.
///
///     "a,b,,c" at ","  →  "a" "b" "" "c", 4        with 2 tokens at most  →  "a" "b,,c", 2
///
/// For a limit up to 1,024, room for as many tokens is reserved first; for a larger one, no more than the text can
/// have. \throws MemoryException, with the record "vorel::util::tokenizeString: Vorel exception rethrown".
VOREL_API int tokenizeString(char* text, const char* delimiter, Array<char*>& tokens, int maxTokens);
VOREL_API int tokenizeString(wchar_t* text, const wchar_t* delimiter, Array<wchar_t*>& tokens, int maxTokens);

}  // namespace vorel::util
