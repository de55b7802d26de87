/// \file
/// What CProgram.c does for its test.
#pragma once

#include <stdint.h>  // NOLINT(modernize-deprecated-headers): C reads this, too

#ifdef __cplusplus
extern "C" {
#endif

/// Uses the flat interface from C; null when all went as it should, otherwise what did not. The name is a text of
/// UTF-16 for a mutex that nobody else has.
const char* firstFailureInC(const uint16_t* mutexName);

#ifdef __cplusplus
}
#endif
