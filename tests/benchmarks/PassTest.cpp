#include "benchmarks/support/Pass.h"

#include <gtest/gtest.h>

namespace {

TEST(Pass, Repeat_CallsTheFunctionTheGivenNumberOfTimes) {
    std::uint64_t calls = 0;
    const bench::Pass pass = [&calls] { return ++calls; };
    pass.repeat(0);
    EXPECT_EQ(calls, 0u);
    pass.repeat(1000);
    EXPECT_EQ(calls, 1000u);
}

TEST(Pass, ReturnsTheResultOfOneCall) {
    const bench::Pass pass = [calls = std::uint64_t{0}]() mutable { return ++calls; };
    EXPECT_EQ(pass(), 1u);
    EXPECT_EQ(pass(), 2u);
}

}  // namespace
