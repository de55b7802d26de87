/// \file
/// Reads the system's clocks for the exported functions and the error log.
#pragma once

#include <cstdint>
#include <ctime>

namespace vorel::platform {

// The next two functions are not marked noexcept, because a system call that a monitoring tool hooks may throw. The
// exported clock functions record such an exception.

/// The current time as a file time: in units of 100 ns since 1601-01-01 UTC.
std::uint64_t fileTimeNow();

/// The current time in milliseconds since 1970-01-01 UTC.
std::uint64_t millisecondsUtc();

/// Writes a broken-down time like "Mon Nov 16 01:43:08 2026" to a buffer of `size` bytes, at least 26. Returns false if
/// the runtime rejects the time.
bool formatTime(const std::tm& time, char* buffer, std::size_t size) noexcept;

/// The current local time as text; empty if it is not available.
struct LocalTimeText {
    explicit LocalTimeText(bool withMilliseconds) noexcept;

    char text[26] = {};
    unsigned int milliseconds;  ///< of the second in `text`, 0 to 999; meaningful only with `withMilliseconds`
};

}  // namespace vorel::platform
