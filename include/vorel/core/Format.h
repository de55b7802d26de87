/// \file
/// The length of a printf-style rendering, as all formatting operations of the library measure it.
#pragma once

#include <cstdarg>

#include "vorel/Export.h"

namespace vorel::util {

/// The number of units, without the terminator, that `fmt` renders to with `args` (a plain `char*` on 64-bit Windows),
/// or a negative value if it cannot be rendered. The runtime renders the text to the null device, so the count is
/// exactly the runtime's. Thread-safe; never throws.
///
///     "%d-%s" with 12, "ab"  ->  5
VOREL_API int calculateSnprintFBufferSize(const char* fmt, va_list args);
VOREL_API int calculateSnprintFBufferSize(const wchar_t* fmt, va_list args);

}  // namespace vorel::util
