/// \file
/// Splits texts into lists of strings. White space is space, tab, line feed and carriage return, and in wide text also
/// the no-break space U+00A0. Every function may be called from any thread. During a call, no other thread may use the
/// array, or the text of `tokenizeString`.
#pragma once

#include "vorel/Export.h"
#include "vorel/core/Array.h"
#include "vorel/core/BaseString.h"

namespace vorel::util {

/// Splits `text` at each occurrence of the whole `delimiter` and appends the parts to `parts`. Adjacent delimiters give
/// empty parts; a delimiter at the very end does not. With a null or empty delimiter the text is one part. A null or
/// empty text adds nothing. `text` and `delimiter` may be elements of `parts`.
///
///     "a::b::" at "::"  ->  "a" "b"        "a::::b" at "::"  ->  "a" "" "b"
///
/// \throws MemoryException; `parts` then holds the parts found so far.
VOREL_API void splitString(const char* text, const char* delimiter, Array<BaseString<char>>& parts);
VOREL_API void splitString(const wchar_t* text, const wchar_t* delimiter, Array<BaseString<wchar_t>>& parts);

/// Splits `text` at each character in `delimiters` (null: none) and replaces `items` by the parts. An item in double
/// quotes may contain delimiters, and two consecutive double quotes in it are one double quote. The opening quote must
/// be the first character of the item, even with `trim`. If the quotes are incorrect (text after the closing quote, or
/// no closing quote), they are ordinary characters of the item, which ends at the first delimiter. With `trim`, white
/// space at both ends of each item is removed, even if it was inside the quotes. A delimiter at the very end adds no
/// item. A null or empty text has no items.
///
///     a,"b,c","d""e" at ","  ->  a   b,c   d"e        "a,b"x,c at ","  ->  "a   b"x   c
///
/// The text and the delimiters may be elements of `items`. In this case, the old elements are released last.
/// \throws MemoryException; `items` then holds the parts found so far.
VOREL_API void singleStringToMultipleStrings(const wchar_t* text, const wchar_t* delimiters,
                                             Array<BaseString<wchar_t>>& items, bool trim);
VOREL_API void singleCStringToMultipleCStrings(const char* text, const char* delimiters, Array<BaseString<char>>& items,
                                               bool trim);

/// Splits `text` in place at each occurrence of the first character of `delimiter`, and overwrites each occurrence with
/// a terminator. The other characters of `delimiter` are ignored; a null or empty `delimiter` never splits. The
/// elements of `tokens` are replaced by pointers to the tokens in `text`, and the result is their number. `delimiter`
/// may point into the text. A text, even an empty one, has at least one token; null has none. If `maxTokens` is 0 or
/// more, there are at most that many tokens, and the last contains the rest of the text; 0 counts as 1. A negative
/// `maxTokens` sets no limit.
///
///     "a,b,,c" at ","  ->  "a" "b" "" "c", 4        with 2 tokens at most  ->  "a" "b,,c", 2
///
/// If `maxTokens` is from 1 to 1,024, slots for that many tokens are reserved first. For a larger value, the number
/// of reserved slots is at most the number of tokens that the text can have.
/// \throws MemoryException, with the record "vorel::util::tokenizeString: Vorel exception rethrown". `tokens` then
///         holds the tokens found so far, and the text may be split in part.
VOREL_API int tokenizeString(char* text, const char* delimiter, Array<char*>& tokens, int maxTokens);
VOREL_API int tokenizeString(wchar_t* text, const wchar_t* delimiter, Array<wchar_t*>& tokens, int maxTokens);

}  // namespace vorel::util
