# The common part of the toolchain files of GCC and clang: the target, the macros of the universal C runtime, the
# folders in which CMake searches, and the script that runs the target's programs under Wine.

# In MSYS2 on Windows the compiler is not a cross compiler.
if(NOT CMAKE_HOST_WIN32)
    set(CMAKE_SYSTEM_NAME Windows)
    set(CMAKE_SYSTEM_PROCESSOR x86_64)
    set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
endif()

# _WIN32_WINNT 0x0A00: Windows 10, the first version of Windows that includes the universal runtime.
set(vorelSystemMacros "-D_WIN32_WINNT=0x0A00")
# With these macros, the headers of mingw-w64 declare the functions of the universal runtime.
set(vorelRuntimeMacros "-D_UCRT -D__MSVCRT_VERSION__=0xE00 ${vorelSystemMacros}")

# CMake searches the host for programs that the build runs, and the target's folder for libraries and headers. Packages
# may be in any folder, because users choose where they install vorelCore.
if(NOT CMAKE_HOST_WIN32)
    set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
    set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
    set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
    set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
    set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)
endif()

if(EXISTS "${CMAKE_CURRENT_LIST_DIR}/wine-run")
    set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/wine-run")
endif()
