/// \file
/// Conversions in the runtime's current locale. They do not throw: after a failure the result is an error text. If the
/// error text cannot be allocated, the result is empty.
#pragma once

#include "vorel/core/BaseString.h"

namespace vorel::detail {

/// Converts narrow to wide. The result is empty for null or an empty text, "Error in text conversion" for invalid text,
/// and "Out of memory for text conversion" if allocation fails.
void mbs2wcs(const char* source, BaseString<wchar_t>& target) noexcept;

/// Converts wide to narrow. The result is empty for null or an empty text, "Error in text conversion" for invalid text,
/// and "Out of memory in text conversion" if allocation fails. The two out-of-memory texts differ ("for", "in");
/// programs may compare them, so both must stay.
void wcs2mbs(const wchar_t* source, BaseString<char>& target) noexcept;

}  // namespace vorel::detail
