/// \file
/// The table of silenced threads: when its lock is acquired, and when threads are removed from the table.

#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <windows.h>

#include "exceptions/LogState.h"
#include "exceptions/ThreadLogging.h"
#include "support/HeldLock.h"
#include "support/ImportHook.h"
#include "support/TemporaryLog.h"
#include "vorel/exceptions/Exception.h"

namespace {

using test::expectPasses;
using test::expectWaitsFor;
using vorel::Exception;

auto& lockOfTheTable() {
    return vorel::detail::logState.get()->silencedThreadsLock;
}

TEST(SilencedThreads, AreAddedAndRemovedUnderTheLock) {
    const test::TemporaryLog log;
    expectWaitsFor(lockOfTheTable(), [] {
        Exception::DisableThreadErrorLogging(true);
        Exception::DisableThreadErrorLogging(false);
    });
}

TEST(SilencedThreads, AreLookedUpUnderTheLock) {
    const test::TemporaryLog log;
    Exception::DisableThreadErrorLogging(true);
    expectWaitsFor(lockOfTheTable(), [] { EXPECT_FALSE(Exception::IsThreadErrorLoggingDisabled()); });
}

TEST(SilencedThreads, LookupNeedsNoLockWhileNoThreadIsSilenced) {
    const test::TemporaryLog log;
    Exception::DisableThreadErrorLogging(true);
    EXPECT_TRUE(vorel::AnyThreadLoggingDisabled);
    Exception::DisableThreadErrorLogging(false);
    EXPECT_FALSE(vorel::AnyThreadLoggingDisabled);
    expectPasses(lockOfTheTable(), [] {
        EXPECT_FALSE(Exception::IsThreadErrorLoggingDisabled());
        Exception::warn("written");
    });
    EXPECT_EQ(log.messages(), std::vector<std::string>{"WARN: written"});
}

auto& table() {
    return vorel::detail::logState.get()->silencedThreads;
}

/// The id of a thread that silenced itself and has exited.
DWORD exitedThread() {
    DWORD id = 0;
    std::thread([&] {
        id = GetCurrentThreadId();
        Exception::DisableThreadErrorLogging(true);
        EXPECT_EQ(table().size(), 1u);
    }).join();
    return id;
}

TEST(SilencedThreads, AreRemovedWhenTheyExit) {
    const test::TemporaryLog log;
    for (int count = 0; count < 100; ++count) {
        exitedThread();
        ASSERT_EQ(table().size(), 0u);
        ASSERT_FALSE(vorel::AnyThreadLoggingDisabled);
    }
}

TEST(SilencedThreads, AreRemovedWhenTheyExitAfterTheyWereSilencedTwice) {
    const test::TemporaryLog log;
    std::thread([] {
        Exception::DisableThreadErrorLogging(true);
        Exception::DisableThreadErrorLogging(false);
        Exception::DisableThreadErrorLogging(true);
    }).join();
    EXPECT_EQ(table().size(), 0u);
}

// GoogleTest needs the real id of the thread to report a failed expectation. So all expectations come after the scope
// of the hook.
TEST(SilencedThreads, DoNotSilenceALaterThreadWithTheirId) {
    const test::TemporaryLog log;
    const DWORD id = exitedThread();
    bool isDisabled = true;
    {
        const test::ImportHook<importedGetCurrentThreadId> sameId([&] { return id; });
        isDisabled = Exception::IsThreadErrorLoggingDisabled();
        Exception::warn("written");
    }
    EXPECT_FALSE(isDisabled);
    EXPECT_EQ(log.messages(), std::vector<std::string>{"WARN: written"});
}

/// The id of a thread that silenced itself and has exited as a fiber. The thread stays in the table.
DWORD threadExitedAsFiber() {
    DWORD id = 0;
    std::thread([&] {
        id = GetCurrentThreadId();
        ConvertThreadToFiber(nullptr);
        Exception::DisableThreadErrorLogging(true);
        EXPECT_TRUE(Exception::IsThreadErrorLoggingDisabled());
    }).join();
    EXPECT_EQ(table().size(), 1u);
    return id;
}

TEST(SilencedThreads, DoNotSilenceALaterThreadWithTheirIdIfTheyExitAsFibers) {
    const test::TemporaryLog log;
    const DWORD id = threadExitedAsFiber();
    bool isDisabled = true;
    {
        const test::ImportHook<importedGetCurrentThreadId> sameId([&] { return id; });
        isDisabled = Exception::IsThreadErrorLoggingDisabled();
        Exception::warn("written");
        Exception::DisableThreadErrorLogging(false);  // removes the thread from the table
    }
    EXPECT_FALSE(isDisabled);
    EXPECT_EQ(log.messages(), std::vector<std::string>{"WARN: written"});
}

TEST(SilencedThreads, AreReplacedByALaterThreadWithTheirId) {
    const test::TemporaryLog log;
    const DWORD id = threadExitedAsFiber();
    bool isDisabled = false;
    unsigned int entries = 0;
    {
        const test::ImportHook<importedGetCurrentThreadId> sameId([&] { return id; });
        Exception::DisableThreadErrorLogging(true);
        isDisabled = Exception::IsThreadErrorLoggingDisabled();
        entries = table().size();
        Exception::DisableThreadErrorLogging(false);
    }
    EXPECT_TRUE(isDisabled);
    EXPECT_EQ(entries, 1u);
    EXPECT_EQ(table().size(), 0u);
}

TEST(SilencedThreads, StaySilencedWhenOtherSilencedThreadsExit) {
    const test::TemporaryLog log;
    Exception::DisableThreadErrorLogging(true);
    std::thread([] { Exception::DisableThreadErrorLogging(true); }).join();
    EXPECT_TRUE(Exception::IsThreadErrorLoggingDisabled());
    EXPECT_EQ(table().size(), 1u);
}

void CALLBACK silenceAndSwitchBack(void* caller) {
    Exception::DisableThreadErrorLogging(true);
    SwitchToFiber(caller);
}

TEST(SilencedThreads, StaySilencedWhenTheSilencingFiberIsDeleted) {
    const test::TemporaryLog log;
    for (const bool isDeletedByAFiber : {true, false}) {
        std::thread([=] {
            void* const main = ConvertThreadToFiber(nullptr);
            void* const fiber = CreateFiber(0, &silenceAndSwitchBack, main);
            SwitchToFiber(fiber);
            if (!isDeletedByAFiber) {
                ConvertFiberToThread();
            }
            DeleteFiber(fiber);
            EXPECT_TRUE(Exception::IsThreadErrorLoggingDisabled()) << isDeletedByAFiber;
            Exception::DisableThreadErrorLogging(false);
            if (isDeletedByAFiber) {
                ConvertFiberToThread();
            }
        }).join();
    }
}

}  // namespace
