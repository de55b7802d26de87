/// \file
/// Compiler attributes. They expand to nothing where they are not supported.
#pragma once

/// Marks a function whose parameter number `which` is a printf-style format of `char`, and whose parameter number
/// `first` is the first argument of the format. The compiler then checks the arguments against the format. The first
/// parameter has the number 1. In a non-static member function it has the number 2, because the object has the
/// number 1. No compiler checks wide formats.
///
/// Formats have the syntax of the Windows runtime. Clang supports this syntax, but warns about a `wchar_t` for `%wc`.
/// GCC does not support the whole syntax, so GCC checks nothing unless the program defines VOREL_CHECK_FORMATS before
/// it includes the library. GCC then checks formats by the C standard: it finds arguments of wrong types, but it also
/// warns about the Windows-only conversions `%hs`, `%hc`, `%hS`, `%ws`, `%wc` and `%Z`, and about the Windows-only
/// prefixes `I` and `I64` of 64-bit integers (`%Iu`, `%I64d`). It misreads `%I32d`. Programs that define the macro
/// write `%s`, `%ls`, `%zu`, `%lld` and `%d` instead.
#if defined(__clang__)
#define VOREL_PRINTF(which, first) [[gnu::format(printf, which, first)]]
#elif defined(__GNUC__) && defined(VOREL_CHECK_FORMATS)
#define VOREL_PRINTF(which, first) [[gnu::format(gnu_printf, which, first)]]
#else
#define VOREL_PRINTF(which, first)
#endif

/// Marks a name that a later version of the library removes. `advice` says what to use instead. Programs that define
/// VOREL_NO_DEPRECATION get no warnings.
#if defined(VOREL_NO_DEPRECATION)
#define VOREL_DEPRECATED(advice)
#else
#define VOREL_DEPRECATED(advice) [[deprecated(advice)]]
#endif

#if defined(_MSC_VER)
#define VOREL_BEGIN_OWN_MEMBERS __pragma(warning(push)) __pragma(warning(disable : 4251))
#define VOREL_END_OWN_MEMBERS __pragma(warning(pop))
#else
/// Precedes members of an exported class if the types of these members are not exported. Microsoft's compiler warns of
/// such members (C4251), because inline functions of the exported class could need code that only the DLL has. No
/// inline function of the library needs such code.
#define VOREL_BEGIN_OWN_MEMBERS
/// Follows these members.
#define VOREL_END_OWN_MEMBERS
#endif
