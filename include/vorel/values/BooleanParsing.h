/// \file
/// Booleans from zero-terminated text. No function allocates, throws or uses the locale, and every function may be
/// called from any thread. Words and single characters are compared ignoring the case of the letters A to Z.
#pragma once

#include "vorel/Export.h"

namespace vorel::util {

/// The texts "true" and "false", for programs that write booleans. The library itself does not use them.
extern VOREL_API const wchar_t* const TAL_True;
extern VOREL_API const wchar_t* const TAL_False;

/// Skips white space and parses the whole rest of the text as a boolean: one of the characters 1 t y 0 f n; one of the
/// words true, false, yes, no, on, off; or an integer as `canCoerceToInteger` accepts it. An integer is true unless its
/// value modulo 2^32 is 0: "10", "-3" and "2.0" are true, and "4294967296" is false. White space may follow an integer,
/// but must not follow a letter or a word. By design, if the rest is a single digit from 2 to 9, it is true in wide
/// text but not accepted in narrow text; "7 " and "07" are true in both. Any other text is false.
///
/// `end`, if not null, receives the position after the value and the white space that follows it; for "2.0", the
/// position of the point. If the text has no value, it receives the position where the value was expected. A null text
/// gives false and a null end.
VOREL_API bool stringToBoolean(const char* text, char** end) noexcept;
VOREL_API bool stringToBoolean(const wchar_t* text, wchar_t** end) noexcept;

/// Whether the text after white space is one of true, false, yes, no, 0, 1, t, f, y, n. False for null. By design,
/// `stringToBoolean` accepts more.
VOREL_API bool canCoerceToBoolean(const char* text) noexcept;
VOREL_API bool canCoerceToBoolean(const wchar_t* text) noexcept;

}  // namespace vorel::util
