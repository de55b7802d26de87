/// \file
/// The flat interface: the system's texts for its error codes. vorelCoreC.h has the rules that hold for every function.
#pragma once

#include "vorel/flat/Status.h"

#ifdef __cplusplus
extern "C" {
#endif

/// Writes the system's text for one of its error codes, in the user's language. Empty if the code has no text.
VOREL_API vorel_status vorel_system_error_text(int32_t code, vorel_char16* output, size_t capacity,
                                               size_t* outputLength);

#ifdef __cplusplus
}
#endif
