#include "vorellog/LogTime.h"

#include <optional>
#include <string_view>

#include <gtest/gtest.h>

#include "vorellog/TimeZone.h"

namespace {

using vorellog::isoText;
using vorellog::LocalMs;
using vorellog::parseLogTime;
using vorellog::parseTypedTime;

// 2026-11-16 is 20773 days after 1970-01-01: 56 years, 14 of them with a leap day, and 319 days.
constexpr LocalMs kDay = 86400000;
constexpr LocalMs kDate = 20773 * kDay;
constexpr LocalMs kTime = kDate + 6188000;  // 01:43:08
const vorellog::TimeZone kZone(2 * vorellog::kHour);

TEST(LogTimeTest, TimesOfLinesAreParsed) {
    struct Case {
        std::string_view text;
        std::optional<LocalMs> time;
        const char* why;
    };
    const Case cases[] = {
        {"Mon Nov 16 01:43:08 2026", kTime, "format of the library"},
        {"Thu Jan 01 00:00:00 1970", 0, "the first second"},
        {"Sun Feb 29 12:00:00 2032", 22704 * kDay + kDay / 2, "a leap day"},
        {"Fri Nov  6 01:43:08 2026", kTime - 10 * kDay, "a day that is padded with a space"},
        {"Sat Nov 16 01:43:08 2026", kTime, "a weekday that does not match the date"},
        {"Mon Nov 16 23:59:60 2026", kDate + kDay, "a leap second"},
        {"Mon Nov 31 01:43:08 2026", std::nullopt, "day after the end of the month"},
        {"Mon Feb 29 01:43:08 2026", std::nullopt, "not a leap year"},
        {"Mon Nov 00 01:43:08 2026", std::nullopt, "day 0"},
        {"Mon Nov 16 24:43:08 2026", std::nullopt, "hour 24"},
        {"Mon Nov 16 01:60:08 2026", std::nullopt, "minute 60"},
        {"Mon Nov 16 01:43:61 2026", std::nullopt, "second 61"},
        {"Xon Nov 16 01:43:08 2026", std::nullopt, "invalid weekday"},
        {"unM Nov 16 01:43:08 2026", std::nullopt, "letters of two adjacent weekday names"},
        {"Mon Nux 16 01:43:08 2026", std::nullopt, "invalid month"},
        {"Mon Nov 16 01:43:08 20x6", std::nullopt, "invalid year"},
        {"Mon Nov 16 01-43-08 2026", std::nullopt, "hyphens instead of colons"},
        {"Mon Nov 16 01:43:08 2026 ", std::nullopt, "one character too many"},
        {"Mon Nov 16 01:43:08 202", std::nullopt, "one character missing"},
        {"Mon Nov 16 +1:43:08 2026", std::nullopt, "a sign in the hour"},
        {"", std::nullopt, "empty"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(parseLogTime(c.text), c.time) << c.why;
    }
}

TEST(LogTimeTest, TypedTimesAreParsedAsSpans) {
    struct Case {
        std::string_view text;
        LocalMs from;
        LocalMs length;
    };
    const LocalMs now = kTime + 5;
    const Case cases[] = {
        {"2026-11-16", kDate, kDay},
        {"2026-11-16 01:43", kTime - 8000, 60000},
        {"2026-11-16T01:43", kTime - 8000, 60000},
        {"2026-11-16T01:43:08", kTime, 1000},
        {"2026-11-16 01:43:08.045", kTime + 45, 1},
        {"2026-11-15T23:43:08Z", kTime, 1000},
        {"2026-11-15 23:43z", kTime - 8000, 60000},
        {"2026-11-16T03:43:08.045+04:00", kTime + 45, 1},
        {"2026-11-15 20:13:08 -0330", kTime, 1000},
        {"today", kDate, kDay},
        {"yesterday", kDate - kDay, kDay},
        {"01:43", kTime - 8000, 60000},
        {"23:00:01", kDate + 82801000, 1000},
        {"Mon Nov 16 01:43:08 2026", kTime, 1000},
        {"0s", now, 1},
        {"90s", now - 90000, 1},
        {"15m", now - 900000, 1},
        {"2h", now - 7200000, 1},
        {"3d", now - 3 * kDay, 1},
    };
    for (const Case& c : cases) {
        const auto span = parseTypedTime(c.text, now, kZone);
        ASSERT_TRUE(span) << c.text;
        EXPECT_EQ(span->from, c.from) << c.text;
        EXPECT_EQ(span->to, c.from + c.length) << c.text;
    }
}

TEST(LogTimeTest, InvalidTypedTimesAreRejected) {
    for (const std::string_view text : {"",
                                        "now",
                                        "2026",
                                        "2026-11",
                                        "2026-13-01",
                                        "2026-02-29",
                                        "2026-11-16 ",
                                        "2026-11-16 1:43",
                                        "2026-11-16x01:43",
                                        "2026-11-16 24:00",
                                        "01:43:08.04",
                                        "01:43:08.0455",
                                        "01:60",
                                        "15",
                                        "15x",
                                        "m",
                                        "Today",
                                        "tomorrow",
                                        "2026-11-16Z",
                                        "2026-11-16T01:43+25:00",
                                        "2026-11-16T01:43+02:00x",
                                        "01:43Z",
                                        "-15m",
                                        "15 m",
                                        "1.5h",
                                        "99999999999999999999s",
                                        "10000000000s"}) {
        EXPECT_FALSE(parseTypedTime(text, kTime, kZone)) << text;
    }
}

TEST(LogTimeTest, IsoTextHasMillisecondsOnRequest) {
    EXPECT_EQ(isoText(kTime + 45, true), "2026-11-16T01:43:08.045");
    EXPECT_EQ(isoText(kTime + 45, false), "2026-11-16T01:43:08");
    EXPECT_EQ(isoText(kTime, false, ' '), "2026-11-16 01:43:08");
    EXPECT_EQ(isoText(0, true), "1970-01-01T00:00:00.000");
    EXPECT_EQ(isoText(-1, true), "1969-12-31T23:59:59.999");
}

TEST(LogTimeTest, EveryDayOfACenturyRoundTrips) {
    constexpr std::string_view kMonths = "JanFebMarAprMayJunJulAugSepOctNovDec";
    for (LocalMs day = 0; day != 36525; ++day) {
        const std::string iso = isoText(day * kDay, false);
        const auto month = static_cast<std::size_t>(std::stoi(iso.substr(5, 2)) - 1);
        const std::string line = "Mon " + std::string(kMonths.substr(month * 3, 3)) + ' ' + iso.substr(8, 2) +
                                 " 00:00:00 " + iso.substr(0, 4);
        ASSERT_EQ(parseLogTime(line), day * kDay) << line;
    }
}

}  // namespace
