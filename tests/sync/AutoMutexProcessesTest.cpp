/// \file
/// The named mutex between processes: exclusion, and owners that are killed.

#include <cstring>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "core/ThreadSafetySwitch.h"
#include "support/ChildProcess.h"
#include "support/LogText.h"
#include "support/TemporaryLog.h"
#include "support/WideText.h"
#include "sync/ObjectNames.h"
#include "vorel/sync/AutoMutex.h"

namespace {

using test::isFreeForOthers;
using test::TemporaryLog;
using test::uniqueName;
using testing::ElementsAre;
using testing::IsEmpty;
using vorel::AutoMutex;

/// A child process that holds a mutex.
struct Holder {
    Holder(const std::wstring& mutex, const TemporaryLog& log)
        : process(L"mutex_holder", {L"mutex=" + mutex, L"held=" + held.name(), L"release=" + release.name(),
                                    L"log=" + test::widened(log.path())}) {}

    test::NamedEvent held{uniqueName(L"held")};
    test::NamedEvent release{uniqueName(L"release")};
    test::ChildProcess process;
};

TEST(AutoMutexProcesses, AProcessThatHoldsTheMutexExcludesOthers) {
    const TemporaryLog log;
    const std::wstring name = uniqueName(L"mutex");
    AutoMutex mutex(name.c_str(), false, false);
    const Holder holder(name, log);
    ASSERT_TRUE(holder.held.wait());
    EXPECT_FALSE(mutex.tryLock());
    holder.release.set();
    EXPECT_TRUE(mutex.lock(test::kGenerousMs, true));
    mutex.unlock();
    ASSERT_TRUE(holder.process.wait());
    EXPECT_EQ(holder.process.exitCode(), 0u);
    EXPECT_THAT(log.messages(), IsEmpty());
}

TEST(AutoMutexProcesses, AKilledProcessAbandonsItsMutex) {
    const TemporaryLog log;
    const std::wstring name = uniqueName(L"mutex");
    AutoMutex mutex(name.c_str(), false, false);
    {
        Holder holder(name, log);
        ASSERT_TRUE(holder.held.wait());
        EXPECT_FALSE(mutex.tryLock());
        holder.process.terminate();
    }
    EXPECT_TRUE(mutex.lock(test::kGenerousMs, true));
    EXPECT_THAT(log.messages(), ElementsAre("WARN: AutoMutex::lock: WAIT_ABANDONED: Mutex " + test::narrowed(name) +
                                            " was not released by the owning thread before it exited"));
    EXPECT_FALSE(isFreeForOthers(mutex));
    mutex.unlock();
    EXPECT_TRUE(isFreeForOthers(mutex));
}

TEST(AutoMutexProcesses, ThreeProcessesLoseNoIncrement) {
    constexpr int kProcesses = 3;
    constexpr int kRounds = 1000;
    const TemporaryLog log;
    const test::TemporaryFolder folder;
    const test::NamedEvent go(uniqueName(L"go"));
    std::vector<test::ChildProcess> counters;
    for (int process = 0; process != kProcesses; ++process) {
        counters.emplace_back(L"mutex_counter",
                              std::vector<std::wstring>{L"mutex=" + go.name() + L"_mutex",
                                                        L"file=" + test::widened(folder.file("number")),
                                                        L"go=" + go.name(), L"rounds=" + std::to_wstring(kRounds),
                                                        L"log=" + test::widened(log.path())});
    }
    go.set();
    for (const test::ChildProcess& counter : counters) {
        ASSERT_TRUE(counter.wait());
        EXPECT_EQ(counter.exitCode(), 0u);
    }
    const std::string bytes = test::readFileBytes(folder.file("number")).value_or("");
    long long number = 0;
    ASSERT_EQ(bytes.size(), sizeof number);
    std::memcpy(&number, bytes.data(), sizeof number);
    EXPECT_EQ(number, kProcesses * kRounds);
    EXPECT_THAT(log.messages(), IsEmpty());
}

}  // namespace
