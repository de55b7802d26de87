/// \file
/// Conversion between wide text and the code pages of Windows, with an interface similar to `iconv`. A converter is a
/// number that contains two code pages: the target in its lower sixteen bits, the source in its upper sixteen. It owns
/// no resources, so it need not be closed. Any number of threads may use it at the same time.
///
/// Failures are reported by -1 and `errno`; `iconv_getCodePage` does not set `errno`. Exceptions come only from failed
/// allocations, from locks, and from `iconv`. An exception gets a record of the operation ("iconv::iconv_open: Vorel
/// exception rethrown"), unless `iconv` throws it.
#pragma once

#include <cstddef>

#include "vorel/Export.h"

namespace vorel::util {

/// Returns a converter for the named code pages. Names are not case-sensitive; 617 names of 146 code pages are known.
/// By design, a converter works in one direction: if `from` is given, `to` is ignored, and the converter only converts
/// from that code page. It converts to `to` only if `from` is null. The function does not check whether the system has
/// the code page.
///
///     "UTF-8", "LATIN1"  ->  28591 << 16        "UTF-8", null  ->  65001
///
/// Returns -1 with `errno` EINVAL for an unknown name, or if both are null.
VOREL_API int iconv_open(const char* to, const char* from);

/// Returns a converter for two code pages. They are given by their numbers; 0 means no code page. Only the lower
/// sixteen bits of each number count. If both are given, the converter works in both directions: `iconv_to_wc` converts
/// from `from`, and `iconv_from_wc` converts to `to`. If the system does not have a code page, conversions with it
/// fail. Returns -1 with `errno` EINVAL if the lower sixteen bits of both numbers are 0.
VOREL_API int iconv_open_codepage(int to, int from);

/// Not available by design; always throws.
/// \throws Exception "This function has not been tested.  If you are attempting to use it, please confirm that the
///         behavior is as you expect and remove this Exception.  iconv_from_wc and iconv_to_wc can be used without
///         problem."
VOREL_API std::size_t iconv(int converter, char** in, std::size_t* inLeft, char** out, std::size_t* outLeft);

/// Returns 0. If the lower or the upper sixteen bits of `converter` are 0xFFFF, returns -1 with `errno` EBADF; the
/// result -1 of a failed call is such a value. There is nothing to free.
VOREL_API int iconv_close(int converter) noexcept;

/// Does nothing: a converter has no state.
VOREL_API void iconv_reset(int converter) noexcept;

/// Converts `bytes` bytes of `text` (SIZE_MAX: up to and including its terminator) to wide text in `out`, a buffer of
/// `capacity` units, and returns the number of units written. With a capacity of 0, writes nothing and returns the
/// number of units of the result.
///
/// Returns -1 with `errno` EBADF for a converter without a source, EILSEQ for bytes that are not valid in the code
/// page, E2BIG if `out` is too small, and EINVAL if the system does not have the code page or rejects the arguments. If
/// the system reports another error, returns -1 without changing `errno`.
///
/// The system uses 31-bit counts. So a capacity above INT_MAX is rejected with EINVAL without a system call, and so is
/// a count above INT_MAX other than SIZE_MAX. The system is called with MB_ERR_INVALID_CHARS. It rejects that flag
/// (EINVAL) for the code pages 42, 50220, 50221, 50222, 50225, 50227, 50229, 57002 to 57011 and 65000. `iconv_open`
/// knows names for all of them except 42, but text cannot be converted from them. `text` must not overlap `out`; the
/// system rejects equal pointers (EINVAL). Source: the page "MultiByteToWideChar function (stringapiset.h)" on
/// learn.microsoft.com.
VOREL_API std::size_t iconv_to_wc(int converter, const char* text, std::size_t bytes, wchar_t* out,
                                  std::size_t capacity);

/// Converts `units` units of `text` (SIZE_MAX: as above) to bytes in `out`, a buffer of `capacity` bytes, and returns
/// the number of bytes written. `defaultUsed`, if not null, receives whether a unit was replaced by the default
/// character; some code pages cannot report this (`iconv_isCheckDefaultValid`). Fails like `iconv_to_wc`, but with
/// EBADF for a converter without a target, and never with EILSEQ. After a failure `defaultUsed` is unchanged.
///
/// Counts and capacities above INT_MAX are rejected as above. Windows rejects a pointer for `defaultUsed` (EINVAL) for
/// the code pages 65000 (UTF-7) and 65001 (UTF-8); it also does so, undocumented, for 50220 to 50229, 52936 (HZ), 54936
/// (GB18030) and 57002 to 57011 (ISCII). No flags are used, so this function also converts to code pages that reject
/// flags. `text` must not overlap `out`. Source: the page "WideCharToMultiByte function (stringapiset.h)" on
/// learn.microsoft.com.
VOREL_API std::size_t iconv_from_wc(int converter, const wchar_t* text, std::size_t units, char* out,
                                    std::size_t capacity, bool* defaultUsed);

/// Whether `iconv_from_wc` can report the use of the default character for this code page. The result comes from the
/// system: false for UTF-7, UTF-8 and a few others, and for a code page that the system does not have.
VOREL_API bool iconv_isCheckDefaultValid(int codePage);

/// Returns the code page of a name. Names are not case-sensitive. Returns -1, without setting `errno`, for an unknown
/// name, for null, or if the system does not have the code page.
///
///     "utf-8"  ->  65001
VOREL_API int iconv_getCodePage(const char* name);

}  // namespace vorel::util
