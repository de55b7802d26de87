/// \file
/// The switch that disables the error log for one thread.

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "support/Expect.h"
#include "support/NamedEvent.h"
#include "support/TemporaryLog.h"
#include "vorel/exceptions/Exception.h"

namespace {

using test::TemporaryLog;
using Texts = std::vector<std::string>;
using vorel::Exception;

TEST(ThreadLogging, SilencedThreadWritesNothingUntilItIsEnabledAgain) {
    const TemporaryLog log;
    EXPECT_FALSE(Exception::IsThreadErrorLoggingDisabled());
    Exception::DisableThreadErrorLogging(true);
    EXPECT_TRUE(Exception::IsThreadErrorLoggingDisabled());
    const Exception e(L"suppressed");
    Exception::warn("suppressed");
    Exception::log(nullptr, 1000, "P", "suppressed");
    EXPECT_FALSE(log.exists());
    Exception::DisableThreadErrorLogging(false);
    EXPECT_FALSE(Exception::IsThreadErrorLoggingDisabled());
    Exception::warn("written");
    EXPECT_EQ(log.messages(), Texts{"WARN: written"});
}

TEST(ThreadLogging, SilencedThreadStillCollectsMessages) {
    const TemporaryLog log;
    Exception::DisableThreadErrorLogging(true);
    Exception e(L"a");
    e.appendMessage("b");
    EXPECT_EQ(test::messagesOf(e), (std::vector<std::wstring>{L"a", L"b"}));
    EXPECT_FALSE(log.exists());
}

TEST(ThreadLogging, EnablingOnceUndoesDisablingTwice) {
    const TemporaryLog log;
    Exception::DisableThreadErrorLogging(true);
    Exception::DisableThreadErrorLogging(true);
    Exception::DisableThreadErrorLogging(false);
    EXPECT_FALSE(Exception::IsThreadErrorLoggingDisabled());
    Exception::warn("written");
    EXPECT_EQ(log.messages(), Texts{"WARN: written"});
}

TEST(ThreadLogging, EnablingAThreadThatWasNeverDisabledHasNoEffect) {
    const TemporaryLog log;
    Exception::DisableThreadErrorLogging(false);
    Exception::DisableThreadErrorLogging(false);
    Exception::warn("written");
    EXPECT_EQ(log.messages(), Texts{"WARN: written"});
}

TEST(ThreadLogging, DisablingOneThreadDoesNotDisableOthers) {
    const TemporaryLog log;
    Exception::DisableThreadErrorLogging(true);
    std::thread([] {
        EXPECT_FALSE(Exception::IsThreadErrorLoggingDisabled());
        Exception::warn("from the other thread");
    }).join();
    Exception::warn("suppressed");
    EXPECT_TRUE(Exception::IsThreadErrorLoggingDisabled());
    EXPECT_EQ(log.messages(), Texts{"WARN: from the other thread"});
}

TEST(ThreadLogging, EnablingOneThreadDoesNotEnableOthers) {
    const TemporaryLog log;
    Exception::DisableThreadErrorLogging(true);
    std::thread([] {
        Exception::DisableThreadErrorLogging(true);
        Exception::DisableThreadErrorLogging(false);
    }).join();
    EXPECT_TRUE(Exception::IsThreadErrorLoggingDisabled());
    Exception::warn("suppressed");
    EXPECT_FALSE(log.exists());
}

TEST(ThreadLogging, MoreThreadsThanHashBucketsAreIndependent) {
    constexpr int kThreads = 100;
    const TemporaryLog log;
    std::atomic<int> wrong{0};
    std::atomic<int> arrived{0};
    // System events, because the waits of std::atomic sometimes never return with this toolchain.
    const test::NamedEvent allArrived(test::NamedEvent::uniqueName(L"all_arrived"));
    const test::NamedEvent leave(test::NamedEvent::uniqueName(L"leave"));
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    // All threads run at the same time, so their ids differ. Every second thread is silenced.
    for (int index = 0; index < kThreads; ++index) {
        threads.emplace_back([&, silence = index % 2 == 0] {
            if (silence) {
                Exception::DisableThreadErrorLogging(true);
            }
            if (++arrived == kThreads) {
                allArrived.set();
            }
            wrong += !leave.wait();
            wrong += Exception::IsThreadErrorLoggingDisabled() != silence;
            Exception::DisableThreadErrorLogging(false);
            wrong += Exception::IsThreadErrorLoggingDisabled();
        });
    }
    EXPECT_TRUE(allArrived.wait());
    leave.set();
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_FALSE(Exception::IsThreadErrorLoggingDisabled());
}

TEST(ThreadLogging, DelayedExceptionOfASilencedThreadIsNotLogged) {
    const TemporaryLog log;
    Exception::DisableThreadErrorLogging(true);
    {
        Exception e;
        e.setDelayedLogging(true);
        e.appendMessage(L"a");
    }
    Exception::DisableThreadErrorLogging(false);
    EXPECT_FALSE(log.exists());
}

}  // namespace
