/// \file
/// Thread-safe versions of the standard time conversions, and clocks. A time in seconds counts from 1970-01-01 UTC. The
/// conversions write to storage of the caller. Every function may be called from any thread.
#pragma once

#include <ctime>

#include "vorel/Export.h"

namespace vorel::util {

/// Converts `time` to local time (`localtime`) or UTC (`gmtime`) in `result`, and returns `result`. If `time` is
/// null or the runtime cannot convert it, every field becomes -1; nothing is reported.
/// \throws Exception "pLocalTime is null" (`localtime`) or "pGMTime is null" (`gmtime`) for a null `result`.
VOREL_API std::tm* localtime(const long long* time, std::tm* result);
VOREL_API std::tm* gmtime(const long long* time, std::tm* result);

/// Writes `time` (null: now, in local time) to `buffer` of `size` bytes, at least 26, and returns the buffer.
///
///     -> "Mon Nov 16 01:43:08 2026", without a line feed
///
/// \throws Exception "buffer is null"; "buffer must be at least 26 characters long, actual size = %i"; "Invalid time
///         structure or out of range values for components of the time".
VOREL_API char* asctime(const std::tm* time, char* buffer, unsigned long long size);

/// The same for a time in seconds, as local time, but with a line feed at the end by design. If `time` is null or the
/// runtime cannot convert it, the text is empty; nothing is reported.
/// \throws Exception "buffer is null"; "buffer must be at least 26 characters long, actual size = %i".
VOREL_API char* ctime(const long long* time, char* buffer, unsigned long long size);

/// Microseconds and milliseconds since 1970-01-01 UTC.
VOREL_API unsigned long long getmicrotime();
VOREL_API unsigned long long getMillisecondsUTC();

/// Milliseconds since the system started, as a 32-bit count that wraps after about 49.7 days.
VOREL_API unsigned long long getMillisecondCount() noexcept;

/// The same as `getMillisecondCount`: milliseconds, despite the name.
VOREL_API unsigned long long getProcessorCycles() noexcept;

/// Microseconds between two results of `getProcessorCycles`. Correct if fewer than 2^32 milliseconds (about 49.7 days)
/// passed between them; the count may then wrap once.
///
///     0xFFFFFFF0, 0x10  ->  32000
VOREL_API unsigned long long getMicrotimeFromProcessorCycles(unsigned long long start, unsigned long long end) noexcept;

}  // namespace vorel::util
