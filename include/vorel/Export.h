/// \file
/// The export macro, and checks that a program fits the library. Every header that declares a part of the C++ interface
/// includes this file, directly or through another header.
///
/// A program must use the C runtime and the C++ standard library that vorelCore was built with, because the program
/// frees memory that vorelCore allocated and catches exceptions that vorelCore threw.
///
/// This header causes a compile error if the language is older than C++20, or if a program of mingw-w64 uses another C
/// runtime than UCRT. It does not detect the static C runtime of Microsoft's compiler (/MT).
///
/// If the standard library is wrong, the linker reports an undefined symbol. Without this error, Windows would end the
/// program at the first exception. The error arises as follows: every program refers to a symbol named after its
/// standard library, for example `vorelCore_is_built_for_libcxx`. vorelCore defines only the symbol of the standard
/// library that it was built with. If the program is linked with `--gc-sections`, GNU ld does not report the error.
///
/// The flat interface (vorelCoreC.h) works with every C runtime and compiler, so it does not include this header.
#pragma once

#include "vorel/ExportMacro.h"

#if !defined(__cplusplus) || (__cplusplus < 202002L && (!defined(_MSVC_LANG) || _MSVC_LANG < 202002L))
#error "The C++ interface of vorelCore needs C++20 (-std=c++20 or /std:c++20); C programs include vorel/vorelCoreC.h"
#else

#include <cstddef>

#if defined(__MINGW32__) && !defined(_UCRT)
#error "vorelCore needs the universal C runtime: use the toolchain file of the package, or UCRT64 of MSYS2"
#endif

#if defined(_LIBCPP_VERSION)
#define VOREL_STANDARD_LIBRARY vorelCore_is_built_for_libcxx
#elif defined(__GLIBCXX__)
/// The symbol of the program's standard library.
#define VOREL_STANDARD_LIBRARY vorelCore_is_built_for_libstdcxx
#elif defined(_DEBUG)  // Microsoft's library has another layout in debug builds
#define VOREL_STANDARD_LIBRARY vorelCore_is_built_for_msvc_debug
__pragma(comment(linker, "/include:vorelCore_is_built_for_msvc_debug"))
#else
#define VOREL_STANDARD_LIBRARY vorelCore_is_built_for_msvc
__pragma(comment(linker, "/include:vorelCore_is_built_for_msvc"))
#endif

namespace vorel::detail {

#if defined(VOREL_BUILDING_DLL)
extern "C" VOREL_API void VOREL_STANDARD_LIBRARY() noexcept;
#else
// The function is declared without dllimport, so its address is a constant, and no code has to run at program start to
// initialise `kRequiredStandardLibrary`.
extern "C" void VOREL_STANDARD_LIBRARY() noexcept;
#endif
#if defined(__GNUC__)
[[gnu::used]] inline constexpr auto kRequiredStandardLibrary = &VOREL_STANDARD_LIBRARY;
#endif

}  // namespace vorel::detail

#endif
