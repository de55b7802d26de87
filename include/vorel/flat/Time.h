/// \file
/// The flat interface: the current time, and times as text. vorelCoreC.h has the rules for all functions.
#pragma once

#include "vorel/flat/Status.h"

#ifdef __cplusplus
extern "C" {
#endif

/// These functions write a time, given in seconds since 1970-01-01 UTC, as local time or as UTC, in 24 units. The
/// status is `VOREL_ERROR_INVALID_ARGUMENT` for a time that the runtime cannot convert.
///
///     1234567890  ->  "Fri Feb 13 23:31:30 2009" in UTC
VOREL_API vorel_status vorel_format_local_time(int64_t seconds, vorel_char16* output, size_t capacity,
                                               size_t* outputLength);
VOREL_API vorel_status vorel_format_utc_time(int64_t seconds, vorel_char16* output, size_t capacity,
                                             size_t* outputLength);

/// Returns the current time in microseconds since 1970-01-01 UTC.
VOREL_API vorel_status vorel_current_time(int64_t* microseconds);

#ifdef __cplusplus
}
#endif
