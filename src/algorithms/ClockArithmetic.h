/// \file
/// Clock arithmetic. File times count units of 100 nanoseconds since 1601-01-01 UTC.
#pragma once

#include <cstdint>

namespace vorel::algorithms {

/// The file time of 1970-01-01 UTC.
inline constexpr std::uint64_t kUnixEpochAsFileTime = 116444736000000000;

/// Microseconds since 1970-01-01 UTC. The division is signed. So a time before 1970 gives a negative number, rounded
/// towards zero, whose two's complement is returned.
constexpr std::uint64_t unixMicroseconds(std::uint64_t fileTime) noexcept {
    return static_cast<std::uint64_t>(static_cast<std::int64_t>(fileTime - kUnixEpochAsFileTime) / 10);
}

/// Milliseconds since 1970-01-01 UTC. The division is unsigned, so times before 1970 give large numbers.
constexpr std::uint64_t unixMilliseconds(std::uint64_t fileTime) noexcept {
    return (fileTime - kUnixEpochAsFileTime) / 10000;
}

/// Microseconds between two readings of a 32-bit millisecond counter. Correct if fewer than 2^32 milliseconds (49.7
/// days) passed between the readings.
constexpr std::uint64_t microsecondsBetweenTicks(std::uint64_t start, std::uint64_t end) noexcept {
    return std::uint64_t{static_cast<std::uint32_t>(end - start)} * 1000;
}

}  // namespace vorel::algorithms
