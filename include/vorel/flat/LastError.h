/// \file
/// The flat interface: the last failure of the calling thread. vorelCoreC.h has the rules that hold for every function.
#pragma once

#include "vorel/flat/Status.h"

#ifdef __cplusplus
extern "C" {
#endif

/// The status of the calling thread's last failure; `VOREL_OK` before the first. A successful call does not change it;
/// neither do the three functions for the last failure. If memory for a failure cannot be allocated, this is
/// `VOREL_ERROR_OUT_OF_MEMORY` with its message, whatever status the function returned.
VOREL_API vorel_status vorel_last_error_status(void);

/// The message of that failure; the text of the exception if the library threw one. Empty before the first failure. At
/// most 500 units; a longer message is truncated.
VOREL_API vorel_status vorel_last_error_message(vorel_char16* message, size_t capacity, size_t* length);

/// The same in UTF-8, at most 1500 bytes.
VOREL_API vorel_status vorel_last_error_message_utf8(char* message, size_t capacity, size_t* length);

#ifdef __cplusplus
}
#endif
