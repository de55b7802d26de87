/// \file
/// The measure behind every printf-style operation of the library.
#pragma once

#include <cstdarg>

#include "vorel/Export.h"

namespace vorel::util {

/// The number of units, terminator excluded, that `fmt` renders to with `args` (on 64-bit Windows an argument list is
/// a plain `char*`), or a negative value when it cannot be rendered at all. The text is really rendered, to the null
/// device, by the runtime's own stream print, so the count is exactly that of the runtime. Thread-safe; never throws.
///
///     "%d-%s" with 12, "ab"  →  5
VOREL_API int calculateSnprintFBufferSize(const char* fmt, va_list args);
VOREL_API int calculateSnprintFBufferSize(const wchar_t* fmt, va_list args);

}  // namespace vorel::util
