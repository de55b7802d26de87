/// \file
/// The time conversions. ClocksTest.cpp tests the clocks.

#include "vorel/system/Time.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <random>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Expect.h"
#include "support/GuardedBuffer.h"
#include "support/TemporaryLog.h"
#include "support/TimeZone.h"
#include "system/CivilTime.h"

namespace {

namespace util = vorel::util;

using test::civilTimeOf;
using test::expectThrows;
using test::GuardedBuffer;
using ::testing::ElementsAre;
using vorel::Exception;

constexpr long long kLastTime = 32535215999;  // 3000-12-31 23:59:59, the last time that every runtime supports

void expectSameTime(const std::tm& actual, const std::tm& expected, long long time) {
    EXPECT_EQ(actual.tm_year, expected.tm_year) << time;
    EXPECT_EQ(actual.tm_mon, expected.tm_mon) << time;
    EXPECT_EQ(actual.tm_mday, expected.tm_mday) << time;
    EXPECT_EQ(actual.tm_hour, expected.tm_hour) << time;
    EXPECT_EQ(actual.tm_min, expected.tm_min) << time;
    EXPECT_EQ(actual.tm_sec, expected.tm_sec) << time;
    EXPECT_EQ(actual.tm_wday, expected.tm_wday) << time;
    EXPECT_EQ(actual.tm_yday, expected.tm_yday) << time;
}

/// Calls `action` repeatedly until a call starts and ends in the same second, and returns that second.
template <class Action>
long long withinOneSecond(Action action) {
    for (;;) {
        const long long before = _time64(nullptr);
        action();
        if (_time64(nullptr) == before) {
            return before;
        }
    }
}

std::string textOf(const std::tm& time) {
    char text[26];
    EXPECT_EQ(asctime_s(text, sizeof text, &time), 0);
    return {text, 24};
}

// ---- Broken-down times ----------------------------------------------------------------------------------------------

TEST(Gmtime, ConvertsKnownTimes) {
    struct Case {
        long long time;
        int year, month, day, hour, minute, second, weekday, dayOfYear;
    };
    for (const Case& c : {
             Case{0, 1970, 1, 1, 0, 0, 0, 4, 0},
             Case{951782399, 2000, 2, 28, 23, 59, 59, 1, 58},
             Case{951782400, 2000, 2, 29, 0, 0, 0, 2, 59},
             Case{1078099200, 2004, 3, 1, 0, 0, 0, 1, 60},
             Case{1234567890, 2009, 2, 13, 23, 31, 30, 5, 43},
             Case{2147483648, 2038, 1, 19, 3, 14, 8, 2, 18},
             Case{4107542400, 2100, 3, 1, 0, 0, 0, 1, 59},
             Case{kLastTime, 3000, 12, 31, 23, 59, 59, 3, 364},
         }) {
        std::tm result;
        EXPECT_EQ(util::gmtime(&c.time, &result), &result);
        std::tm expected = {};
        expected.tm_year = c.year - 1900;
        expected.tm_mon = c.month - 1;
        expected.tm_mday = c.day;
        expected.tm_hour = c.hour;
        expected.tm_min = c.minute;
        expected.tm_sec = c.second;
        expected.tm_wday = c.weekday;
        expected.tm_yday = c.dayOfYear;
        expectSameTime(result, expected, c.time);
        EXPECT_EQ(result.tm_isdst, 0);
    }
}

TEST(Gmtime, AgreesWithCalendarArithmetic) {
    std::mt19937_64 random(19700101);
    for (int i = 0; i < 20000; ++i) {
        const auto time = static_cast<long long>(random() % (kLastTime + 1));
        std::tm result;
        util::gmtime(&time, &result);
        ASSERT_NO_FATAL_FAILURE(expectSameTime(result, civilTimeOf(time), time)) << "seed 19700101";
    }
}

TEST(Localtime, IsTheInverseOfMktime) {
    std::mt19937_64 random(20001);
    for (int i = 0; i < 5000; ++i) {
        const auto time = static_cast<long long>(random() % (2 * std::uint64_t{1577836800})) + 86400;
        std::tm result;
        EXPECT_EQ(util::localtime(&time, &result), &result);
        std::tm expected;
        ASSERT_EQ(_localtime64_s(&expected, &time), 0);
        expectSameTime(result, expected, time);
        EXPECT_EQ(result.tm_isdst, expected.tm_isdst);
        ASSERT_EQ(_mktime64(&result), time) << "seed 20001";
    }
}

TEST(Localtime, UsesTheTimeZone) {
    const test::TimeZone zone;
    for (const long long time : {1234567890LL, 951782399LL, 86400LL}) {
        std::tm result;
        util::localtime(&time, &result);
        expectSameTime(result, civilTimeOf(time + zone.kSecondsAhead), time);
        util::gmtime(&time, &result);
        expectSameTime(result, civilTimeOf(time), time);
    }
}

TEST(Localtime, NullResultThrows) {
    const test::TemporaryLog log;
    const long long time = 0;
    expectThrows<Exception>([&] { util::localtime(&time, nullptr); },
                            {L"pLocalTime is null", L"vorel::util::localtime: Vorel exception rethrown"});
    expectThrows<Exception>([&] { util::gmtime(&time, nullptr); },
                            {L"pGMTime is null", L"vorel::util::gmtime: Vorel exception rethrown"});
    EXPECT_THAT(log.messages(), ElementsAre("Vorel Error: pLocalTime is null",
                                            "Vorel Error: vorel::util::localtime: Vorel exception rethrown",
                                            "Vorel Error: pGMTime is null",
                                            "Vorel Error: vorel::util::gmtime: Vorel exception rethrown"));
}

TEST(Localtime, FailureOfTheRuntimeIsIgnored) {
    const long long tooEarly = -4000000000000000;
    for (const long long* const time : {static_cast<const long long*>(nullptr), &tooEarly}) {
        std::tm result;
        EXPECT_EQ(util::localtime(time, &result), &result);
        EXPECT_EQ(util::gmtime(time, &result), &result);
    }
}

// ---- Text -----------------------------------------------------------------------------------------------------------

std::tm someTime() {
    return civilTimeOf(1234567890);  // Friday
}

TEST(Asctime, Writes24UnitsWithoutALineFeed) {
    for (const std::size_t size : {26u, 27u, 100u}) {
        GuardedBuffer<char> buffer(size);
        const std::tm time = someTime();
        EXPECT_EQ(util::asctime(&time, buffer.data(), size), buffer.data());
        EXPECT_STREQ(buffer.data(), "Fri Feb 13 23:31:30 2009");
    }
}

TEST(Asctime, NamesEveryDayAndMonth) {
    static constexpr const char* kDays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    static constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                              "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    for (int month = 0; month < 12; ++month) {
        for (int day = 0; day < 7; ++day) {
            std::tm time = someTime();
            time.tm_mon = month;
            time.tm_wday = day;
            char buffer[26];
            util::asctime(&time, buffer, sizeof buffer);
            EXPECT_EQ(buffer, std::string(kDays[day]) + " " + kMonths[month] + " 13 23:31:30 2009");
        }
    }
}

