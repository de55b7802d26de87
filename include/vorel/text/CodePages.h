/// \file
/// Conversion between wide text and the code pages of Windows, in the manner of `iconv`. A converter is a number that
/// carries two code pages: the lower sixteen bits the one to convert to, the upper sixteen the one to convert from.
/// There is nothing behind it, so it need not be closed, and may be used by any number of threads.
///
/// Failures are told by -1 and `errno`. What throws all the same (memory, locks, and `iconv` itself) gets a record of
/// the operation ("iconv::iconv_open: Vorel exception rethrown").
#pragma once

#include <cstddef>

#include "vorel/Export.h"

namespace vorel::util {

/// A converter by the names of its code pages, in any case; 617 names of 146 code pages are known. It is one-sided, and
/// that is meant: with `from` given, `to` is not looked up, and the converter only converts from that code page; it
/// converts to `to` only when `from` is null. Whether the system has the code page is not asked here.
///
///     "UTF-8", "LATIN1"  →  28591 << 16        "UTF-8", null  →  65001
///
/// Returns -1 with `errno` EINVAL for a name that is not known, and when both are null.
VOREL_API int iconv_open(const char* to, const char* from);

/// A converter by the numbers of its code pages, 0 for none. A number that the system does not have fails later, in the
/// conversion. Returns -1 with `errno` EINVAL when both are 0.
VOREL_API int iconv_open_codepage(int to, int from);

/// Not available, on purpose.
/// \throws Exception "This function has not been tested.  If you are attempting to use it, please confirm that the
///         behavior is as you expect and remove this Exception.  iconv_from_wc and iconv_to_wc can be used without
///         problem."
VOREL_API std::size_t iconv(int converter, char** in, std::size_t* inLeft, char** out, std::size_t* outLeft);

/// 0; for what is no converter -1, with `errno` EBADF. There is nothing to free.
VOREL_API int iconv_close(int converter) noexcept;

/// Does nothing: a converter has no state.
VOREL_API void iconv_reset(int converter) noexcept;

/// Converts `bytes` bytes of `text` (SIZE_MAX: up to its terminator, and that as well) to wide text in `out`, which has
/// room for `capacity` units, and returns how many units were written. With a capacity of 0 nothing is written, and the
/// result is how many there would be.
///
/// Returns -1 with `errno` EBADF for a converter that converts from nothing, EILSEQ for bytes that are no text of the
/// code page, E2BIG when `out` is too small, EINVAL when the system does not have the code page or refuses the
/// arguments, and for other counts and capacities beyond INT_MAX.
///
/// A count or capacity above INT_MAX is refused without a call to the system, which counts with 31 bits. The system is
/// called with MB_ERR_INVALID_CHARS, and refuses that flag (EINVAL) for the code pages 42, 50220, 50221, 50222, 50225,
/// 50227, 50229, 57002 to 57011 and 65000. So these have names, but text cannot be converted from them. `text` must not
/// overlap `out`: the system refuses two equal pointers (EINVAL). Source: "MultiByteToWideChar function
/// (stringapiset.h)" on learn.microsoft.com.
VOREL_API std::size_t iconv_to_wc(int converter, const char* text, std::size_t bytes, wchar_t* out,
                                  std::size_t capacity);

/// Converts `units` units of `text` (SIZE_MAX: as above) to bytes in `out`, which has room for `capacity`, and returns
/// how many bytes were written. `defaultUsed`, if not null, says whether a unit had to be replaced by the default
/// character; not every code page allows the question (`iconv_isCheckDefaultValid`). Failures as above, without EILSEQ;
/// `defaultUsed` is untouched then.
///
/// Counts and capacities above INT_MAX are refused as above. Windows refuses a pointer for `defaultUsed` (EINVAL) for
/// the code pages 65000 (UTF-7) and 65001 (UTF-8). No flags are used here, so the code pages that refuse flags can be
/// converted to. `text` must not overlap `out`. Source: "WideCharToMultiByte function (stringapiset.h)" on
/// learn.microsoft.com.
VOREL_API std::size_t iconv_from_wc(int converter, const wchar_t* text, std::size_t units, char* out,
                                    std::size_t capacity, bool* defaultUsed);

/// Whether the code page allows `iconv_from_wc` to say that the default character was used. UTF-7 and UTF-8 do not. The
/// system is asked, so the answer is right for other code pages that refuse it as well.
VOREL_API bool iconv_isCheckDefaultValid(int codePage);

/// The code page of a name, in any case; -1 for one that is not known, for null, and when the system does not have the
/// code page.
///
///     "utf-8"  →  65001
VOREL_API int iconv_getCodePage(const char* name);

}  // namespace vorel::util
