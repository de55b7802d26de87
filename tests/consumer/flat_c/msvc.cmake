# Toolchain: clang as a compiler for Microsoft's ABI, and lld-link. It uses neither headers nor libraries of Microsoft,
# so programs define their entry point and include only headers of the compiler.
#
#   FLAT_CLANG: the folder of clang, clang++, lld-link and llvm-rc

list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES FLAT_CLANG)
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR AMD64)
set(CMAKE_C_COMPILER "${FLAT_CLANG}/clang")
set(CMAKE_CXX_COMPILER "${FLAT_CLANG}/clang++")
set(CMAKE_RC_COMPILER "${FLAT_CLANG}/llvm-rc")
set(CMAKE_C_COMPILER_TARGET x86_64-pc-windows-msvc)
set(CMAKE_CXX_COMPILER_TARGET x86_64-pc-windows-msvc)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
set(CMAKE_C_FLAGS_INIT "-ffreestanding -fno-builtin")
set(CMAKE_CXX_FLAGS_INIT "-ffreestanding -fno-builtin -fno-exceptions -fno-rtti")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-fuse-ld=lld -nostdlib -Xlinker /entry:start -Xlinker /subsystem:console")
set(CMAKE_MSVC_RUNTIME_LIBRARY "")
foreach(language IN ITEMS C CXX)
    set(CMAKE_${language}_STANDARD_LIBRARIES_INIT "")
    set(CMAKE_${language}_STANDARD_LIBRARIES "" CACHE STRING "")
endforeach()
