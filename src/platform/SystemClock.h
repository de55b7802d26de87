/// \file
/// Reading the system's clocks, for the exported functions and for the error log beneath them. Nothing in here fails.
#pragma once

#include <cstdint>
#include <ctime>

namespace vorel::platform {

// Not marked noexcept: what a replaced system call throws (a hook of a monitoring tool) gets its record in the frame of
// the exported clocks.

/// Now, as a file time: hundreds of nanoseconds since 1601-01-01 UTC.
std::uint64_t fileTimeNow();

/// Milliseconds since 1970-01-01 UTC.
std::uint64_t millisecondsUtc();

/// Broken-down time as the 24 characters of "Mon Nov 16 01:43:08 2026", for a buffer of `size` bytes, 26 at least.
/// False when the runtime refuses the time.
bool formatTime(const std::tm& time, char* buffer, std::size_t size) noexcept;

/// The current local time as text; empty when it cannot be told.
struct LocalTimeText {
    LocalTimeText() noexcept;

    char text[26] = {};
};

}  // namespace vorel::platform
