/// \file
/// The clocks of Time.h. A reading must lie between two readings of a reference clock: a clock of the system, or
/// `getmicrotime`.

#include <cstdint>

#include <gtest/gtest.h>

#include <windows.h>

#include "vorel/core/ThreadSafety.h"
#include "vorel/system/Time.h"

namespace {

namespace util = vorel::util;

/// Microseconds since 1970, from the system's clock.
std::uint64_t systemMicroseconds() {
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    return ((std::uint64_t{now.dwHighDateTime} << 32 | now.dwLowDateTime) - 116444736000000000) / 10;
}

TEST(Clocks, Getmicrotime_CountsMicrosecondsSince1970) {
    for (int i = 0; i < 1000; ++i) {
        const std::uint64_t before = systemMicroseconds();
        const std::uint64_t reading = util::getmicrotime();
        const std::uint64_t after = systemMicroseconds();
        ASSERT_LE(before, reading);
        ASSERT_LE(reading, after);
    }
}

TEST(Clocks, GetMillisecondsUTC_CountsMillisecondsSince1970) {
    for (int i = 0; i < 1000; ++i) {
        const std::uint64_t before = util::getmicrotime() / 1000;
        const std::uint64_t reading = util::getMillisecondsUTC();
        const std::uint64_t after = util::getmicrotime() / 1000;
        ASSERT_LE(before, reading);
        ASSERT_LE(reading, after);
    }
    EXPECT_GT(util::getMillisecondsUTC(), 1577836800000u) << "the time must be after the start of 2020";
    EXPECT_LT(util::getMillisecondsUTC(), 32503680000000u) << "the time must be before the year 3000";
}

/// Expects `clock` to return the 32-bit tick count.
void expectTickCount(unsigned long long (*clock)()) {
    for (int i = 0; i < 1000; ++i) {
        const DWORD before = GetTickCount();
        const std::uint64_t reading = clock();
        const DWORD after = GetTickCount();
        ASSERT_EQ(reading >> 32, 0u);
        ASSERT_LE(static_cast<DWORD>(reading) - before, after - before);
    }
}

TEST(Clocks, GetMillisecondCount_IsTheTickCount) {
    expectTickCount([] { return util::getMillisecondCount(); });
}

TEST(Clocks, GetProcessorCycles_IsTheTickCount) {
    expectTickCount([] { return util::getProcessorCycles(); });
}

TEST(Clocks, GetMicrotimeFromProcessorCycles_IsCorrectAcrossOneWrap) {
    EXPECT_EQ(util::getMicrotimeFromProcessorCycles(0xFFFFFFF0, 0x10), 32000u);
    EXPECT_EQ(util::getMicrotimeFromProcessorCycles(0, 0), 0u);
    EXPECT_EQ(util::getMicrotimeFromProcessorCycles(5, 12), 7000u);
    EXPECT_EQ(util::getMicrotimeFromProcessorCycles(12, 5), 4294967289000u);
    EXPECT_EQ(util::getMicrotimeFromProcessorCycles(0x1'0000'0005, 0x7'0000'0006), 1000u);
}

TEST(Clocks, RunAtTheSameSpeed) {
    const std::uint64_t microseconds = util::getmicrotime();
    const std::uint64_t cycles = util::getProcessorCycles();
    vorel::Sleep(100);
    const std::uint64_t elapsedByTicks = util::getMicrotimeFromProcessorCycles(cycles, util::getProcessorCycles());
    const std::uint64_t elapsed = util::getmicrotime() - microseconds;
    EXPECT_GE(elapsed, 80000u);
    EXPECT_GE(elapsedByTicks, 80000u);
    EXPECT_LE(elapsedByTicks, elapsed + 40000u);
}

}  // namespace
