/// \file
/// Text by the runtime's current locale. Neither conversion throws: a text that cannot be converted becomes the text of
/// the failure.
#pragma once

#include "vorel/core/BaseString.h"

namespace vorel::detail {

/// Narrow to wide: "Error in text conversion", or "Out of memory for text conversion". Null gives the empty text.
void mbs2wcs(const char* source, BaseString<wchar_t>& target) noexcept;

/// Wide to narrow: "Error in text conversion", or "Out of memory in text conversion". Null gives the empty text.
/// "for" and "in" differ, and are to.
void wcs2mbs(const wchar_t* source, BaseString<char>& target) noexcept;

}  // namespace vorel::detail