TEST(Asctime, NullTimeMeansNowInLocalTime) {
    GuardedBuffer<char> buffer(26);
    const long long now = withinOneSecond([&] { util::asctime(nullptr, buffer.data(), 26); });
    std::tm local;
    ASSERT_EQ(_localtime64_s(&local, &now), 0);
    char expected[26];
    ASSERT_EQ(asctime_s(expected, sizeof expected, &local), 0);
    EXPECT_EQ(std::string(buffer.data()) + "\n", expected);
    EXPECT_EQ(std::strlen(buffer.data()), 24u);
}

TEST(Asctime, NullTimeUsesTheTimeZone) {
    const test::TimeZone zone;
    char text[26];
    const long long now = withinOneSecond([&] { util::asctime(nullptr, text, sizeof text); });
    EXPECT_EQ(text, textOf(civilTimeOf(now + zone.kSecondsAhead)));
}

TEST(Asctime, TimesOutOfRangeThrow) {
    struct Case {
        const char* field;
        int std::tm::*member;
        int value;
    };
    for (const auto& [field, member, value] : {
             Case{"second", &std::tm::tm_sec, -1},
             Case{"second", &std::tm::tm_sec, 62},
             Case{"minute", &std::tm::tm_min, -1},
             Case{"minute", &std::tm::tm_min, 60},
             Case{"hour", &std::tm::tm_hour, -1},
             Case{"hour", &std::tm::tm_hour, 24},
             Case{"day", &std::tm::tm_mday, -1},
             Case{"day", &std::tm::tm_mday, 32},
             Case{"month", &std::tm::tm_mon, -1},
             Case{"month", &std::tm::tm_mon, 12},
             Case{"weekday", &std::tm::tm_wday, -1},
             Case{"weekday", &std::tm::tm_wday, 7},
             Case{"year", &std::tm::tm_year, -1},
         }) {
        SCOPED_TRACE(std::string(field) + " " + std::to_string(value));
        std::tm time = someTime();
        time.*member = value;
        GuardedBuffer<char> buffer(26);
        expectThrows<Exception>([&] { util::asctime(&time, buffer.data(), 26); },
                                {L"Invalid time structure or out of range values for components of the time",
                                 L"vorel::util::asctime: Vorel exception rethrown"});
    }
}

