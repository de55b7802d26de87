#include "algorithms/TextOrder.h"

#include <cstddef>
#include <limits>

#include <gtest/gtest.h>

namespace {

using vorel::algorithms::boundedDifference;

TEST(TextOrder, BoundedDifferenceKeepsItsSignAndCanBeNegated) {
    constexpr int kMax = std::numeric_limits<int>::max();
    struct Case {
        std::ptrdiff_t difference;
        int bounded;
    };
    for (const Case& c : {Case{0, 0}, Case{1, 1}, Case{-1, -1}, Case{kMax, kMax}, Case{-std::ptrdiff_t{kMax}, -kMax},
                          Case{std::ptrdiff_t{kMax} + 1, kMax}, Case{-std::ptrdiff_t{kMax} - 1, -kMax},
                          Case{std::ptrdiff_t{1} << 32, kMax}, Case{-(std::ptrdiff_t{1} << 32), -kMax}}) {
        EXPECT_EQ(boundedDifference(c.difference), c.bounded) << c.difference;
    }
}

}  // namespace
