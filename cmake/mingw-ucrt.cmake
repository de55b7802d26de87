# Toolchain: GCC for mingw-w64 (posix threads, GCC 12 or later) with the universal C runtime. Everything that shares
# memory or streams with vorelCore.dll must be built this way, so the package installs this file as well.
#
#
# Some compilers use this runtime by default: those of MSYS2 (UCRT64), and x86_64-w64-mingw32ucrt-g++ of Debian 13. The
# default of Debian's x86_64-w64-mingw32-g++-posix is the older runtime. Two things replace it: with the macros in
# ucrt-target.cmake, the headers declare the universal runtime's functions; with a specs file, the compiler links libucrt
# instead of libmsvcrt. The specs file is made here from the compiler's own specs.
#
# -DCMAKE_CXX_COMPILER=<compiler> chooses another compiler than the first that is installed.

include("${CMAKE_CURRENT_LIST_DIR}/ucrt-target.cmake")

# The test projects of CMake get these from the build.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES VOREL_GXX VOREL_GXX_MACHINE VOREL_GXX_IS_UCRT VOREL_UCRT_SPECS)
set(VOREL_UCRT_SPECS "${CMAKE_BINARY_DIR}/ucrt.specs" CACHE FILEPATH "GCC specs that link the universal C runtime")

if(CMAKE_CXX_COMPILER AND NOT VOREL_GXX)
    set(VOREL_GXX "${CMAKE_CXX_COMPILER}" CACHE STRING "GCC for mingw-w64")
endif()
set(vorelNames x86_64-w64-mingw32-g++-posix x86_64-w64-mingw32ucrt-g++-posix x86_64-w64-mingw32ucrt-g++)
if(CMAKE_HOST_WIN32)
    list(PREPEND vorelNames g++)
endif()
find_program(VOREL_GXX NAMES ${vorelNames} x86_64-w64-mingw32-g++ DOC "GCC for mingw-w64")
if(NOT VOREL_GXX)
    list(JOIN vorelNames ", " vorelNames)
    message(FATAL_ERROR "No GCC for mingw-w64 is installed (${vorelNames}). Debian has it in the package "
                        "g++-mingw-w64-x86-64-posix, MSYS2 in mingw-w64-ucrt-x86_64-gcc")
endif()
get_filename_component(vorelFolder "${VOREL_GXX}" DIRECTORY)
get_filename_component(vorelName "${VOREL_GXX}" NAME)
if(vorelFolder)
    string(APPEND vorelFolder "/")
endif()
string(REPLACE "g++" "gcc" vorelGcc "${vorelName}")
set(CMAKE_CXX_COMPILER "${VOREL_GXX}")
set(CMAKE_C_COMPILER "${vorelFolder}${vorelGcc}")

if(NOT DEFINED VOREL_GXX_IS_UCRT)
    execute_process(COMMAND "${VOREL_GXX}" -dumpmachine OUTPUT_VARIABLE vorelMachine RESULT_VARIABLE vorelResult)
    string(STRIP "${vorelMachine}" vorelMachine)
    if(NOT vorelResult EQUAL 0)
        message(FATAL_ERROR "${VOREL_GXX} does not run")
    elseif(NOT vorelMachine MATCHES "^x86_64-.*mingw")
        message(FATAL_ERROR "vorelCore is a library for 64-bit Windows, but ${VOREL_GXX} compiles for ${vorelMachine}")
    endif()
    execute_process(
        COMMAND "${CMAKE_COMMAND}" -E echo "#include <_mingw.h>"
        COMMAND "${VOREL_GXX}" -x c++ -E -dM -
        OUTPUT_VARIABLE vorelMacros
        COMMAND_ERROR_IS_FATAL ANY)
    set(vorelIsUcrt OFF)
    if(vorelMacros MATCHES "#define _UCRT[ \r\n]")
        set(vorelIsUcrt ON)
    endif()
    set(VOREL_GXX_MACHINE "${vorelMachine}" CACHE INTERNAL "The compiler's name of its target")
    set(VOREL_GXX_IS_UCRT ${vorelIsUcrt} CACHE INTERNAL "Whether the compiler's default is the universal C runtime")
endif()
if(NOT CMAKE_HOST_WIN32)
    set(CMAKE_FIND_ROOT_PATH "/usr/${VOREL_GXX_MACHINE}")
endif()

if(VOREL_GXX_IS_UCRT)
    set(CMAKE_C_FLAGS_INIT "${vorelSystemMacros}")
    set(CMAKE_CXX_FLAGS_INIT "${vorelSystemMacros}")
    string(REGEX REPLACE "g[+][+].*$" "windres" vorelWindres "${vorelName}")
    find_program(VOREL_WINDRES NAMES "${vorelWindres}" windres HINTS "${vorelFolder}" DOC "windres of GCC")
    if(VOREL_WINDRES)
        set(CMAKE_RC_COMPILER "${VOREL_WINDRES}")
    endif()
    return()
endif()

if(NOT EXISTS "${VOREL_UCRT_SPECS}")
    execute_process(COMMAND "${VOREL_GXX}" -dumpspecs OUTPUT_VARIABLE vorelSpecs COMMAND_ERROR_IS_FATAL ANY)
    if(NOT vorelSpecs MATCHES "-lmsvcrt")
        message(FATAL_ERROR "${VOREL_GXX} links neither the universal C runtime nor -lmsvcrt, which would be replaced")
    endif()
    string(REPLACE "-lmsvcrt" "-lucrt" vorelSpecs "${vorelSpecs}")
    file(WRITE "${VOREL_UCRT_SPECS}" "${vorelSpecs}")
endif()

set(CMAKE_C_FLAGS_INIT "${vorelRuntimeMacros}")
set(CMAKE_CXX_FLAGS_INIT "${vorelRuntimeMacros}")
set(vorelLinkOptions "-specs=\"${VOREL_UCRT_SPECS}\"")
foreach(kind IN ITEMS EXE SHARED MODULE)
    set(CMAKE_${kind}_LINKER_FLAGS_INIT "${vorelLinkOptions}")
endforeach()
