// What the check of live blocks says about tests that keep blocks. Those are disabled, and run in processes of their
// own.

#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "support/ChildProcess.h"
#include "vorel/core/Array.h"

namespace {

void* volatile kept = nullptr;

TEST(Keeper, DISABLED_LeavesABlockEachTime) {
    kept = std::malloc(10);
    EXPECT_TRUE(kept);
}

TEST(Keeper, DISABLED_FillsATableOnce) {
    static const std::string kTable(100, 'x');
    EXPECT_EQ(kTable.size(), 100u);
}

TEST(Keeper, DISABLED_GivesBackWhatIsLeftOfTheFirstRun) {
    static int run = 0;
    static void* blocks[2] = {};
    if (run++ == 0) {
        blocks[0] = std::malloc(10);
        blocks[1] = std::malloc(10);
    }
    std::free(blocks[run - 1]);
    EXPECT_LE(run, 2);
}

TEST(Keeper, DISABLED_LeavesABlockWhileTwoComeBack) {
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

TEST(Keeper, DISABLED_GivesEverythingBack) {
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

TEST(LeakCheck, FailsATestThatLeavesABlock) {
    EXPECT_EQ(exitCodeOf(L"LeavesABlockEachTime"), 1);
}

TEST(LeakCheck, PassesWhatComesBackLate) {
    EXPECT_EQ(exitCodeOf(L"GivesBackWhatIsLeftOfTheFirstRun"), 0);
}

TEST(LeakCheck, FailsATestThatLeavesABlockWhileOthersComeBackLate) {
    EXPECT_EQ(exitCodeOf(L"LeavesABlockWhileTwoComeBack"), 1);
}

TEST(LeakCheck, PassesWhatIsMadeOnce) {
    EXPECT_EQ(exitCodeOf(L"FillsATableOnce"), 0);
}

TEST(LeakCheck, PassesATestThatGivesEverythingBack) {
    EXPECT_EQ(exitCodeOf(L"GivesEverythingBack"), 0);
}

}  // namespace
