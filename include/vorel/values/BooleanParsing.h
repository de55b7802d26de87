/// \file
/// Booleans from zero-terminated text. No function allocates, throws or uses the locale, and every function may be
/// called from any thread. Words and single characters are compared ignoring the case of the letters A to Z.
#pragma once

#include "vorel/Export.h"

namespace vorel::util {

/// The texts "true" and "false", as the library writes them.
extern VOREL_API const wchar_t* const TAL_True;
extern VOREL_API const wchar_t* const TAL_False;

/// Skips white space and parses the whole rest of the text as a boolean: one of the characters 1 t y 0 f n; one of the
/// words true, false, yes, no, on, off; or an integer ("10", "-3", "2.0" are true). White space may follow an integer,
/// but must not follow a single character or a word. By design, a single digit from 2 to 9 is true in wide text but not
/// accepted in narrow text. Any other text is false. `end`, if not null, receives the position after the value (before
/// the point of "2.0"), or where the value was expected. A null text gives false and a null end.
VOREL_API bool stringToBoolean(const char* text, char** end) noexcept;
VOREL_API bool stringToBoolean(const wchar_t* text, wchar_t** end) noexcept;

/// Whether the text after white space is one of true, false, yes, no, 0, 1, t, f, y, n. By design, `stringToBoolean`
/// accepts more.
VOREL_API bool canCoerceToBoolean(const char* text) noexcept;
VOREL_API bool canCoerceToBoolean(const wchar_t* text) noexcept;

}  // namespace vorel::util
