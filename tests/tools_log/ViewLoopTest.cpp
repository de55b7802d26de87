#include "vorellog/ViewLoop.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tools_log/Records.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using vorellog::Environment;
using vorellog::FileBusy;
using vorellog::FileId;
using vorellog::Follower;
using vorellog::LocalMs;
using vorellog::LogFile;
using vorellog::LogFiles;
using vorellog::Settings;
using vorellog::Viewer;
using vorellog::ViewLoop;

/// A log of fixed bytes.
class Bytes : public LogFile {
public:
    Bytes(unsigned long long index, std::string bytes) : m_index(index), m_bytes(std::move(bytes)) {}
    [[nodiscard]] FileId id() const override { return {1, m_index}; }
    [[nodiscard]] unsigned long long size() const override { return m_bytes.size(); }
    std::size_t read(unsigned long long offset, char* buffer, std::size_t size) override {
        return m_bytes.copy(buffer, size, std::min<std::size_t>(offset, m_bytes.size()));
    }

private:
    unsigned long long m_index;
    std::string m_bytes;
};

/// A log that exists, is missing or is busy.
class Files : public LogFiles {
public:
    bool isBusy = false;
    unsigned long long index = 0;  ///< identifies the log; 0 if the log is missing
    std::string bytes = test::header() + "WARN: a\n";
    unsigned int attempts = 0;  ///< the number of attempts to open the log

    std::unique_ptr<LogFile> open(Which which) override {
        if (which == Which::Backup) {
            return nullptr;
        }
        ++attempts;
        if (isBusy) {
            throw FileBusy(tools::Failure(L"my.log: cannot be read"));
        }
        return index != 0 ? std::make_unique<Bytes>(index, bytes) : nullptr;
    }
};

/// A clock that advances only in waits, and the reports of the loop.
class Clock : public Environment {
public:
    std::function<bool(LocalMs now)> isTimeToStop = [](LocalMs) { return false; };  ///< called after each wait
    std::vector<std::wstring> reports;

    LocalMs nowMs() override { return m_now; }
    bool waitForStop(LocalMs milliseconds) override {
        m_now += milliseconds;
        return isTimeToStop(m_now);
    }
    void report(const std::wstring& text) override { reports.push_back(text); }

private:
    LocalMs m_now = 0;
};

class ViewLoopTest : public ::testing::Test {
protected:
    Files files;
    Clock clock;
    std::string shown;

    void run(const Settings& settings) {
        Viewer viewer(settings, false, [this](std::string_view text) { shown += text; });
        Follower follower(files, viewer);
        ViewLoop loop(settings, follower, viewer, clock);
        loop.run();
        viewer.finish();
        loop.reportGaps();
    }
};

constexpr LocalMs kMaxBusyMs = ViewLoop::kMaxBusyMs;
const Settings kFollowing = {.paths = {L"my.log"}, .follow = true};

TEST_F(ViewLoopTest, ExistingLogIsShownWithoutReports) {
    files.index = 1;
    run({.paths = {L"my.log"}});
    EXPECT_EQ(shown, files.bytes);
    EXPECT_THAT(clock.reports, IsEmpty());
}

TEST_F(ViewLoopTest, FollowReportsAMissingLogOnce) {
    clock.isTimeToStop = [&](LocalMs now) {
        files.index = now >= 1000 ? 1 : 0;
        return now >= 2000;
    };
    run(kFollowing);
    EXPECT_EQ(shown, files.bytes);
    EXPECT_THAT(clock.reports, ElementsAre(L"my.log: log not found; waiting"));
}

TEST_F(ViewLoopTest, MissingLogIsNotAwaitedWithoutFollow) {
    run({.paths = {L"my.log"}});
    EXPECT_EQ(clock.nowMs(), 0);
    EXPECT_THAT(clock.reports, IsEmpty());
}

TEST_F(ViewLoopTest, BrieflyBusyLogIsNotReported) {
    files.index = 1;
    files.isBusy = true;
    clock.isTimeToStop = [&](LocalMs now) {
        files.isBusy = now < kMaxBusyMs;
        return now > kMaxBusyMs + 1000;
    };
    run(kFollowing);
    EXPECT_EQ(shown, files.bytes);
    EXPECT_THAT(clock.reports, IsEmpty());
}

TEST_F(ViewLoopTest, FollowReportsABusyLogOnce) {
    files.index = 1;
    files.isBusy = true;
    clock.isTimeToStop = [&](LocalMs now) {
        files.isBusy = now < 3 * kMaxBusyMs;
        return now > 3 * kMaxBusyMs + 1000;
    };
    run(kFollowing);
    EXPECT_EQ(shown, files.bytes);
    EXPECT_THAT(clock.reports, ElementsAre(L"my.log: cannot be read; waiting"));
}

TEST_F(ViewLoopTest, FollowReportsEachBusyPeriod) {
    files.index = 1;
    files.isBusy = true;
    clock.isTimeToStop = [&](LocalMs now) {
        files.isBusy = now < 2 * kMaxBusyMs || now > 3 * kMaxBusyMs;
        return now > 5 * kMaxBusyMs;
    };
    run(kFollowing);
    EXPECT_EQ(clock.reports.size(), 2u);
}

TEST_F(ViewLoopTest, LogThatStaysBusyIsPolledLessOften) {
    files.isBusy = true;
    unsigned int attemptsBefore = 0;
    clock.isTimeToStop = [&](LocalMs now) {
        attemptsBefore = now <= kMaxBusyMs ? files.attempts : attemptsBefore;
        return now >= 2 * kMaxBusyMs;
    };
    run(kFollowing);
    EXPECT_GE(attemptsBefore, kMaxBusyMs / ViewLoop::kBusyMs - 1);
    EXPECT_LE(files.attempts - attemptsBefore, kMaxBusyMs / ViewLoop::kPollMs + 2);
}

TEST_F(ViewLoopTest, BusyLogIsAFailureWithoutFollow) {
    files.isBusy = true;
    EXPECT_THROW(run({.paths = {L"my.log"}}), FileBusy);
    EXPECT_GT(clock.nowMs(), kMaxBusyMs);
    EXPECT_THAT(clock.reports, IsEmpty());
}

TEST_F(ViewLoopTest, GapsAreReportedAtOnce) {
    files.index = 1;
    std::vector<std::size_t> reportsByWait;
    clock.isTimeToStop = [&](LocalMs now) {
        reportsByWait.push_back(clock.reports.size());
        files.index = now < 300 ? 1 : now < 600 ? 2 : 3;
        return now >= 900;
    };
    run(kFollowing);
    EXPECT_EQ(shown, files.bytes + files.bytes + files.bytes);
    EXPECT_THAT(reportsByWait, ElementsAre(0, 0, 0, 1, 1, 1, 2, 2, 2));
    EXPECT_THAT(
        clock.reports,
        ::testing::Each(
            L"the log was deleted or emptied, or was rotated faster than it could be read; records may be missing"));
    EXPECT_EQ(clock.reports.size(), 2u);
}

}  // namespace
