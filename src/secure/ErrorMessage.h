/// \file
/// The system's text for an error, with what failed in front.
#pragma once

#include "vorel/core/BaseString.h"

namespace vorel::detail {

/// Sets `text` to "context: message of the system for `error`".
/// \throws MemoryException when the text cannot be stored.
void GetErrorMessage(const wchar_t* context, int error, BaseString<wchar_t>& text);

}  // namespace vorel::detail
