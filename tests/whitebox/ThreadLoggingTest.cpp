/// \file
/// The table of silenced threads: when its lock is taken, and what it tells while it is empty.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "LibraryState.h"
#include "exceptions/ThreadLogging.h"
#include "support/HeldLock.h"
#include "support/TemporaryLog.h"
#include "vorel/exceptions/Exception.h"

namespace {

using test::expectPasses;
using test::expectWaitsFor;
using vorel::Exception;

auto& lockOfTheTable() {
    return vorel::detail::libraryState()->silencedThreadsLock;
}

TEST(SilencedThreads, AreAddedAndRemovedUnderTheirLock) {
    const test::TemporaryLog log;
    expectWaitsFor(lockOfTheTable(), [] {
        Exception::DisableThreadErrorLogging(true);
        Exception::DisableThreadErrorLogging(false);
    });
}

TEST(SilencedThreads, AreLookedForUnderTheirLock) {
    const test::TemporaryLog log;
    Exception::DisableThreadErrorLogging(true);
    expectWaitsFor(lockOfTheTable(), [] { EXPECT_FALSE(Exception::IsThreadErrorLoggingDisabled()); });
}

TEST(SilencedThreads, CostNoLockWhileThereAreNone) {
    const test::TemporaryLog log;
    Exception::DisableThreadErrorLogging(true);
    EXPECT_TRUE(vorel::AnyThreadLoggingDisabled);
    Exception::DisableThreadErrorLogging(false);
    EXPECT_FALSE(vorel::AnyThreadLoggingDisabled);
    expectPasses(lockOfTheTable(), [] {
        EXPECT_FALSE(Exception::IsThreadErrorLoggingDisabled());
        Exception::warn("heard");
    });
    EXPECT_EQ(log.messages(), std::vector<std::string>{"WARN: heard"});
}

}  // namespace
