/// \file
/// An independent calendar for tests. It computes UTC from seconds since 1970-01-01 by counting days in the proleptic
/// Gregorian calendar, without the runtime.
#pragma once

#include <ctime>

namespace test {

inline bool isLeapYear(long long year) {
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

/// The UTC date and time of `time`, which must not be negative.
inline std::tm civilTimeOf(long long time) {
    static constexpr int kMonthDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    long long days = time / 86400;
    const long long seconds = time % 86400;
    std::tm result = {};
    result.tm_wday = static_cast<int>((days + 4) % 7);  // 1970-01-01 was a Thursday
    result.tm_hour = static_cast<int>(seconds / 3600);
    result.tm_min = static_cast<int>(seconds / 60 % 60);
    result.tm_sec = static_cast<int>(seconds % 60);
    long long year = 1970;
    for (; days >= (isLeapYear(year) ? 366 : 365); ++year) {
        days -= isLeapYear(year) ? 366 : 365;
    }
    result.tm_year = static_cast<int>(year - 1900);
    result.tm_yday = static_cast<int>(days);
    for (;; ++result.tm_mon) {
        const int monthDays = kMonthDays[result.tm_mon] + (result.tm_mon == 1 && isLeapYear(year) ? 1 : 0);
        if (days < monthDays) {
            break;
        }
        days -= monthDays;
    }
    result.tm_mday = static_cast<int>(days) + 1;
    return result;
}

}  // namespace test
