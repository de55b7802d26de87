#include "benchmarks/growth/Rise.h"

#include <vector>

#include <gtest/gtest.h>

namespace {

TEST(Rise, ComparesWithTheSmallestCostSoFar) {
    const struct {
        std::vector<double> costs;
        std::vector<double> rises;
        double worst;
    } cases[] = {
        {{}, {}, 1},
        {{5}, {1}, 1},
        {{8, 4, 2}, {1, 1, 1}, 1},
        {{8, 4, 6, 5, 2, 3}, {1, 1, 1.5, 1.25, 1, 1.5}, 1.5},
        {{1, 2, 4, 8}, {1, 2, 4, 8}, 8},
    };
    for (const auto& [costs, rises, worst] : cases) {
        bench::Rise rise;
        std::vector<double> actual;
        for (const double cost : costs) {
            actual.push_back(rise.add(cost));
        }
        EXPECT_EQ(actual, rises);
        EXPECT_EQ(rise.worst(), worst);
        EXPECT_EQ(rise.count(), static_cast<int>(costs.size()));
    }
}

}  // namespace
