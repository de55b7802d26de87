/// \file
/// Eight threads in two processes lock, signal, wait and broadcast for 5 seconds, or for VOREL_STRESS_SECONDS. No
/// wake-up may be lost, and no thread may wait forever.

#include <cstdlib>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "support/ChildProcess.h"
#include "support/LogText.h"
#include "support/StressStats.h"
#include "support/TemporaryLog.h"
#include "support/WideText.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

long long seconds() {
    const char* const value = std::getenv("VOREL_STRESS_SECONDS");
    return value ? std::strtoll(value, nullptr, 10) : 5;
}

TEST(LockStressTest, LosesNoWakeUpAndNoThreadHangs) {
    constexpr DWORD kWatchdogMarginMs = 60000;
    const test::TemporaryLog log;
    const std::wstring run = test::NamedEvent::uniqueName(L"stress");
    test::SharedStressStats stats(run + L"_stats");
    stats->lastRound = test::StressStats::kNoEnd;

    std::vector<test::ChildProcess> processes;
    std::vector<std::string> reports;
    for (int process = 0; process != 2; ++process) {
        reports.push_back(log.folder().file("report" + std::to_string(process)));
        processes.emplace_back(L"lock_stress",
                               std::vector<std::wstring>{L"run=" + run, L"process=" + std::to_wstring(process),
                                                         L"seconds=" + std::to_wstring(seconds()),
                                                         L"report=" + test::widened(reports.back()),
                                                         L"log=" + test::widened(log.path())});
    }
    long long additions = 0;
    for (std::size_t process = 0; process != processes.size(); ++process) {
        EXPECT_TRUE(processes[process].wait(static_cast<DWORD>(seconds() * 1000) + kWatchdogMarginMs));
        EXPECT_EQ(processes[process].exitCode(), 0u);
        const std::vector<std::string> lines = test::readLines(reports[process]);
        ASSERT_THAT(lines, ElementsAre(StartsWith("additions=")))
            << "a thread hangs; the report lists what each thread waits for";
        additions += std::strtoll(lines[0].c_str() + lines[0].find('=') + 1, nullptr, 10);
    }
    EXPECT_EQ(stats->number, additions) << "two threads owned the mutex at the same time";
    EXPECT_EQ(additions, 2LL * test::StressStats::kThreads * (stats->lastRound + 1));
    // cppcheck-suppress compareValueOutOfTypeRangeError; another process has changed it
    EXPECT_GE(stats->lastRound, 10) << "too few rounds for a meaningful test";
    EXPECT_THAT(log.messages(), IsEmpty());
    RecordProperty("rounds", std::to_string(stats->lastRound + 1));
}

}  // namespace
