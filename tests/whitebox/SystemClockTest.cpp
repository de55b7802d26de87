/// \file
/// The internal clocks and time texts that the exported functions and the error log use.

#include "platform/SystemClock.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <stdexcept>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include <windows.h>

#include "support/Expect.h"
#include "support/GuardedBuffer.h"
#include "support/ImportHook.h"
#include "support/TimeZone.h"
#include "system/CivilTime.h"
#include "vorel/exceptions/Exception.h"
#include "vorel/system/Time.h"

namespace {

using vorel::platform::fileTimeNow;
using vorel::platform::formatTime;
using vorel::platform::LocalTimeText;
using vorel::platform::millisecondsUtc;

std::tm someTime() {
    std::tm time = {};
    time.tm_year = 109;
    time.tm_mon = 1;
    time.tm_mday = 13;
    time.tm_hour = 23;
    time.tm_min = 31;
    time.tm_sec = 30;
    time.tm_wday = 5;
    time.tm_yday = 43;
    return time;
}

TEST(SystemClock, FileTimeNow_LiesBetweenTwoReadings) {
    const auto reading = [] {
        FILETIME now;
        GetSystemTimeAsFileTime(&now);
        return std::uint64_t{now.dwHighDateTime} << 32 | now.dwLowDateTime;
    };
    for (int i = 0; i < 1000; ++i) {
        const std::uint64_t before = reading();
        const std::uint64_t now = fileTimeNow();
        ASSERT_LE(before, now);
        ASSERT_LE(now, reading());
    }
}

TEST(SystemClock, MillisecondsUtc_CountsFrom1970) {
    const auto seconds = static_cast<std::uint64_t>(_time64(nullptr));
    const std::uint64_t milliseconds = millisecondsUtc();
    EXPECT_GE(milliseconds + 1000, seconds * 1000) << "the runtime's clock may be one tick ahead of the system's clock";
    EXPECT_LE(milliseconds, static_cast<std::uint64_t>(_time64(nullptr)) * 1000 + 1999);
}

TEST(SystemClock, FormatTime_WritesTheTextWithoutItsLineFeed) {
    for (const std::size_t size : {std::size_t{26}, std::size_t{27}, std::size_t{64}}) {
        test::GuardedBuffer<char> buffer(size);
        EXPECT_TRUE(formatTime(someTime(), buffer.data(), size));
        EXPECT_STREQ(buffer.data(), "Fri Feb 13 23:31:30 2009");
    }
}

TEST(SystemClock, FormatTime_RejectsATimeOutOfRange) {
    std::tm time = someTime();
    time.tm_mon = 12;
    test::GuardedBuffer<char> buffer(26);
    EXPECT_FALSE(formatTime(time, buffer.data(), 26));
}

TEST(SystemClock, FormatTime_RemovesTheLineFeedForEveryYear) {
    for (const int year : {0, 99, 1100, 8099, 8100, 100000}) {
        for (const std::size_t size : {std::size_t{26}, std::size_t{40}}) {
            std::tm time = someTime();
            time.tm_year = year;
            test::GuardedBuffer<char> buffer(size);
            if (formatTime(time, buffer.data(), size)) {  // the runtime may reject years with more than four digits
                const std::string text = buffer.data();
                ASSERT_FALSE(text.empty()) << year;
                EXPECT_NE(text.back(), '\n') << year;
            }
        }
    }
}

TEST(SystemClock, FormatTime_AcceptsTextsOfAnyLengthWithAndWithoutALineFeed) {
    struct Case {
        const char* given;
        const char* text;
    };
    for (const Case& c : {Case{"Fri Feb 13 23:31:30 12009\n", "Fri Feb 13 23:31:30 12009"},
                          Case{"Fri Feb 13 23:31:30 12009", "Fri Feb 13 23:31:30 12009"}, Case{"", ""}}) {
        const test::ImportHook<importedAsctimeS> runtime(
            [&](char* buffer, std::size_t size, const std::tm*) { return strcpy_s(buffer, size, c.given); });
        char buffer[40] = {};
        EXPECT_TRUE(formatTime(someTime(), buffer, sizeof buffer));
        EXPECT_STREQ(buffer, c.text);
    }
}

TEST(SystemClock, FormatTime_TerminatesATextThatFillsTheBuffer) {
    for (const bool hasLineFeed : {false, true}) {
        const test::ImportHook<importedAsctimeS> runtime([&](char* buffer, std::size_t size, const std::tm*) {
            std::memset(buffer, 'x', size);
            if (hasLineFeed) {
                buffer[size - 2] = '\n';
            }
            return 0;
        });
        test::GuardedBuffer<char> buffer(40);
        EXPECT_TRUE(formatTime(someTime(), buffer.data(), 40));
        EXPECT_EQ(std::string(buffer.data()), std::string(hasLineFeed ? 38 : 39, 'x'));
    }
}

TEST(SystemClock, All32BitsOfTheTickCountAreReturned) {
    const test::ImportHook<importedGetTickCount> ticks([] { return DWORD{0xFFFFFFF0}; });
    EXPECT_EQ(vorel::util::getMillisecondCount(), 0xFFFFFFF0u);
    EXPECT_EQ(vorel::util::getProcessorCycles(), 0xFFFFFFF0u);
}

TEST(SystemClock, LocalTimeText_IsEmptyIfTheRuntimeFails) {
    {
        const test::ImportHook<importedLocaltime64S> localTime([](std::tm*, const __time64_t*) { return EINVAL; });
        EXPECT_STREQ(LocalTimeText(false).text, "");
    }
    const test::ImportHook<importedAsctimeS> timeText([](char* buffer, std::size_t, const std::tm*) {
        *buffer = 'x';
        return EINVAL;
    });
    EXPECT_STREQ(LocalTimeText(false).text, "");
}

TEST(SystemClock, LocalTimeText_IsTheCurrentTimeInTheLocalTimeZone) {
    const test::TimeZone zone;
    for (;;) {
        const __time64_t before = _time64(nullptr);
        const LocalTimeText now(false);
        if (_time64(nullptr) != before) {
            continue;  // a new second has started
        }
        const std::tm local = test::civilTimeOf(before + zone.kSecondsAhead);
        char expected[26];
        ASSERT_EQ(asctime_s(expected, sizeof expected, &local), 0);
        EXPECT_EQ(std::string(now.text) + "\n", expected);
        EXPECT_EQ(std::strlen(now.text), 24u);
        return;
    }
}

TEST(SystemClock, LocalTimeText_UsesTheRuntimesClockOnlyNearTheEndOfASecond) {
    constexpr std::uint64_t kSecond = 10000000;                            // in units of a file time
    constexpr std::uint64_t kTime = (11644473600 + 1234567890) * kSecond;  // 2009-02-13 23:31:30 UTC
    struct Case {
        std::uint64_t coarse;
        const char* text;
    };
    const test::TimeZone zone;
    const test::ImportHook<importedTime64> precise([](__time64_t*) { return __time64_t{1234567899}; });
    for (const Case& c :
         {Case{kTime, "Sat Feb 14 04:31:30 2009"}, Case{kTime + 8999999, "Sat Feb 14 04:31:30 2009"},
          Case{kTime + 9000000, "Sat Feb 14 04:31:39 2009"}, Case{kTime + 9999999, "Sat Feb 14 04:31:39 2009"},
          Case{kTime + 10000000, "Sat Feb 14 04:31:31 2009"}}) {
        const test::ImportHook<importedGetSystemTimeAsFileTime> clock([&](FILETIME* out) {
            *out = {static_cast<DWORD>(c.coarse), static_cast<DWORD>(c.coarse >> 32)};
        });
        EXPECT_STREQ(LocalTimeText(false).text, c.text) << c.coarse - kTime;
    }
}

TEST(SystemClock, LocalTimeText_UsesTheRuntimesClockIfTheSystemsClockThrows) {
    const test::TimeZone zone;
    const test::ImportHook<importedTime64> precise([](__time64_t*) { return __time64_t{1234567890}; });
    const test::ImportHook<importedGetSystemTimeAsFileTime> throwing(
        [](FILETIME*) { throw std::runtime_error("not of the library"); });
    for (const bool withMilliseconds : {false, true}) {
        const LocalTimeText now(withMilliseconds);
        EXPECT_STREQ(now.text, "Sat Feb 14 04:31:30 2009");
        EXPECT_EQ(now.milliseconds, 0u);
    }
}

// Two readings, or readings of two clocks, could belong to different seconds.
TEST(SystemClock, LocalTimeText_TakesSecondsAndMillisecondsFromOneReading) {
    constexpr std::uint64_t kSecond = 10000000;                            // in units of a file time
    constexpr std::uint64_t kTime = (11644473600 + 1234567890) * kSecond;  // 2009-02-13 23:31:30 UTC
    struct Case {
        std::uint64_t first;  // the reading after it is in the next second
        const char* text;
        unsigned int milliseconds;
    };
    const test::TimeZone zone;
    const test::ImportHook<importedTime64> precise([](__time64_t*) { return __time64_t{1234567899}; });
    for (const Case& c :
         {Case{kTime, "Sat Feb 14 04:31:30 2009", 0}, Case{kTime + 70000, "Sat Feb 14 04:31:30 2009", 7},
          Case{kTime + 8999999, "Sat Feb 14 04:31:30 2009", 899},
          Case{kTime + 9999999, "Sat Feb 14 04:31:30 2009", 999}}) {
        std::uint64_t time = c.first;
        const test::ImportHook<importedGetSystemTimeAsFileTime> clock([&](FILETIME* out) {
            *out = {static_cast<DWORD>(time), static_cast<DWORD>(time >> 32)};
            time += kSecond;
        });
        const LocalTimeText now(true);
        EXPECT_STREQ(now.text, c.text) << c.first - kTime;
        EXPECT_EQ(now.milliseconds, c.milliseconds);
    }
}

TEST(SystemClock, ExceptionsAreRecordedWithTheNameOfTheFunction) {
    struct Clock {
        unsigned long long (*read)();
        std::wstring name;
    };
    const Clock clocks[] = {
        {&vorel::util::getmicrotime, L"vorel::util::getmicrotime"},
        {&vorel::util::getMillisecondsUTC, L"vorel::util::getMillisecondsUTC"},
    };
    for (const Clock& clock : clocks) {
        {
            bool isBroken = true;  // fails only once, because the message is logged, and the log also reads the clock
            const test::ImportHook<importedGetSystemTimeAsFileTime> broken([&](FILETIME* time) {
                if (std::exchange(isBroken, false)) {
                    throw vorel::Exception(L"broken");
                }
                broken.original(time);
            });
            test::expectThrows<vorel::Exception>(clock.read, {L"broken", clock.name + L": Vorel exception rethrown"});
        }
        const test::ImportHook<importedGetSystemTimeAsFileTime> throwing(
            [](FILETIME*) { throw std::runtime_error("not of the library"); });
        test::expectThrows<vorel::Exception>(clock.read, {clock.name + L": Severe error thrown"});
    }
}

}  // namespace
