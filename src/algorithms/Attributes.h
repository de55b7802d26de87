/// \file
/// Attributes of functions, in the spelling of each compiler. They stand at the beginning of a declaration, after
/// standard attributes such as `[[nodiscard]]`.
#pragma once

#if defined(__GNUC__) || defined(__clang__)
#ifdef VOREL_COVERAGE  // copies of a function would be counted separately
#define VOREL_ALWAYS_INLINE inline
#else
/// For a function that is inlined even where the compiler would prefer a call. Includes `inline`.
#define VOREL_ALWAYS_INLINE [[gnu::always_inline]] inline
#endif
/// Keeps rare code, and its use of the stack, out of the function that calls it.
#define VOREL_NOINLINE [[gnu::noinline]]
/// Like `VOREL_NOINLINE`, for code that runs so rarely that its size is more important than its speed.
#define VOREL_COLD [[gnu::cold, gnu::noinline]]
/// For functions whose loads intentionally pass the end of an object, but not the end of its page.
#define VOREL_NO_SANITIZE_ADDRESS [[gnu::no_sanitize_address]]
#else
#define VOREL_ALWAYS_INLINE __forceinline
#define VOREL_NOINLINE __declspec(noinline)
#define VOREL_COLD __declspec(noinline)
#define VOREL_NO_SANITIZE_ADDRESS __declspec(no_sanitize_address)
#endif
