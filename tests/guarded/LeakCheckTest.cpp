// Tests of the leak check. The tests of the suite Keeper leak or free blocks, and are disabled. Each test of the suite
// LeakCheck runs one of them twice in a separate process, and expects that the leak check accepts it or makes it fail.

#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "support/ChildProcess.h"
#include "vorel/core/Array.h"

namespace {

void* volatile kept = nullptr;

TEST(Keeper, DISABLED_LeaksBlockInEachRun) {
    kept = std::malloc(10);
    EXPECT_TRUE(kept);
}

TEST(Keeper, DISABLED_FillsStaticTableOnce) {
    static const std::string kTable(100, 'x');
    EXPECT_EQ(kTable.size(), 100u);
}

TEST(Keeper, DISABLED_FreesBlockOfFirstRunInSecondRun) {
    static int run = 0;
    static void* blocks[2] = {};
    if (run++ == 0) {
        blocks[0] = std::malloc(10);
        blocks[1] = std::malloc(10);
    }
    std::free(blocks[run - 1]);
    EXPECT_LE(run, 2);
}

TEST(Keeper, DISABLED_LeaksBlockWhileFreeingTwo) {
    static int run = 0;
    static void* blocks[2] = {};
    if (run++ == 0) {
        blocks[0] = std::malloc(10);
        blocks[1] = std::malloc(10);
    } else {
        std::free(blocks[0]);
        std::free(blocks[1]);
        kept = std::malloc(20);
    }
    EXPECT_LE(run, 2);
}

TEST(Keeper, DISABLED_FreesAllBlocks) {
    vorel::Array<int> items;
    items.append(1);
    EXPECT_EQ(items.size(), 1u);
}

int exitCodeOf(const std::wstring& test) {
    const auto exitCode =
        test::runChild(L"vorel_guarded_tests", {L"--gtest_also_run_disabled_tests", L"--gtest_repeat=2",
                                                L"--gtest_filter=Keeper.DISABLED_" + test});
    return exitCode ? static_cast<int>(*exitCode) : -1;
}

TEST(LeakCheck, FailsTestThatLeaksBlock) {
    EXPECT_EQ(exitCodeOf(L"LeaksBlockInEachRun"), 1);
}

TEST(LeakCheck, AcceptsBlockOfFirstRunThatSecondRunFrees) {
    EXPECT_EQ(exitCodeOf(L"FreesBlockOfFirstRunInSecondRun"), 0);
}

TEST(LeakCheck, FailsTestThatLeaksBlockWhileFreeingTwo) {
    EXPECT_EQ(exitCodeOf(L"LeaksBlockWhileFreeingTwo"), 1);
}

TEST(LeakCheck, AcceptsBlockThatOnlyFirstRunAllocates) {
    EXPECT_EQ(exitCodeOf(L"FillsStaticTableOnce"), 0);
}

TEST(LeakCheck, AcceptsTestThatFreesAllBlocks) {
    EXPECT_EQ(exitCodeOf(L"FreesAllBlocks"), 0);
}

}  // namespace
