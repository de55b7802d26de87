# Toolchain: clang and lld with the headers and libraries of Debian's mingw-w64 (libstdc++ of GCC, posix threads) and
# the universal C runtime. Programs compiled by clang and by GCC can use the same vorelCore.dll.

include("${CMAKE_CURRENT_LIST_DIR}/ucrt-target.cmake")

# The compiler and the linker must have the same version. The suffixes are in the order of preference; the last one is
# for programs without a version number in their names.
foreach(suffix IN ITEMS -19 -20 -21 -22 "")
    if(NOT VOREL_CLANG_SUFFIX_FOUND)
        find_program(vorelClang${suffix} "clang++${suffix}")
        find_program(vorelLld${suffix} "ld.lld${suffix}")
        mark_as_advanced(vorelClang${suffix} vorelLld${suffix})
        if(vorelClang${suffix} AND vorelLld${suffix})
            set(VOREL_CLANG_SUFFIX_FOUND TRUE)
            set(CMAKE_C_COMPILER "clang${suffix}")
            set(CMAKE_CXX_COMPILER "clang++${suffix}")
            set(vorelLinker "lld${suffix}")
        endif()
    endif()
endforeach()
if(NOT VOREL_CLANG_SUFFIX_FOUND)
    message(FATAL_ERROR "No clang and lld of the same version are installed; `./dev setup` installs them")
endif()
# GNU's programs are used, because LLVM's objcopy does not support all options for DLLs, and LLVM's objdump prints
# tables in another format.
set(CMAKE_OBJCOPY x86_64-w64-mingw32-objcopy)
set(CMAKE_OBJDUMP x86_64-w64-mingw32-objdump)
set(CMAKE_C_COMPILER_TARGET x86_64-w64-mingw32)
set(CMAKE_CXX_COMPILER_TARGET x86_64-w64-mingw32)

# -femulated-tls: libstdc++ uses emulated thread-local variables.
set(CMAKE_C_FLAGS_INIT "${vorelRuntimeMacros} -pthread -femulated-tls")
set(CMAKE_CXX_FLAGS_INIT "${vorelRuntimeMacros} -pthread -femulated-tls")
# If -lucrt is given, clang does not add the older runtime.
set(vorelLinkOptions "-fuse-ld=${vorelLinker} -lucrt")
foreach(kind IN ITEMS EXE SHARED MODULE)
    set(CMAKE_${kind}_LINKER_FLAGS_INIT "${vorelLinkOptions}")
endforeach()
