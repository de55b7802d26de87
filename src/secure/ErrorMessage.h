/// \file
/// Builds a message from the name of a failed call and the system's text for the error.
#pragma once

#include "vorel/core/BaseString.h"

namespace vorel::detail {

/// Sets `text` to "context: system text for `error`".
/// \throws MemoryException if the text cannot be stored.
void GetErrorMessage(const wchar_t* context, int error, BaseString<wchar_t>& text);

}  // namespace vorel::detail