TEST(Ctime, TextEndsWithALineFeed) {
    for (const std::size_t size : {26u, 27u, 100u}) {
        for (const long long time : {1234567890LL, 951782400LL, 4107542400LL}) {
            GuardedBuffer<char> buffer(size);
            EXPECT_EQ(util::ctime(&time, buffer.data(), size), buffer.data());
            EXPECT_EQ(std::strlen(buffer.data()), 25u);
            EXPECT_EQ(buffer.data()[24], '\n');
            std::tm local;
            char text[26];
            util::asctime(util::localtime(&time, &local), text, sizeof text);
            EXPECT_EQ(buffer.data(), std::string(text) + "\n") << time;
        }
    }
}

TEST(Ctime, UsesTheTimeZone) {
    const test::TimeZone zone;
    const long long time = 1234567890;
    char text[26];
    EXPECT_STREQ(util::ctime(&time, text, sizeof text), "Sat Feb 14 04:31:30 2009\n");
}

TEST(Ctime, FailureOfTheRuntimeIsIgnored) {
    const long long tooEarly = -4000000000000000;
    for (const long long* const time : {static_cast<const long long*>(nullptr), &tooEarly}) {
        GuardedBuffer<char> buffer(26);
        EXPECT_EQ(util::ctime(time, buffer.data(), 26), buffer.data());
    }
}

// ---- Invalid-parameter handler of the program -----------------------------------------------------------------------

int s_invalidParameters = 0;

void __cdecl countInvalidParameter(const wchar_t*, const wchar_t*, const wchar_t*, unsigned int, std::uintptr_t) {
    ++s_invalidParameters;
}

TEST(TimeConversions, DoNotCallTheInvalidParameterHandlerOfTheProgram) {
    const _invalid_parameter_handler before = _set_invalid_parameter_handler(&countInvalidParameter);
    s_invalidParameters = 0;
    std::tm time;
    char text[26];
    util::localtime(nullptr, &time);
    util::gmtime(nullptr, &time);
    util::ctime(nullptr, text, sizeof text);
    time = someTime();
    time.tm_mon = 12;
    EXPECT_THROW(util::asctime(&time, text, sizeof text), Exception);
    EXPECT_EQ(s_invalidParameters, 0);
    asctime_s(text, sizeof text, &time);
    EXPECT_EQ(s_invalidParameters, 1) << "the handler must be installed again";
    _set_invalid_parameter_handler(before);
}

// ---- Invalid buffers ------------------------------------------------------------------------------------------------

std::wstring tooShort(unsigned long long size) {
    return L"buffer must be at least 26 characters long, actual size = " + std::to_wstring(static_cast<int>(size));
}

TEST(TimeText, BuffersBelow26UnitsThrow) {
    const std::tm brokenDown = someTime();
    const long long time = 0;
    for (unsigned long long size = 0; size < 26; ++size) {
        GuardedBuffer<char> buffer(26);
        expectThrows<Exception>([&] { util::asctime(&brokenDown, buffer.data(), size); },
                                {tooShort(size), L"vorel::util::asctime: Vorel exception rethrown"});
        expectThrows<Exception>([&] { util::asctime(nullptr, buffer.data(), size); },
                                {tooShort(size), L"vorel::util::asctime: Vorel exception rethrown"});
        expectThrows<Exception>([&] { util::ctime(&time, buffer.data(), size); },
                                {tooShort(size), L"vorel::util::ctime: Vorel exception rethrown"});
        EXPECT_EQ(std::string(buffer.data(), 26), std::string(26, buffer.kFill)) << "the buffer must not change";
    }
}

TEST(TimeText, NullBuffersThrowForEverySize) {
    const test::TemporaryLog log;
    const std::tm brokenDown = someTime();
    const long long time = 0;
    for (const unsigned long long size : {0u, 26u}) {
        expectThrows<Exception>([&] { util::asctime(&brokenDown, nullptr, size); },
                                {L"buffer is null", L"vorel::util::asctime: Vorel exception rethrown"});
        expectThrows<Exception>([&] { util::ctime(&time, nullptr, size); },
                                {L"buffer is null", L"vorel::util::ctime: Vorel exception rethrown"});
    }
    const std::vector<std::string> once = {
        "Vorel Error: buffer is null", "Vorel Error: vorel::util::asctime: Vorel exception rethrown",
        "Vorel Error: buffer is null", "Vorel Error: vorel::util::ctime: Vorel exception rethrown"};
    std::vector<std::string> twice = once;
    twice.insert(twice.end(), once.begin(), once.end());
    EXPECT_EQ(log.messages(), twice);
}

}  // namespace
