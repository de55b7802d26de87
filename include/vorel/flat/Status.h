/// \file
/// The flat interface: its version, and the status of its functions. vorelCoreC.h has the rules for all functions.
#pragma once

// NOLINTBEGIN(modernize-*): C includes this header too

#include <stddef.h>
#include <stdint.h>

#include "vorel/ExportMacro.h"

#ifdef __cplusplus
extern "C" {
#endif

/// The version of this interface that a program is compiled with. An incompatible change increases the upper sixteen
/// bits, and an addition increases the lower sixteen bits.
#define VOREL_ABI_VERSION 0x00010000u

/// Pass this as the number of units of a text that ends at its first zero.
#define VOREL_ZERO_TERMINATED SIZE_MAX

/// The maximum number of units of an input.
#define VOREL_MOST_UNITS 0x10000000u

/// A UTF-16 code unit.
typedef uint16_t vorel_char16;

/// The result of a call. The meaning of a number never changes.
typedef int32_t vorel_status;

/// The values of `vorel_status`.
enum {
    VOREL_OK = 0,
    VOREL_ERROR_INVALID_ARGUMENT = 1,  ///< for example a null pointer, a number out of range, an unknown flag
    VOREL_ERROR_BUFFER_TOO_SMALL = 2,  ///< only the length of the output was written
    VOREL_ERROR_OUT_OF_MEMORY = 3,
    VOREL_ERROR_INVALID_TEXT = 4,  ///< the function does not accept the input text
    VOREL_ERROR_UNKNOWN_NAME = 5,  ///< no code page has this name
    VOREL_ERROR_UNSUPPORTED = 6,   ///< the system does not support the code page, or cannot check its bytes
    VOREL_ERROR_TIMEOUT = 7,       ///< the time limit has passed
    VOREL_ERROR_NOT_OWNER = 8,     ///< the mutex is not held by this thread through this handle
    VOREL_ERROR_SYSTEM = 9,        ///< a system call failed
    VOREL_ERROR_INTERNAL = 10,     ///< any other failure; see the error log
};

/// The version of this interface in the loaded library. A program can use the library if the upper sixteen bits of this
/// version and of `VOREL_ABI_VERSION` are equal, and the lower sixteen bits of this version are not smaller.
VOREL_API uint32_t vorel_abi_version(void);

/// The version of the library in ASCII, for example "0.1.0". It is valid while the library is loaded.
VOREL_API const char* vorel_version(void);

/// The name of a status in ASCII, for example "VOREL_ERROR_TIMEOUT". If the number is not a status, the name is
/// "VOREL_ERROR_UNKNOWN". The text is valid while the library is loaded.
VOREL_API const char* vorel_status_name(vorel_status status);

#ifdef __cplusplus
}

/// Converts a C++ literal u"..." to the type of an input, because in C++ the units of the literal have the type
/// `char16_t`, which differs from `vorel_char16`. In C11 the types are the same, so C programs need no such function.
/// The library only reads inputs. Never write through the pointer.
///
///     vorel_mutex_open(vorel_utf16(u"Talvenor jobs"), VOREL_ZERO_TERMINATED, &mutex);
inline const vorel_char16* vorel_utf16(const char16_t* text) noexcept {
    return reinterpret_cast<const vorel_char16*>(text);
}
#endif

// NOLINTEND(modernize-*)
