/// \file
/// Tests of the log while another process holds the lock on the log file.

#include <cerrno>
#include <chrono>
#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include "support/ChildProcess.h"
#include "support/LogText.h"
#include "support/NamedEvent.h"
#include "support/TemporaryLog.h"
#include "support/WideText.h"

namespace {

using std::chrono::milliseconds;
using ::testing::ElementsAre;
using vorel::Exception;

/// How long the other process holds the lock in tests in which a writer gets the lock. A writer repeats its attempts
/// for about 1.4 s, so a later attempt succeeds.
constexpr unsigned int kHoldMs = 300;

class HeldLogTest : public ::testing::Test {
protected:
    /// Starts a process that locks the log for at most `holdMs` and appends `text` to it. Waits until the process has
    /// done both.
    void holdLog(unsigned int holdMs, const std::string& text = {}) {
        m_holder = std::make_unique<test::ChildProcess>(
            L"lock_holder",
            std::vector<std::wstring>{L"log=" + test::widened(m_log.path()), L"held=" + m_held.name(),
                                      L"release=" + m_release.name(), L"holdMs=" + std::to_wstring(holdMs),
                                      L"text=" + test::widened(text)});
        ASSERT_TRUE(m_held.wait());
    }

    template <class Action>
    static milliseconds timeOf(Action&& action) {
        const auto start = std::chrono::steady_clock::now();
        action();
        return std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - start);
    }

    test::TemporaryLog m_log;
    test::NamedEvent m_held{test::NamedEvent::uniqueName(L"held")};
    test::NamedEvent m_release{test::NamedEvent::uniqueName(L"release")};
    std::unique_ptr<test::ChildProcess> m_holder;
};

TEST_F(HeldLogTest, DropsLineSilentlyAfterThirtySleeps) {
    Exception::warn("before");
    holdLog(3000);
    Exception e;
    constexpr DWORD kSomeError = 1234;
    errno = ERANGE;
    SetLastError(kSomeError);

    const milliseconds taken = timeOf([&] { e.appendMessage(L"dropped line"); });

    const DWORD lastError = GetLastError();
    EXPECT_EQ(errno, ERANGE);
    EXPECT_EQ(lastError, kSomeError);
    EXPECT_FALSE(m_holder->exitCode().has_value()) << "the lock was released before the line was dropped";
    EXPECT_GE(taken, milliseconds(1300));
    EXPECT_LE(taken, milliseconds(2500));
    EXPECT_STREQ(e.what(), L"dropped line");
    EXPECT_EQ(e.getMessageTotal(), 1u);

    m_release.set();
    ASSERT_TRUE(m_holder->wait());
    EXPECT_EQ(m_holder->exitCode(), DWORD{0});
    Exception::warn("after");
    EXPECT_THAT(m_log.messages(), ElementsAre("WARN: before", "WARN: after"));
}

TEST_F(HeldLogTest, WritesLineWhenLockIsReleasedInTime) {
    holdLog(kHoldMs);
    Exception::warn("waited for");
    EXPECT_THAT(m_log.messages(), ElementsAre("WARN: waited for"));
}

TEST_F(HeldLogTest, SkipsRotationWhileLogIsLocked) {
    Exception::warn("oldest");
    Exception::SetErrorLogSize(10);
    Exception::warn("older");  // rotation moves the oldest line to the backup
    holdLog(kHoldMs);
    Exception::warn("written to the long log");
    EXPECT_THAT(test::readLogMessages(m_log.backupPath()), ElementsAre("WARN: oldest"));
    EXPECT_THAT(m_log.messages(), ElementsAre("WARN: older", "WARN: written to the long log"));

    ASSERT_TRUE(m_holder->wait());
    Exception::warn("written to a new log");
    EXPECT_THAT(test::readLogMessages(m_log.backupPath()), ElementsAre("WARN: older", "WARN: written to the long log"));
    EXPECT_THAT(m_log.messages(), ElementsAre("WARN: written to a new log"));
}

TEST_F(HeldLogTest, WritesLineWhenOwnerOfLockWasKilled) {
    Exception::warn("before");
    holdLog(test::kGenerousMs);
    m_holder->terminate();
    Exception::warn("after");
    EXPECT_THAT(m_log.messages(), ElementsAre("WARN: before", "WARN: after"));
}

TEST_F(HeldLogTest, WritesCompleteLineAfterPartialLineOfKilledProcess) {
    Exception::warn("before");
    holdLog(test::kGenerousMs, "[Mon Nov 16 01:43:08 2026] host7.4312.98");
    m_holder->terminate();
    Exception::warn("after");

    // The partial line has no line end, so the next line follows it directly.
    const std::vector<std::string> lines = test::readLines(m_log.path());
    ASSERT_EQ(lines.size(), 2u);
    const std::size_t next = lines[1].rfind('[');
    EXPECT_EQ(lines[1].substr(0, next), "[Mon Nov 16 01:43:08 2026] host7.4312.98");
    const auto fields = test::parseLogLine(lines[1].substr(next));
    ASSERT_TRUE(fields.has_value());
    EXPECT_EQ(fields->message, "WARN: after");
    EXPECT_EQ(fields->processId, GetCurrentProcessId());
    EXPECT_EQ(fields->threadId, GetCurrentThreadId());
}

}  // namespace
