#include "benchmarks/support/Statistics.h"

#include <gtest/gtest.h>

namespace {

using Samples = std::vector<double>;

TEST(Statistics, Median_IsTheMiddleOfTheSortedSamples) {
    EXPECT_EQ(bench::median({7}), 7);
    EXPECT_EQ(bench::median({9, 1, 4}), 4);
    EXPECT_EQ(bench::median({9, 1, 4, 5}), 4.5);
}

TEST(Statistics, Quantile_InterpolatesBetweenNeighbours) {
    const struct {
        Samples samples;
        double share;
        double expected;
    } cases[] = {
        {{3}, 0.25, 3},
        {{10, 20}, 0, 10},
        {{10, 20}, 1, 20},
        {{10, 20}, 0.25, 12.5},
        {{50, 40, 30, 20, 10}, 0.25, 20},
        {{50, 40, 30, 20, 10}, 0.75, 40},
        {{0, 10, 20, 30}, 0.75, 22.5},
    };
    for (const auto& [samples, share, expected] : cases) {
        EXPECT_DOUBLE_EQ(bench::quantile(samples, share), expected) << "share " << share;
    }
}

TEST(Statistics, Spread_IsTheInterquartileRangeOfTheRatiosDividedByTheirMedian) {
    // The ratios are 2, 3, 4, 5, 6: quartiles 3 and 5, median 4.
    EXPECT_DOUBLE_EQ(bench::spreadOfRatios({1, 2, 1, 2, 10}, {4, 4, 6, 10, 30}), 0.5);
}

TEST(Statistics, Spread_IsZeroIfAllRatiosAreEqual) {
    EXPECT_DOUBLE_EQ(bench::spreadOfRatios({1, 100, 3}, {2, 200, 6}), 0);
}

}  // namespace
