/// \file
/// The system calls of the error log and their order: the attempts to lock the file, the waits between them, and the
/// steps of writing and rotating. The tests do not really wait, but only record the waits.

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <io.h>
#include <windows.h>

#include "support/ImportHook.h"
#include "support/LockedFile.h"
#include "support/TemporaryLog.h"
#include "support/TimeZone.h"
#include "vorel/exceptions/Exception.h"

namespace {

using test::TemporaryLog;
using Texts = std::vector<std::string>;
using vorel::Exception;

/// The system calls of the log since the record was last replaced, the number of lock calls that must fail, and an
/// action that runs during each sleep.
struct Record {
    std::vector<DWORD> sleepsMs;
    std::function<void()> duringSleep = [] {};
    unsigned int lockCalls = 0;
    unsigned int locksToFail = 0;
    Texts steps;
};

Record& record() {
    static Record theOne;
    return theOne;
}

void WINAPI recordSleep(DWORD milliseconds) {
    record().sleepsMs.push_back(milliseconds);
    record().duringSleep();
}

BOOL WINAPI failLocks(HANDLE, DWORD, DWORD, DWORD, DWORD, OVERLAPPED*) {
    return ++record().lockCalls > record().locksToFail;
}

class ErrorLogAttempts : public testing::Test {
protected:
    ErrorLogAttempts() { record() = Record(); }

