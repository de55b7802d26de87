# Toolchain: GCC for mingw-w64 (posix threads, GCC 12 or later) with the universal C runtime. Everything that shares
# memory or streams with vorelCore.dll must use this runtime, so the package installs this file as well.
#
# Some compilers use this runtime by default: the compilers of MSYS2 (UCRT64), and x86_64-w64-mingw32ucrt-g++ of Debian
# 13. The default of Debian's x86_64-w64-mingw32-g++-posix is the older runtime. Two changes replace the older
# runtime. The macros in ucrt-target.cmake make the headers declare the universal runtime's functions. A specs file,
# which is made here from the compiler's own specs, makes the compiler link libucrt instead of libmsvcrt.
#
# -DCMAKE_CXX_COMPILER=<compiler> chooses a compiler. By default, the first installed compiler of the list below is
# used.

include("${CMAKE_CURRENT_LIST_DIR}/ucrt-target.cmake")

# CMake passes these variables to the projects of try_compile, for which it reads this file again.
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
        message(FATAL_ERROR "${VOREL_GXX} does not link the universal C runtime, and its specs do not "
                            "contain -lmsvcrt. This toolchain file can only replace -lmsvcrt")
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
