# Toolchain: Debian's mingw-w64 (posix threads, GCC 12 or later) with the universal C runtime.
#
# The compiler's default is the older runtime. Two things replace it: with the macros in ucrt-target.cmake, the headers
# declare the universal runtime's functions; with a specs file, the compiler links libucrt instead of libmsvcrt. The
# specs file is made here from the compiler's own specs. Every program that shares memory or streams with vorelCore.dll
# must be built this way, so the package contains this file.

include("${CMAKE_CURRENT_LIST_DIR}/ucrt-target.cmake")

set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)

# The specs file is made once per build tree. CMake's test projects for the compiler get its path from the main project.
if(NOT VOREL_UCRT_SPECS)
    set(VOREL_UCRT_SPECS "${CMAKE_BINARY_DIR}/ucrt.specs" CACHE FILEPATH "GCC specs that link the universal C runtime")
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES VOREL_UCRT_SPECS)

if(NOT EXISTS "${VOREL_UCRT_SPECS}")
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -dumpspecs OUTPUT_VARIABLE vorelSpecs RESULT_VARIABLE vorelSpecsResult)
    if(NOT vorelSpecsResult EQUAL 0)
        message(FATAL_ERROR "${CMAKE_CXX_COMPILER} does not run; `./dev setup` installs it")
    endif()
    if(NOT vorelSpecs MATCHES "-lmsvcrt")
        message(FATAL_ERROR "The specs of ${CMAKE_CXX_COMPILER} do not name -lmsvcrt: nothing to move to UCRT")
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
