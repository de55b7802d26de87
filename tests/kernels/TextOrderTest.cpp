#include "kernels/TextOrder.h"

#include <cstddef>
#include <limits>

#include <gtest/gtest.h>

namespace {

using vorel::kernels::boundedDifference;

TEST(TextOrder, ADifferenceOfLengthsKeepsItsSignAndCanBeNegated) {
    constexpr int kMost = std::numeric_limits<int>::max();
    struct Case {
        std::ptrdiff_t difference;
        int bounded;
    };
    for (const Case& c :
         {Case{0, 0}, Case{1, 1}, Case{-1, -1}, Case{kMost, kMost}, Case{-std::ptrdiff_t{kMost}, -kMost},
          Case{std::ptrdiff_t{kMost} + 1, kMost}, Case{-std::ptrdiff_t{kMost} - 1, -kMost},
          Case{std::ptrdiff_t{1} << 32, kMost}, Case{-(std::ptrdiff_t{1} << 32), -kMost}}) {
        EXPECT_EQ(boundedDifference(c.difference), c.bounded) << c.difference;
    }
}

}  // namespace
