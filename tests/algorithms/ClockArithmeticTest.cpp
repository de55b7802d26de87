#include "algorithms/ClockArithmetic.h"

#include <cstdint>

#include <gtest/gtest.h>

namespace {

using vorel::algorithms::kUnixEpochAsFileTime;
using vorel::algorithms::microsecondsBetweenTicks;
using vorel::algorithms::unixMicroseconds;
using vorel::algorithms::unixMilliseconds;

constexpr std::uint64_t kTicksPerSecond = 10'000'000;

TEST(ClockArithmetic, EpochIsTheFileTimeOf1970) {
    // 89 of the 369 years from 1601 to 1969 are leap years. 1700, 1800 and 1900 are not leap years.
    constexpr std::uint64_t kDays = 369 * 365 + 89;
    EXPECT_EQ(kUnixEpochAsFileTime, kDays * 86400 * kTicksPerSecond);
    EXPECT_EQ(kUnixEpochAsFileTime, 116444736000000000u);
}

TEST(ClockArithmetic, UnixMicroseconds_RoundsTowardsTheEpoch) {
    struct Case {
        std::int64_t ticksFromEpoch;
        std::int64_t microseconds;
    };
    for (const auto& [ticks, microseconds] : {Case{0, 0}, Case{9, 0}, Case{10, 1}, Case{19, 1}, Case{12345678, 1234567},
                                              Case{-9, 0}, Case{-10, -1}, Case{-19, -1}, Case{-20, -2}}) {
        const std::uint64_t fileTime = kUnixEpochAsFileTime + static_cast<std::uint64_t>(ticks);
        EXPECT_EQ(static_cast<std::int64_t>(unixMicroseconds(fileTime)), microseconds) << ticks;
    }
}

TEST(ClockArithmetic, UnixMilliseconds_WrapsBefore1970) {
    struct Case {
        std::uint64_t fileTime;
        std::uint64_t milliseconds;
    };
    for (const auto& [fileTime, milliseconds] :
         {Case{kUnixEpochAsFileTime, 0}, Case{kUnixEpochAsFileTime + 9999, 0}, Case{kUnixEpochAsFileTime + 10000, 1},
          Case{kUnixEpochAsFileTime + 1'000'000'000 * kTicksPerSecond, 1'000'000'000'000},
          // Before 1970, the difference wraps to 2^64 - 1, which is then divided by 10000 and rounded down.
          Case{kUnixEpochAsFileTime - 1, 1'844'674'407'370'955}}) {
        EXPECT_EQ(unixMilliseconds(fileTime), milliseconds) << fileTime;
    }
}

TEST(ClockArithmetic, MicrosecondsBetweenTicks_HandlesOneWrap) {
    struct Case {
        std::uint64_t start;
        std::uint64_t end;
        std::uint64_t microseconds;
    };
    for (const auto& [start, end, microseconds] :
         {Case{0, 0, 0}, Case{100, 101, 1000}, Case{0xFFFFFFF0, 0x10, 32000}, Case{0xFFFFFFFF, 0, 1000},
          Case{1, 0, 4'294'967'295'000}, Case{0, 0xFFFFFFFF, 4'294'967'295'000},
          // The upper 32 bits are ignored.
          Case{0x5'0000'0000, 0x9'0000'0007, 7000}}) {
        EXPECT_EQ(microsecondsBetweenTicks(start, end), microseconds) << start << " to " << end;
    }
}

}  // namespace
