/// \file
/// Eight threads in two processes lock, signal, wait and broadcast for a while: 5 seconds, or as many as
/// VOREL_STRESS_SECONDS says. Nothing may be lost, and nobody may wait for ever.

#include <cstdlib>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "support/ChildProcess.h"
#include "support/LogText.h"
#include "support/StressFigures.h"
#include "support/TemporaryLog.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

long long seconds() {
    const char* const wanted = std::getenv("VOREL_STRESS_SECONDS");
    return wanted ? std::strtoll(wanted, nullptr, 10) : 5;
}

std::wstring wide(const std::string& ascii) {
    return {ascii.begin(), ascii.end()};
}

TEST(LockStressTest, NoWakeUpIsLostAndNobodyWaitsForEver) {
    constexpr DWORD kMoreThanTheWatchdogsMs = 60000;
    const test::TemporaryLog log;
    const std::wstring run = test::NamedEvent::uniqueName(L"stress");
    test::SharedStressFigures figures(run + L"_figures");
    figures->lastRound = test::StressFigures::kNoEnd;

    std::vector<test::ChildProcess> processes;
    std::vector<std::string> reports;
    for (int process = 0; process != 2; ++process) {
        reports.push_back(log.folder().file("report" + std::to_string(process)));
        processes.emplace_back(
            L"lock_stress", std::vector<std::wstring>{L"run=" + run, L"process=" + std::to_wstring(process),
                                                      L"seconds=" + std::to_wstring(seconds()),
                                                      L"report=" + wide(reports.back()), L"log=" + wide(log.path())});
    }
    long long additions = 0;
    for (std::size_t process = 0; process != processes.size(); ++process) {
        EXPECT_TRUE(processes[process].wait(static_cast<DWORD>(seconds() * 1000) + kMoreThanTheWatchdogsMs));
        EXPECT_EQ(processes[process].exitCode(), 0u);
        const std::vector<std::string> lines = test::readLines(reports[process]);
        ASSERT_THAT(lines, ElementsAre(StartsWith("additions="))) << "what each thread waits for";
        additions += std::strtoll(lines[0].c_str() + lines[0].find('=') + 1, nullptr, 10);
    }
    EXPECT_EQ(figures->number, additions) << "two threads were in the mutex at once";
    EXPECT_EQ(additions, 2LL * test::StressFigures::kThreads * (figures->lastRound + 1));
    // cppcheck-suppress compareValueOutOfTypeRangeError; the other processes have set it meanwhile
    EXPECT_GE(figures->lastRound, 10) << "it was a trial";
    EXPECT_THAT(log.messages(), IsEmpty());
    RecordProperty("rounds", std::to_string(figures->lastRound + 1));
}

}  // namespace
