/// \file
/// The length of a printf-style rendering. If a formatting operation of the library must know the length of a text
/// before it renders the text, the operation measures the length in this way.
#pragma once

#include <cstdarg>

#include "vorel/Export.h"

namespace vorel::util {

/// The number of units of the text that `fmt` and `args` render to, without the terminator; negative if they cannot be
/// rendered, or if the null device cannot be opened. A `va_list` is a plain `char*` on 64-bit Windows, so the caller's
/// list does not change. The runtime renders the text to the null device, so the number is exact. Thread-safe; never
/// throws.
///
///     "%d-%s" with 12, "ab"  ->  5
VOREL_API int calculateSnprintFBufferSize(const char* fmt, va_list args);
VOREL_API int calculateSnprintFBufferSize(const wchar_t* fmt, va_list args);

}  // namespace vorel::util
