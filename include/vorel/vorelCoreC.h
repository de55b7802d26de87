/// \file
/// The library for programs in C, and for every language that can load a DLL: functions with C linkage over the
/// conversions, the error log, the named mutex and the named condition. Compiles as C11 and as C++.
///
///     uint16_t text[64];
///     size_t length = 0;
///     if (vorel_format_double(0.05, VOREL_FORMAT_JSON, text, 64, &length) != VOREL_OK) {
///         char message[512];
///         vorel_last_error_message_utf8(message, sizeof message, &length);
///         puts(message);
///     }
///
/// These rules hold for every function, and are not repeated there.
///
/// **Results.** A function returns a `vorel_status`: `VOREL_OK` (0), or why it could not do its work. What it gives
/// beyond that comes back through pointers, which are written only after `VOREL_OK`; the one exception is the length of
/// an output. No function ends the program or lets a C++ exception out. The text for the last failure of each thread is
/// kept (`vorel_last_error_message`). A failure that the library takes for an error of the program also has its records
/// in the error log, as everywhere in the library; that a text is not what it should be is no such error, where the
/// library has a quiet answer.
///
/// **Inputs.** A text is UTF-16 in the processor's byte order, a place and a number of units; it needs no terminator.
/// The number `VOREL_ZERO_TERMINATED` stands for "up to the first zero". A place may be null when the number is 0. No
/// input may have more than `VOREL_MOST_UNITS` units. Only what converts between encodings takes a text with a zero in
/// it; for all others that is `VOREL_ERROR_INVALID_TEXT`.
///
/// **Outputs.** An output is a buffer of the caller's, its capacity in units, and a place for a length. With `VOREL_OK`
/// and `VOREL_ERROR_BUFFER_TOO_SMALL` the length is set to what the whole result takes. When the capacity is smaller,
/// the buffer is left untouched, and the status is `VOREL_ERROR_BUFFER_TOO_SMALL`; so a null buffer with a capacity of
/// 0 asks for the length. A text is followed by a zero when there is room for one more unit; that zero is not counted.
/// Outputs may not overlap inputs.
///
/// **Arguments.** Pointers are not null, but where the contrary is said; a null pointer, a number that is too large and
/// an unknown flag are `VOREL_ERROR_INVALID_ARGUMENT`. Truth values are 0 and 1 as an `int32_t`; as an input everything
/// but 0 is true.
///
/// **Threads.** Everything may be called from any thread at any time, and nothing waits for another thread, but where
/// the contrary is said.
///
/// **Ownership.** Nothing that the library hands out has to be freed, but for handles: each is opened by one function,
/// closed by another, and not used by any thread from then on.
#pragma once

#include "vorel/flat/Encodings.h"
#include "vorel/flat/Locks.h"
#include "vorel/flat/Log.h"
#include "vorel/flat/Status.h"
#include "vorel/flat/Values.h"
