/// \file
/// The interface of CProgram.c.
#pragma once

#include <stdint.h>  // NOLINT(modernize-deprecated-headers): C includes this header, too

#ifdef __cplusplus
extern "C" {
#endif

/// Uses the flat interface from C. Returns null on success, otherwise a description of the first failure. `mutexName`
/// is zero-terminated UTF-16, and the name must be unique.
const char* firstFailureInC(const uint16_t* mutexName);

#ifdef __cplusplus
}
#endif
