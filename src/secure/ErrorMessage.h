/// \file
/// The system's text for an error, after the name of the failed call.
#pragma once

#include "vorel/core/BaseString.h"

namespace vorel::detail {

/// Sets `text` to "context: system text for `error`".
/// \throws MemoryException if the text cannot be stored.
void GetErrorMessage(const wchar_t* context, int error, BaseString<wchar_t>& text);

}  // namespace vorel::detail