    const test::ImportPatch<decltype(::Sleep)> m_sleep{importedSleep, &recordSleep};
    // Without a size limit, no size check locks the file. So each counted lock is an attempt to write.
    const TemporaryLog m_log{-1};
};

TEST_F(ErrorLogAttempts, AreAtMost31WithWaitsThatGrowBy3Milliseconds) {
    struct Case {
        unsigned int failedLocks;
        unsigned int attempts;
        bool written;
    };
    for (const Case& c : {Case{0, 1, true}, Case{1, 2, true}, Case{2, 3, true}, Case{29, 30, true}, Case{30, 31, true},
                          Case{31, 31, false}, Case{100, 31, false}}) {
        record() = Record();
        record().locksToFail = c.failedLocks;
        std::vector<DWORD> expectedSleepsMs;
        for (DWORD wait = 1; wait < c.attempts; ++wait) {
            expectedSleepsMs.push_back(3 * wait);
        }
        const TemporaryLog log(-1);
        const test::ImportPatch locks(importedLockFileEx, &failLocks);
        Exception::warn("text");
        EXPECT_EQ(record().lockCalls, c.attempts) << c.failedLocks;
        EXPECT_EQ(record().sleepsMs, expectedSleepsMs) << c.failedLocks;
        EXPECT_EQ(log.messages(), c.written ? Texts{"WARN: text"} : Texts{}) << c.failedLocks;
    }
}

TEST_F(ErrorLogAttempts, Sleep1395MillisecondsInTotalBeforeALineIsDropped) {
    const test::LockedFile held(m_log.path());
    Exception::warn("dropped");
    DWORD sumMs = 0;
    for (const DWORD sleepMs : record().sleepsMs) {
        sumMs += sleepMs;
    }
    EXPECT_EQ(record().sleepsMs.size(), 30u);
    EXPECT_EQ(sumMs, 1395u);
}

TEST_F(ErrorLogAttempts, SucceedOnceTheLockIsFree) {
    test::LockedFile held(m_log.path());
    record().duringSleep = [&] {
        if (record().sleepsMs.size() == 30) {
            held.unlock();
        }
    };
    Exception::warn("at last");
    EXPECT_EQ(m_log.messages(), Texts{"WARN: at last"});
}

TEST_F(ErrorLogAttempts, OpenTheFileByItsPathEachTime) {
    const test::LockedFile held(m_log.path());
    record().duringSleep = [this] { std::rename(m_log.path().c_str(), m_log.folder().file("elsewhere").c_str()); };
    Exception::warn("text");
    EXPECT_EQ(record().sleepsMs, std::vector<DWORD>{3});
    EXPECT_EQ(m_log.messages(), Texts{"WARN: text"});
}

TEST_F(ErrorLogAttempts, LineContainsTheTimeBeforeTheFirstAttempt) {
    const test::TimeZone zone;
    constexpr std::uint64_t kSecond = 10000000;  // in units of 100 ns
    std::uint64_t now = (11644473600 + 1234567890) * kSecond;
    const test::ImportHook<importedGetSystemTimeAsFileTime> clock([&](FILETIME* out) {
        *out = {static_cast<DWORD>(now), static_cast<DWORD>(now >> 32)};
    });
    record().duringSleep = [&] { now += 60 * kSecond; };
    record().locksToFail = 3;
    const test::ImportPatch locks(importedLockFileEx, &failLocks);
    Exception::warn("text");
    ASSERT_EQ(record().sleepsMs.size(), 3u);
    ASSERT_EQ(m_log.lines().size(), 1u);
    EXPECT_EQ(m_log.lines()[0].time, "Sat Feb 14 04:31:30 2009");
}

TEST_F(ErrorLogAttempts, StopIfTheFileCannotBeOpened) {
    Exception::SetErrorLogLocation(m_log.folder().file("no such folder\\log").c_str(), 0);
    Exception::warn("dropped");
    EXPECT_TRUE(record().sleepsMs.empty());
}

TEST_F(ErrorLogAttempts, AreNotRepeatedForTheSizeCheck) {
    Exception::SetErrorLogSize(1000);
    record().locksToFail = 1;  // the lock for the size check
    const test::ImportPatch locks(importedLockFileEx, &failLocks);
    Exception::warn("text");
    EXPECT_TRUE(record().sleepsMs.empty());
    EXPECT_EQ(record().lockCalls, 2u);
}

/// Records the calls of an imported function under a name, and forwards them.
template <auto& Slot>
class RecordedStep {
public:
    explicit RecordedStep(const char* name)
        : m_hook([this, name](auto... arguments) {
              record().steps.emplace_back(name);
              return m_hook.original(arguments...);
          }) {}

private:
    const test::ImportHook<Slot> m_hook;
};

struct RecordedSteps {
    RecordedStep<importedSopenS> open{"open"};
    RecordedStep<importedGetFileSizeEx> size{"size"};
    RecordedStep<importedLockFileEx> lock{"lock"};
    RecordedStep<importedUnlockFileEx> unlock{"unlock"};
    RecordedStep<importedClose> close{"close"};
    RecordedStep<importedUnlink> unlink{"delete"};
    RecordedStep<importedRename> rename{"rename"};
    RecordedStep<importedFflush> flush{"flush"};
    RecordedStep<importedFclose> closeStream{"close stream"};
};

TEST(ErrorLogSteps, CheckTheSizeAndWriteUnderOneLock) {
    for (const long long limit : {-1LL, 1000LL}) {
        record() = Record();
        const TemporaryLog log(limit);
        {
            const RecordedSteps recorded;
            Exception::warn("text");
        }
        Texts expected = {"open", "lock", "size", "flush", "unlock", "close stream"};
        if (limit < 0) {
            std::erase(expected, "size");
        }
        EXPECT_EQ(record().steps, expected) << limit;
    }
}

TEST(ErrorLogSteps, SkipTheSizeCheckIfTheFirstLockFails) {
    record() = Record();
    const TemporaryLog log(1000);
    {
        const RecordedSteps recorded;
        record().locksToFail = 1;
        const test::ImportPatch locks(importedLockFileEx, &failLocks);
        Exception::warn("text");
    }
    EXPECT_EQ(record().steps, (Texts{"open", "close", "open", "flush", "unlock", "close stream"}));
    EXPECT_EQ(record().lockCalls, 2u);
}

// The first attempt to open the file fails, as it does while another process renames the file.
TEST(ErrorLogSteps, OpenTheFileAgainIfItCannotBeOpenedForTheSizeCheck) {
    const TemporaryLog log(1000);
    int opens = 0;
    {
        const test::ImportHook<importedSopenS> opening(
            [&](int* file, const char* path, int flags, int sharing, int mode) {
                return ++opens == 1 ? EACCES : opening.original(file, path, flags, sharing, mode);
            });
        Exception::warn("text");
    }
    EXPECT_EQ(opens, 2);
    EXPECT_EQ(log.messages(), Texts{"WARN: text"});
}

TEST(ErrorLogSteps, RenameTheFileAfterUnlockingAndClosingIt) {
    record() = Record();
    const TemporaryLog log;
    Exception::warn("old");
    Exception::SetErrorLogSize(1);
    {
        const RecordedSteps recorded;
        Exception::warn("new");
    }
    EXPECT_EQ(record().steps, (Texts{"open", "lock", "size", "delete", "unlock", "close", "rename",  // moves the file
                                     "open", "lock", "flush", "unlock", "close stream"}));
    EXPECT_EQ(test::readLogMessages(log.backupPath()), Texts{"WARN: old"});
    EXPECT_EQ(log.messages(), Texts{"WARN: new"});
}

struct LockRequest {
    DWORD flags = 0;
    DWORD low = 0;
    DWORD high = 0;
    OVERLAPPED from = {};
};

LockRequest& lockRequest() {
    static LockRequest last;
    return last;
}

BOOL WINAPI recordLock(HANDLE, DWORD flags, DWORD, DWORD low, DWORD high, OVERLAPPED* from) {
    lockRequest() = {flags, low, high, *from};
    return TRUE;
}

BOOL WINAPI recordUnlock(HANDLE, DWORD, DWORD low, DWORD high, OVERLAPPED* from) {
    lockRequest() = {0, low, high, *from};
    return TRUE;
}

TEST(ErrorLogSteps, LockAndUnlockTheWholeFileWithoutWaiting) {
    const TemporaryLog log(-1);
    const auto expectWholeFile = [] {
        EXPECT_EQ(lockRequest().low, 0xFFFFFFFFu);
        EXPECT_EQ(lockRequest().high, 0xFFFFFFFFu);
        EXPECT_EQ(lockRequest().from.Offset, 0u);
        EXPECT_EQ(lockRequest().from.OffsetHigh, 0u);
    };
    {
        const test::ImportPatch lock(importedLockFileEx, &recordLock);
        Exception::warn("text");
        expectWholeFile();
        EXPECT_EQ(lockRequest().flags, static_cast<DWORD>(LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY));
    }
    const test::ImportPatch unlock(importedUnlockFileEx, &recordUnlock);
    Exception::warn("text");
    expectWholeFile();
}

}  // namespace
