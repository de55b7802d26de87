/// \file
/// The flat interface: the system's texts for its error codes. vorelCoreC.h has the rules for all functions.
#pragma once

#include "vorel/flat/Status.h"

#ifdef __cplusplus
extern "C" {
#endif

/// Writes the system's text for the error code `code` in the user's default language, without white space at either
/// end. If the system has no text for the code, the output is empty.
///
///     0  ->  "No Error"
VOREL_API vorel_status vorel_system_error_text(int32_t code, vorel_char16* output, size_t capacity,
                                               size_t* outputLength);

#ifdef __cplusplus
}
#endif
