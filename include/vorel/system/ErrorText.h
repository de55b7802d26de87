/// \file
/// The system's texts for its error codes.
#pragma once

#include "vorel/Export.h"
#include "vorel/core/BaseString.h"

namespace vorel::util {

/// Sets `text` to the system's message for the error `code` in the user's default language, without white space at
/// either end. Returns a pointer to the text (never null). A code without a message gives the empty text.
///
///     0 -> "No Error"
///
/// Thread-safe.
/// \throws MemoryException if the text cannot be stored. `text` is then empty; for code 0 it is unchanged.
VOREL_API const wchar_t* FormatErrorMsg(int code, BaseString<wchar_t>& text);

/// Sets `text` to the message for the calling thread's last system error and returns true, even if the system has no
/// message for it. If the last error is 0, returns false and does not change `text`. Thread-safe. The call may change
/// the last error.
/// \throws MemoryException if the text cannot be stored; `text` is then empty.
VOREL_API bool GetLastErrorMsg(BaseString<wchar_t>& text);

}  // namespace vorel::util
