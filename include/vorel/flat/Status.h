/// \file
/// The flat interface: its version, the results of its functions, and the text for the last failure. The rules that
/// hold for every function stand in vorelCoreC.h.
#pragma once

// NOLINTBEGIN(modernize-*): C reads this, too

#include <stddef.h>
#include <stdint.h>

#include "vorel/Export.h"

#ifdef __cplusplus
extern "C" {
#endif

/// The version of this interface as a program is compiled against it: the upper sixteen bits change when something that
/// was there does, the lower ones grow when something is added.
#define VOREL_ABI_VERSION 0x00010000u

/// As the number of units of a text: up to the first zero.
#define VOREL_ZERO_TERMINATED SIZE_MAX

/// The most units that an input may have.
#define VOREL_MOST_UNITS 0x10000000u

/// A unit of UTF-16.
typedef uint16_t vorel_char16;

/// What became of a call; the values are fixed.
typedef int32_t vorel_status;

enum {
    VOREL_OK = 0,
    VOREL_ERROR_INVALID_ARGUMENT = 1,  ///< a null pointer, a number out of its range, an unknown flag
    VOREL_ERROR_BUFFER_TOO_SMALL = 2,  ///< the output has not been written; its length has
    VOREL_ERROR_OUT_OF_MEMORY = 3,
    VOREL_ERROR_INVALID_TEXT = 4,  ///< the input is not what the function reads
    VOREL_ERROR_UNKNOWN_NAME = 5,  ///< no code page has this name
    VOREL_ERROR_UNSUPPORTED = 6,   ///< the system does not have the code page
    VOREL_ERROR_TIMEOUT = 7,       ///< the time limit has passed
    VOREL_ERROR_NOT_OWNER = 8,     ///< the mutex is not held by this thread through this handle
    VOREL_ERROR_SYSTEM = 9,        ///< a call of the operating system failed
    VOREL_ERROR_INTERNAL = 10,     ///< anything else; the error log says more
};

/// The version of this interface as the loaded library has it. A program can use a library whose upper sixteen bits
/// equal those of `VOREL_ABI_VERSION`, and whose lower ones are not below.
VOREL_API uint32_t vorel_abi_version(void);

/// The version of the library in ASCII, "0.1.0" for instance; it stays for as long as the library is loaded.
VOREL_API const char* vorel_version(void);

/// The name of a status in ASCII, "VOREL_ERROR_TIMEOUT" for instance, and "VOREL_ERROR_UNKNOWN" for a number that is
/// none; it stays for as long as the library is loaded.
VOREL_API const char* vorel_status_name(vorel_status status);

/// The status of the last function of the calling thread that failed, `VOREL_OK` before the first failure. A function
/// that succeeds does not change it, and neither do the three of this family. When there is no memory to keep a
/// failure, it is `VOREL_ERROR_OUT_OF_MEMORY` with its text, whatever the function itself has returned.
VOREL_API vorel_status vorel_last_error_status(void);

/// The text for that failure, in the library's own words where it has thrown an exception; the empty text before the
/// first failure. It has 500 units at most: what is longer is cut.
VOREL_API vorel_status vorel_last_error_message(vorel_char16* message, size_t capacity, size_t* length);

/// The same in UTF-8, at most 1500 bytes.
VOREL_API vorel_status vorel_last_error_message_utf8(char* message, size_t capacity, size_t* length);

#ifdef __cplusplus
}
#endif

// NOLINTEND(modernize-*)
