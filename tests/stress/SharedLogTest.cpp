/// \file
/// Six processes with four threads each write to one log.
///
/// The log silently drops a line if the file is locked in all 31 attempts. So under contention, any line may be
/// missing. But before a line is dropped, the call sleeps for at least 0.9 s, which the writer measures. Each writer
/// lists the calls that took so long that their lines may have been dropped. The lines of all other calls must be in
/// the log, exactly once and complete. On two cores, the slowest of 12,000 calls took 0.25 s, so in practice all lines
/// are expected. If the writers take turns, they do not compete, and every line must be in the log, however long its
/// call took. With a small limit, the log is rotated, and old lines are lost. The remaining lines must be complete.

#include <cstdio>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "stress/LogWriters.h"
#include "support/TemporaryLog.h"

namespace {

using test::LogWriters;
using test::StressLineId;

constexpr long long kUnlimited = -1;
constexpr unsigned int kLinesPerThread = 500;

TEST(SharedLogTest, ContainsEveryLineOnceUnderContention) {
    const test::TemporaryLog log;
    LogWriters writers(log, kUnlimited);
    writers.add(test::kWriters, kLinesPerThread);
    writers.go();
    ASSERT_TRUE(writers.finish());

    const std::vector<StressLineId> found = test::readStressLog(log.path(), writers);
    test::expectAllLines(writers, found);
    EXPECT_LE(found.size(), std::size_t{test::kWriters} * test::kThreadsPerWriter * kLinesPerThread);
    RecordProperty("LinesThatMayHaveBeenDropped", static_cast<int>(writers.slowLines()));
}

TEST(SharedLogTest, ContainsEveryLineOnceWhenWritersTakeTurns) {
    constexpr unsigned int kLines = 60;
    const test::TemporaryLog log;
    LogWriters writers(log, kUnlimited);
    writers.takeTurns();
    writers.add(test::kWriters, kLines);
    writers.go();
    ASSERT_TRUE(writers.finish());
    for (test::LogWriter& writer : writers.all()) {
        for (test::ThreadResult& thread : writer.threads) {
            thread.slowLines.clear();  // without contention, no line may be dropped
        }
    }
    const std::vector<StressLineId> found = test::readStressLog(log.path(), writers);
    test::expectAllLines(writers, found);
    EXPECT_EQ(found.size(), std::size_t{test::kWriters} * test::kThreadsPerWriter * kLines);
}

TEST(SharedLogTest, LogAndBackupWithSmallLimitContainOnlyCompleteLines) {
    constexpr long long kLimitBytes = 200000;
    constexpr long long kMaxLineBytes = 40000;
    test::TemporaryLog log(kLimitBytes);
    LogWriters writers(log, kLimitBytes);
    writers.add(test::kWriters, kLinesPerThread);
    writers.go();
    ASSERT_TRUE(writers.finish());

    std::vector<StressLineId> found = test::readStressLog(log.backupPath(), writers);
    EXPECT_FALSE(found.empty()) << "the log was never rotated";
    const std::vector<StressLineId> newer = test::readStressLog(log.path(), writers);
    found.insert(found.end(), newer.begin(), newer.end());

    // The numbers of the lines of each thread must increase. So no line may occur twice.
    std::map<std::pair<unsigned int, unsigned int>, unsigned int> next;
    for (const StressLineId& id : found) {
        unsigned int& expected = next[{id.writer, id.thread}];
        EXPECT_GE(id.number, expected) << "writer " << id.writer << ", thread " << id.thread;
        expected = id.number + 1;
    }

    // The writers have exited, so nothing prevents a rotation. The next call rotates a log that is too large.
    vorel::Exception::warn("alone");
    EXPECT_LE(log.size(), kLimitBytes + kMaxLineBytes);
}

}  // namespace
