/// \file
/// vorellog --follow: shows lines that are written while vorellog runs, even if the log is rotated or deleted.

#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include "support/ChildProcess.h"
#include "support/TemporaryLog.h"
#include "tools_log/LogWriters.h"
#include "vorel/exceptions/Exception.h"

namespace {

using ::testing::HasSubstr;
using vorel::Exception;

/// A viewer process that follows a log, and the lines that it has shown so far.
class FollowingViewer {
public:
    explicit FollowingViewer(const std::string& logPath, std::vector<std::wstring> arguments = {}) {
        HANDLE readEnd = nullptr;
        HANDLE writeEnd = nullptr;
        if (!CreatePipe(&readEnd, &writeEnd, nullptr, 0)) {
            throw std::runtime_error("cannot create a pipe");
        }
        m_pipe = test::Handle(readEnd);
        test::Handle output(writeEnd);
        SetHandleInformation(writeEnd, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
        arguments.emplace_back(L"--follow");
        arguments.emplace_back(logPath.begin(), logPath.end());
        test::ChildOptions options;
        options.output = writeEnd;
        m_child = std::make_unique<test::ChildProcess>(L"vorellog", arguments, options);
        output.close();
        m_reader = std::thread([this] { readAll(); });
    }
    ~FollowingViewer() {
        m_child->terminate();
        m_reader.join();
    }

    FollowingViewer(const FollowingViewer&) = delete;
    FollowingViewer& operator=(const FollowingViewer&) = delete;

    /// Waits until `count` lines are shown. Returns false on timeout.
    [[nodiscard]] bool waitForLines(std::size_t count) {
        while (lines().size() < count) {
            if (!m_news.wait()) {
                return false;
            }
        }
        return true;
    }

    [[nodiscard]] std::vector<std::string> lines() {
        const std::lock_guard guard(m_mutex);
        m_news.reset();
        return test::linesOf(std::string_view(m_text).substr(0, m_text.rfind('\n') + 1));
    }

    /// Waits until the viewer ends, and returns its exit code; nullopt if the viewer still runs after the wait.
    [[nodiscard]] std::optional<DWORD> exitCode() const {
        (void)m_child->wait();
        return m_child->exitCode();
    }

private:
    void readAll() {
        char block[4096];
        for (DWORD count = 0; ReadFile(m_pipe.get(), block, sizeof block, &count, nullptr) && count != 0;) {
            const std::lock_guard guard(m_mutex);
            m_text.append(block, count);
            m_news.set();
        }
    }

    test::NamedEvent m_news{test::NamedEvent::uniqueName(L"news")};
    test::Handle m_pipe;
    std::unique_ptr<test::ChildProcess> m_child;
    std::mutex m_mutex;
    std::string m_text;
    std::thread m_reader;
};

void expectNumbers(const std::vector<std::string>& lines, int first, int last) {
    ASSERT_EQ(lines.size(), static_cast<std::size_t>(last - first + 1));
    for (std::size_t index = 0; index != lines.size(); ++index) {
        EXPECT_THAT(lines[index],
                    ::testing::EndsWith(": WARN: line " + std::to_string(first + static_cast<int>(index))));
    }
}

/// Writes lines numbered from `first` to `last`.
void writeLines(int first, int last) {
    for (int number = first; number <= last; ++number) {
        Exception::warn("line %d", number);
    }
}

/// Deletes the log and waits until its name is free. On some systems, a deleted file keeps its name until all handles
/// of the file are closed. Until then, the library cannot write lines, and drops them. Returns false on timeout.
[[nodiscard]] bool removeForGood(test::TemporaryLog& log) {
    log.remove();
    const ULONGLONG start = GetTickCount64();
    while (GetFileAttributesA(log.path().c_str()) != INVALID_FILE_ATTRIBUTES ||
           GetLastError() != ERROR_FILE_NOT_FOUND) {
        if (GetTickCount64() - start > test::kGenerousMs) {
            return false;
        }
        std::this_thread::yield();
    }
    return true;
}

TEST(FollowTest, WaitsForAMissingLog) {
    const test::TemporaryLog log(-1);
    FollowingViewer viewer(log.path());
    writeLines(1, 3);
    ASSERT_TRUE(viewer.waitForLines(3));
    writeLines(4, 4);
    ASSERT_TRUE(viewer.waitForLines(4));
    expectNumbers(viewer.lines(), 1, 4);
}

TEST(FollowTest, RotationsNeitherLoseNorRepeatLines) {
    const test::TemporaryLog log(2000);
    FollowingViewer viewer(log.path());
    // A log has space for about 30 lines, and a rotation deletes the previous backup. The viewer shows the lines of a
    // step before a later rotation can delete them.
    constexpr int kStep = 20;
    int last = 0;
    for (int step = 0; step != 8; ++step) {
        writeLines(last + 1, last + kStep);
        last += kStep;
        ASSERT_TRUE(viewer.waitForLines(static_cast<std::size_t>(last)));
    }
    EXPECT_TRUE(test::readFileBytes(log.backupPath()));
    expectNumbers(viewer.lines(), 1, last);
}

TEST(FollowTest, RotationBySeveralProcessesLosesNothing) {
    // The writers fill less than two logs, so there is at most one rotation.
    constexpr long long kLimit = 200000;
    const test::TemporaryLog log(-1);
    FollowingViewer viewer(log.path());
    test::LogWriters writers(log.path(), log.folder(), kLimit);
    writers.start(2, 20);
    ASSERT_TRUE(writers.finish());
    const test::StressCounts expected = writers.expectedCounts();
    ASSERT_TRUE(viewer.waitForLines(expected.size()));
    EXPECT_EQ(test::countStressLines(viewer.lines()), expected);
    EXPECT_TRUE(test::readFileBytes(log.backupPath()));
    EXPECT_LT(log.size(), kLimit);
}

TEST(FollowTest, FollowsALogCreatedAgainAfterDeletion) {
    test::TemporaryLog log(-1);
    FollowingViewer viewer(log.path());
    writeLines(1, 10);
    ASSERT_TRUE(viewer.waitForLines(10));
    ASSERT_TRUE(removeForGood(log));
    writeLines(11, 13);
    ASSERT_TRUE(viewer.waitForLines(13));
    ASSERT_TRUE(removeForGood(log));
    writeLines(14, 40);
    ASSERT_TRUE(viewer.waitForLines(40));
    expectNumbers(viewer.lines(), 1, 40);
}

TEST(FollowTest, CutLineOfAKilledWriterIsShownWhenTheNextLineIsWritten) {
    const test::TemporaryLog log(-1);
    const test::NamedEvent held(test::NamedEvent::uniqueName(L"held"));
    const test::NamedEvent release(test::NamedEvent::uniqueName(L"release"));
    FollowingViewer viewer(log.path());
    writeLines(1, 1);
    ASSERT_TRUE(viewer.waitForLines(1));
    test::ChildProcess victim(L"lock_holder",
                              {L"log=" + std::wstring(log.path().begin(), log.path().end()), L"held=" + held.name(),
                               L"release=" + release.name(), L"holdMs=" + std::to_wstring(test::kGenerousMs),
                               L"text=[Mon Nov 16 01:43:08 2026] host7.1.2: WARN: ha"});
    ASSERT_TRUE(held.wait());
    victim.terminate();
    writeLines(2, 2);
    ASSERT_TRUE(viewer.waitForLines(3));
    EXPECT_EQ(viewer.lines()[1], "(cut) [Mon Nov 16 01:43:08 2026] host7.1.2: WARN: ha");
    EXPECT_THAT(viewer.lines()[2], HasSubstr("WARN: line 2"));
}

TEST(FollowTest, CaughtTrailIsShownAtOnce) {
    const test::TemporaryLog log(-1);
    FollowingViewer viewer(log.path(), {L"--fold"});
    Exception failure(L"not a number");
    failure.catchClass(L"Parser", L"run");
    ASSERT_TRUE(viewer.waitForLines(2));
    EXPECT_EQ(viewer.lines()[1], "    > Parser::run: Vorel exception caught");
}

TEST(FollowTest, EndsAtMaxCount) {
    const test::TemporaryLog log(-1);
    FollowingViewer viewer(log.path(), {L"--max-count", L"3", L"--text", L"line"});
    Exception::warn("something else");
    writeLines(1, 5);
    EXPECT_EQ(viewer.exitCode(), 0u);
    ASSERT_TRUE(viewer.waitForLines(3));
    expectNumbers(viewer.lines(), 1, 3);
}

}  // namespace
