/// \file
/// The version of the headers that a program was compiled with, and the version of the library that it runs with. The
/// versions differ if the DLL comes from another release.
#pragma once

#include "vorel/Export.h"

/// The version of these headers. Before 1.0, a new minor version may change the C++ interface; from 1.0 on, only a new
/// major version may change it. A new patch version never changes it. The build fails if these numbers differ from the
/// version of the CMake project.
#define VOREL_VERSION_MAJOR 0
#define VOREL_VERSION_MINOR 1
#define VOREL_VERSION_PATCH 0

/// The version as text, for example "0.1.0".
#define VOREL_VERSION_STRING                   \
    VOREL_VERSION_TEXT_OF(VOREL_VERSION_MAJOR) \
    "." VOREL_VERSION_TEXT_OF(VOREL_VERSION_MINOR) "." VOREL_VERSION_TEXT_OF(VOREL_VERSION_PATCH)

/// The value of the macro `number` as text.
#define VOREL_VERSION_TEXT_OF(number) VOREL_VERSION_TEXT_AS_WRITTEN(number)
/// The argument as text, without macro expansion.
#define VOREL_VERSION_TEXT_AS_WRITTEN(number) #number

namespace vorel {

/// The version of the loaded library in ASCII, for example "0.1.0". It is valid while the library is loaded.
/// Thread-safe; may be called at any time, before and after every other function.
[[nodiscard]] VOREL_API const char* version() noexcept;

}  // namespace vorel
