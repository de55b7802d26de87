/// \file
/// Conversions by the runtime's current locale. They do not throw: after a failure the result is an error text.
#pragma once

#include "vorel/core/BaseString.h"

namespace vorel::detail {

/// Converts narrow to wide. Null gives the empty text, an invalid text "Error in text conversion", and a failed
/// allocation "Out of memory for text conversion".
void mbs2wcs(const char* source, BaseString<wchar_t>& target) noexcept;

/// Converts wide to narrow. Null gives the empty text, an invalid text "Error in text conversion", and a failed
/// allocation "Out of memory in text conversion". The difference between "for" and "in" is intentional.
void wcs2mbs(const wchar_t* source, BaseString<char>& target) noexcept;

}  // namespace vorel::detail
