/// \file
/// The export macros. `VOREL_API` marks declarations that cross the boundary of the DLL. It is empty for the static
/// library (`VOREL_STATIC`), exports while the DLL is built (`VOREL_BUILDING_DLL`), and imports otherwise.
/// `VOREL_API_INLINE` marks inline functions: the DLL exports them too, but programs compile their own copy instead of
/// importing them.
#pragma once

#if !defined(_WIN64)
#error "vorelCore is a library for 64-bit Windows: compile for x86_64-w64-mingw32 or x86_64-pc-windows-msvc"
#endif

#if defined(VOREL_STATIC)
#define VOREL_API
#elif defined(VOREL_BUILDING_DLL)
#define VOREL_API __declspec(dllexport)
#else
/// Marks a declaration that the library exports.
#define VOREL_API __declspec(dllimport)
#endif

#if defined(VOREL_BUILDING_DLL) && !defined(VOREL_STATIC)
#define VOREL_API_INLINE __declspec(dllexport)
#else
/// Marks an inline function that the library exports.
#define VOREL_API_INLINE
#endif
