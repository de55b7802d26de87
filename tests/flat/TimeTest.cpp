#include <ctime>

#include <gtest/gtest.h>

#include "flat/FlatCalls.h"
#include "support/WideText.h"
#include "vorel/system/Time.h"

namespace {

using test::flatFailure;
using test::flatText;

TEST(FlatTime, FormatsUtcAndLocalTimes) {
    const auto utc = [](int64_t seconds) {
        return flatText([=](auto... out) { return vorel_format_utc_time(seconds, out...); });
    };
    EXPECT_EQ(utc(1234567890), L"Fri Feb 13 23:31:30 2009");
    EXPECT_EQ(utc(951782399), L"Mon Feb 28 23:59:59 2000");
    EXPECT_EQ(utc(951782400), L"Tue Feb 29 00:00:00 2000");

    const long long now = 1795000000;
    std::tm fields = {};
    char expected[26];
    vorel::util::asctime(vorel::util::localtime(&now, &fields), expected, sizeof expected);
    EXPECT_EQ(flatText([&](auto... out) { return vorel_format_local_time(now, out...); }), test::widened(expected));

    for (const int64_t seconds : {INT64_MIN, INT64_MAX}) {
        EXPECT_EQ(flatFailure<vorel_char16>([=](auto... out) { return vorel_format_utc_time(seconds, out...); }),
                  VOREL_ERROR_INVALID_ARGUMENT);
        EXPECT_EQ(flatFailure<vorel_char16>([=](auto... out) { return vorel_format_local_time(seconds, out...); }),
                  VOREL_ERROR_INVALID_ARGUMENT);
    }
}

TEST(FlatTime, CurrentTimeLiesBetweenTwoClockReadings) {
    const unsigned long long before = vorel::util::getmicrotime();
    int64_t now = 0;
    EXPECT_EQ(vorel_current_time(&now), VOREL_OK);
    EXPECT_GE(static_cast<unsigned long long>(now), before);
    EXPECT_LE(static_cast<unsigned long long>(now), vorel::util::getmicrotime());
    EXPECT_EQ(vorel_current_time(nullptr), VOREL_ERROR_INVALID_ARGUMENT);
}

}  // namespace
