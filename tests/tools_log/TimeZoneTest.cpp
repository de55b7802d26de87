#include "vorellog/TimeZone.h"

#include <optional>
#include <string_view>

#include <gtest/gtest.h>

namespace {

using vorellog::kHour;
using vorellog::kMinute;
using vorellog::LocalMs;
using vorellog::parseOffset;
using vorellog::TimeZone;

TEST(TimeZoneTest, Offsets) {
    struct Case {
        std::string_view text;
        std::optional<LocalMs> offset;
    };
    const Case cases[] = {
        {"Z", 0},
        {"z", 0},
        {"+02:00", 2 * kHour},
        {"-0330", -3 * kHour - 30 * kMinute},
        {"+2", 2 * kHour},
        {"+14:00", 14 * kHour},
        {"-00:00", 0},
        {"", std::nullopt},
        {"+", std::nullopt},
        {"2", std::nullopt},
        {"+15", std::nullopt},
        {"+02:60", std::nullopt},
        {"+02:", std::nullopt},
        {"+02:0", std::nullopt},
        {"+02:000", std::nullopt},
        {"+02:x0", std::nullopt},
        {"Z0", std::nullopt},
        {"UTC", std::nullopt},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(parseOffset(c.text), c.offset) << c.text;
    }
}

TEST(TimeZoneTest, FixedOffset) {
    EXPECT_EQ(TimeZone(90 * kMinute).localTime(5), 90 * kMinute + 5);
    EXPECT_EQ(TimeZone(-kHour).localTime(5), 5 - kHour);
}

TEST(TimeZoneTest, ZoneOfThisComputer) {
    // The clock may advance between two calls, so the converted time must only be between the other two times.
    const LocalMs before = vorellog::localNow();
    const LocalMs local = TimeZone().localTime(vorellog::utcNow());
    const LocalMs after = vorellog::localNow();
    EXPECT_LE(before, local);
    EXPECT_LE(local, after);
}

}  // namespace
