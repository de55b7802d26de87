/// \file
/// Words to the compiler about declarations. They are empty where it does not know them.
#pragma once

/// The function takes a printf-style format of `char` as its argument number `which`, and its arguments from number
/// `first` on: the compiler checks them against each other. Arguments are counted from 1, and from 2 in a member
/// function that is not static. No compiler checks wide formats.
///
/// Formats are those of the Windows runtime. Clang knows them. GCC has no check that does, so it checks nothing unless
/// the program defines VOREL_CHECK_FORMATS before it includes the library. That check follows the C standard: it finds
/// arguments of wrong types, but it also warns of the runtime's own `%hs`, `%hc`, `%hS`, `%ws`, `%wc`, `%Z`, `%Iu` and
/// `%I64d`, and misreads `%I32d`. Programs that define it write `%s`, `%ls`, `%zu`, `%lld` and `%d` instead.
#if defined(__clang__)
#define VOREL_PRINTF(which, first) [[gnu::format(printf, which, first)]]
#elif defined(__GNUC__) && defined(VOREL_CHECK_FORMATS)
#define VOREL_PRINTF(which, first) [[gnu::format(gnu_printf, which, first)]]
#else
#define VOREL_PRINTF(which, first)
#endif

/// The name is kept for those who use it, and goes with the next change of the interface: `advice` says what to use in
/// its place. A program that defines VOREL_NO_DEPRECATION hears nothing of it.
#if defined(VOREL_NO_DEPRECATION)
#define VOREL_DEPRECATED(advice)
#else
#define VOREL_DEPRECATED(advice) [[deprecated(advice)]]
#endif
