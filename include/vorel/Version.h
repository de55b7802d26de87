/// \file
/// The version of the library: as a program is compiled against it, and as the library that it runs with says. The two
/// differ when another DLL than that of the build lies beside the program.
#pragma once

#include "vorel/Export.h"

/// The numbers of the version that these headers belong to. Before 1.0 a change of the minor number may change the
/// interface; from then on only one of the major number does. A patch changes neither. The build refuses to start when
/// they differ from the version of the CMake project.
#define VOREL_VERSION_MAJOR 0
#define VOREL_VERSION_MINOR 1
#define VOREL_VERSION_PATCH 0

/// The same as a text: "0.1.0" for instance.
#define VOREL_VERSION_STRING                   \
    VOREL_VERSION_TEXT_OF(VOREL_VERSION_MAJOR) \
    "." VOREL_VERSION_TEXT_OF(VOREL_VERSION_MINOR) "." VOREL_VERSION_TEXT_OF(VOREL_VERSION_PATCH)

/// The text of a number that a macro stands for.
#define VOREL_VERSION_TEXT_OF(number) VOREL_VERSION_TEXT_AS_WRITTEN(number)
/// The text of its argument, which is not looked at.
#define VOREL_VERSION_TEXT_AS_WRITTEN(number) #number

namespace vorel {

/// The version of the loaded library in ASCII, "0.1.0" for instance; it stays for as long as the library is loaded.
/// It may be called from any thread, and before and after everything else.
[[nodiscard]] VOREL_API const char* version() noexcept;

}  // namespace vorel
