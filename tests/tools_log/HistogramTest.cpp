#include "vorellog/Histogram.h"

#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace {

using vorellog::Histogram;
using vorellog::LocalMs;

constexpr LocalMs kSecond = 1000;

TEST(HistogramTest, EmptyHistogramHasNoSteps) {
    EXPECT_TRUE(Histogram().steps().empty());
}

TEST(HistogramTest, ShortSpanHasStepsOfOneSecond) {
    Histogram histogram;
    for (const LocalMs time : {5000, 5999, 7000}) {
        histogram.add(time);
    }
    const auto steps = histogram.steps();
    ASSERT_EQ(steps.size(), 3u);
    EXPECT_EQ(histogram.stepMs(), kSecond);
    EXPECT_EQ(steps[0].from, 5000);
    EXPECT_EQ(steps[0].records, 2u);
    EXPECT_EQ(steps[1].records, 0u);
    EXPECT_EQ(steps[2].from, 7000);
    EXPECT_EQ(steps[2].records, 1u);
}

TEST(HistogramTest, TooManyStepsAreMerged) {
    struct Case {
        LocalMs lastSecond;
        LocalMs stepSeconds;
    };
    constexpr LocalMs kHour = 3600;
    constexpr LocalMs kDay = 24 * kHour;
    const Case cases[] = {{23, 1},
                          {24, 5},
                          {119, 5},
                          {120, 15},
                          {kHour, 300},
                          {kDay, 3 * kHour},
                          {7 * kDay, 12 * kHour},
                          {365 * kDay, 28 * kDay}};
    for (const Case& c : cases) {
        Histogram histogram;
        histogram.add(0);
        histogram.add(c.lastSecond * kSecond);
        EXPECT_EQ(histogram.stepMs(), c.stepSeconds * kSecond) << c.lastSecond;
        EXPECT_LE(histogram.steps().size(), Histogram::kMaxSteps);
        EXPECT_EQ(histogram.steps().front().records, 1u);
        EXPECT_EQ(histogram.steps().back().records, 1u);
    }
}

TEST(HistogramTest, CountsAreIndependentOfRecordOrder) {
    std::mt19937_64 random(20261116);
    for (int round = 0; round != 200; ++round) {
        const LocalMs span = LocalMs{1000} << random() % 32;
        std::vector<LocalMs> times(1 + random() % 50);
        for (LocalMs& time : times) {
            time = static_cast<LocalMs>(random() % static_cast<unsigned long long>(span)) - span / 3;
        }
        Histogram forward;
        Histogram backward;
        for (std::size_t index = 0; index != times.size(); ++index) {
            forward.add(times[index]);
            backward.add(times[times.size() - 1 - index]);
        }
        const auto steps = forward.steps();
        const auto others = backward.steps();
        ASSERT_EQ(steps.size(), others.size());
        ASSERT_LE(steps.size(), Histogram::kMaxSteps);
        for (std::size_t index = 0; index != steps.size(); ++index) {
            ASSERT_EQ(steps[index].from, others[index].from);
            ASSERT_EQ(steps[index].records, others[index].records);
            unsigned long long expected = 0;
            for (const LocalMs time : times) {
                expected += time >= steps[index].from && time < steps[index].from + forward.stepMs() ? 1u : 0u;
            }
            ASSERT_EQ(steps[index].records, expected);
        }
    }
}

TEST(HistogramTest, SpanOfAllYearsHasAtMostMaxSteps) {
    Histogram histogram;
    histogram.add(*vorellog::parseLogTime("Mon Jan 01 00:00:00 0001"));
    histogram.add(*vorellog::parseLogTime("Fri Dec 31 23:59:59 9999"));
    EXPECT_LE(histogram.steps().size(), Histogram::kMaxSteps);
}

}  // namespace
