/// \file
/// The interface for C, and for every language that can load a DLL: functions with C linkage for the conversions, the
/// error log, the named mutex and the named condition. The header compiles as C99 to C23, and as C++20.
///
///     uint16_t text[64];
///     size_t length = 0;
///     if (vorel_format_double(0.05, VOREL_FORMAT_JSON, text, 64, &length) != VOREL_OK) {
///         char message[512];
///         vorel_last_error_message_utf8(message, sizeof message, &length);
///         puts(message);
///     }
///
/// The following rules apply to every function. The headers of the functions do not repeat them.
///
/// **Results.** A function returns a `vorel_status`: `VOREL_OK` (0) or the reason of the failure. All other results are
/// returned through pointers, and are written only if the status is `VOREL_OK`. The only exception to this rule is the
/// length of an output. Four functions cannot fail and return their result directly: `vorel_abi_version`,
/// `vorel_version`, `vorel_status_name` and `vorel_last_error_status`. No function ends the program or lets a C++
/// exception escape. The library keeps the message of each thread's last failure (`vorel_last_error_message`). A
/// failure is also written to the error log if the implementation throws an exception. A failure is not logged if an
/// argument is invalid, or if the implementation reports the failure by a return value. So some functions log malformed
/// text, and others do not.
///
/// **Inputs.** A text is UTF-16 in the processor's byte order, passed as a pointer and a number of units; it needs no
/// terminator. The number `VOREL_ZERO_TERMINATED` means "up to the first zero". The pointer may be null if the number
/// is 0. The same rules apply to UTF-8 text. They also apply to binary data, but its size must not be
/// `VOREL_ZERO_TERMINATED`.
/// An input must not have more than `VOREL_MOST_UNITS` units. A text may contain a zero only if it is converted between
/// UTF-16 and UTF-8 or a code page, or if it is the list of `vorel_join_list`. All other functions return
/// `VOREL_ERROR_INVALID_TEXT` for such a text.
///
/// **Outputs.** An output has three parameters: a buffer of the caller, its capacity in units, and a pointer to a
/// length. With `VOREL_OK` and `VOREL_ERROR_BUFFER_TOO_SMALL`, the length becomes the length of the whole result. If
/// the capacity is smaller than this length, the buffer is unchanged and the status is `VOREL_ERROR_BUFFER_TOO_SMALL`,
/// so a null buffer with a capacity of 0 queries the length. If the buffer has space for one more unit, a zero is
/// written after a text; the length does not count it. Outputs must not overlap inputs.
///
/// **Arguments.** Pointers must not be null unless stated otherwise. A null pointer, a number that is too large, or an
/// unknown flag gives `VOREL_ERROR_INVALID_ARGUMENT`. A Boolean is an `int32_t` of 0 or 1; as input, every value except
/// 0 is true.
///
/// **Threads.** Unless stated otherwise, every function may be called from any thread at any time. The functions of the
/// named mutex and the named condition wait as vorel/flat/Locks.h describes. All other functions wait for other threads
/// in two cases only: to write to the error log (see `vorel_log_write`), and briefly to get a lock of the library.
///
/// **Ownership.** Only handles must be released. One function opens a handle and another closes it; after a handle is
/// closed, no thread may use it.
#pragma once

#include "vorel/flat/CodePages.h"
#include "vorel/flat/Comparing.h"
#include "vorel/flat/Encodings.h"
#include "vorel/flat/ErrorText.h"
#include "vorel/flat/LastError.h"
#include "vorel/flat/Lists.h"
#include "vorel/flat/Locks.h"
#include "vorel/flat/Log.h"
#include "vorel/flat/Numbers.h"
#include "vorel/flat/Status.h"
#include "vorel/flat/Time.h"
#include "vorel/flat/Urls.h"
