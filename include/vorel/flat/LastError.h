/// \file
/// The flat interface: the last failure of the calling thread. vorelCoreC.h has the rules for all functions.
#pragma once

#include "vorel/flat/Status.h"

#ifdef __cplusplus
extern "C" {
#endif

/// The status of the calling thread's last failure; `VOREL_OK` before the first failure. Successful calls and the three
/// functions in this header do not change it. If memory for a failure's message cannot be allocated, the last failure
/// is `VOREL_ERROR_OUT_OF_MEMORY`, whatever status the function returned. If the system has no fiber-local slot for the
/// failures, or cannot set its value, no failure is stored.
VOREL_API vorel_status vorel_last_error_status(void);

/// The message of the calling thread's last failure. If an exception of the library caused the failure, the message is
/// the first message of the exception, or a general text if the exception has no message. If any other exception caused
/// the failure, the message is a general text. For all other failures, the message gives the reason. The message is
/// empty before the first failure. A message longer than 500 units is truncated.
VOREL_API vorel_status vorel_last_error_message(vorel_char16* message, size_t capacity, size_t* length);

/// Like `vorel_last_error_message`, but the message is UTF-8, at most 1500 bytes.
VOREL_API vorel_status vorel_last_error_message_utf8(char* message, size_t capacity, size_t* length);

#ifdef __cplusplus
}
#endif
