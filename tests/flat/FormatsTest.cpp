#include <cmath>
#include <ctime>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include <windows.h>

#include "flat/FlatCalls.h"
#include "support/WideText.h"
#include "vorel/system/ErrorText.h"
#include "vorel/system/Time.h"

namespace {

using test::flatFailure;
using test::flatText;

TEST(FlatFormats, Integers) {
    const auto int64 = [](int64_t value) {
        return flatText([=](auto... out) { return vorel_format_int64(value, out...); });
    };
    const auto uint64 = [](uint64_t value) {
        return flatText([=](auto... out) { return vorel_format_uint64(value, out...); });
    };
    EXPECT_EQ(int64(0), L"0");
    EXPECT_EQ(int64(-42), L"-42");
    EXPECT_EQ(int64(INT64_MIN), L"-9223372036854775808");
    EXPECT_EQ(int64(INT64_MAX), L"9223372036854775807");
    EXPECT_EQ(uint64(UINT64_MAX), L"18446744073709551615");
}

TEST(FlatFormats, Doubles) {
    constexpr double kInfinite = std::numeric_limits<double>::infinity();
    const struct {
        double value;
        const wchar_t* plain;
        const wchar_t* json;
    } kRows[] = {
        {0.0, L"0", L"0"},
        {-0.0, L"0", L"0"},
        {123.456, L"123.456", L"123.456"},
        {1e20, L"1e+020", L"1.0e+020"},
        {0.05, L"5.e-002", L"5.0e-002"},
        {-kInfinite, L"-Inf", L"\"-Infinity\""},
        {std::nan(""), L"NaN", L"\"NaN\""},
    };
    for (const auto& row : kRows) {
        EXPECT_EQ(flatText([&](auto... out) { return vorel_format_double(row.value, VOREL_FORMAT_DEFAULT, out...); }),
                  row.plain);
        EXPECT_EQ(flatText([&](auto... out) { return vorel_format_double(row.value, VOREL_FORMAT_JSON, out...); }),
                  row.json);
    }
    for (const int32_t options : {-1, 2, 3}) {
        EXPECT_EQ(flatFailure<vorel_char16>([&](auto... out) { return vorel_format_double(1, options, out...); }),
                  VOREL_ERROR_INVALID_ARGUMENT);
    }
}

TEST(FlatFormats, Times) {
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

TEST(FlatFormats, CurrentTimeLiesBetweenTwoClockReadings) {
    const unsigned long long before = vorel::util::getmicrotime();
    int64_t now = 0;
    EXPECT_EQ(vorel_current_time(&now), VOREL_OK);
    EXPECT_GE(static_cast<unsigned long long>(now), before);
    EXPECT_LE(static_cast<unsigned long long>(now), vorel::util::getmicrotime());
    EXPECT_EQ(vorel_current_time(nullptr), VOREL_ERROR_INVALID_ARGUMENT);
}

TEST(FlatFormats, SystemErrorTexts) {
    const auto text = [](int32_t code) {
        return flatText([=](auto... out) { return vorel_system_error_text(code, out...); });
    };
    EXPECT_EQ(text(0), L"No Error");
    vorel::BaseString<wchar_t> expected;
    vorel::util::FormatErrorMsg(ERROR_FILE_NOT_FOUND, expected);
    ASSERT_FALSE(expected.empty());
    EXPECT_EQ(text(ERROR_FILE_NOT_FOUND), expected.view());
    EXPECT_EQ(text(0x2FFFFFFF), L"");
}

}  // namespace
