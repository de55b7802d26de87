/// \file
/// Truth values from zero-terminated text. Nothing in here allocates, throws or asks the locale, and everything may be
/// called from any thread. Words are compared without regard to the case of the letters A to Z.
#pragma once

#include "vorel/Export.h"

namespace vorel::util {

/// The library's own spellings of the two truth values: "true" and "false".
extern VOREL_API const wchar_t* const TAL_True;
extern VOREL_API const wchar_t* const TAL_False;

/// Reads a truth value behind white space: one of the characters 1 t y 0 f n, one of the words true, false, yes, no,
/// on, off with nothing behind it, or an integer ("10", "-3", "2.0" are true). In wide text the single digits 2 to 9
/// are true as well, in narrow text they are nothing; that difference is meant. Anything else is false. `end`, if not
/// null, receives the place behind what was read, or where that should have begun. Null gives false, and a null end.
VOREL_API bool stringToBoolean(const char* text, char** end) noexcept;
VOREL_API bool stringToBoolean(const wchar_t* text, wchar_t** end) noexcept;

/// Whether the text behind white space is one of true, false, yes, no, 0, 1, t, f, y, n: fewer than `stringToBoolean`
/// takes, on purpose.
VOREL_API bool canCoerceToBoolean(const char* text) noexcept;
VOREL_API bool canCoerceToBoolean(const wchar_t* text) noexcept;

}  // namespace vorel::util
