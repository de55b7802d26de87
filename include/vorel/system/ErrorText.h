/// \file
/// The system's texts for its error codes.
#pragma once

#include "vorel/Export.h"
#include "vorel/core/BaseString.h"

namespace vorel::util {

/// Sets `text` to the system's message for the error `code`, in the user's default language, without white space at
/// either end, and returns the text's characters (never null). A code without a message gives the empty text.
///
///     0 → "No Error"
///
/// Thread-safe.
/// \throws MemoryException when the text cannot be stored; `text` is empty then, but for code 0, which leaves it as it
///         was.
VOREL_API const wchar_t* FormatErrorMsg(int code, BaseString<wchar_t>& text);

/// Sets `text` to the message for the calling thread's last system error and returns true; with a last error of 0 it
/// returns false and leaves `text` as it was.
/// \throws MemoryException when the text cannot be stored; `text` is empty then.
VOREL_API bool GetLastErrorMsg(BaseString<wchar_t>& text);

}  // namespace vorel::util
