/// \file
/// The system calls of the error log and their order: the attempts to lock the file with the waits between them, and
/// the steps of writing and rotating. The waits are recorded only.

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <io.h>
#include <windows.h>

#include "support/ImportHook.h"
#include "support/ImportPatch.h"
#include "support/LockedFile.h"
#include "support/TemporaryLog.h"
#include "support/TimeZone.h"
#include "vorel/exceptions/Exception.h"

extern "C" {
extern decltype(&::Sleep) importedSleep __asm__("__imp_Sleep");
extern decltype(&::LockFileEx) importedLockFileEx __asm__("__imp_LockFileEx");
extern decltype(&::UnlockFileEx) importedUnlockFileEx __asm__("__imp_UnlockFileEx");
extern decltype(&::_close) importedClose __asm__("__imp__close");
extern decltype(&::_unlink) importedUnlink __asm__("__imp__unlink");
extern decltype(&::rename) importedRename __asm__("__imp_rename");
extern decltype(&::fflush) importedFlush __asm__("__imp_fflush");
extern decltype(&::fclose) importedCloseStream __asm__("__imp_fclose");
extern decltype(&::_time64) importedTime __asm__("__imp__time64");
}

namespace {

using test::TemporaryLog;
using Texts = std::vector<std::string>;
using vorel::Exception;

/// The system calls of the log since the test started.
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
    // Without a limit, no size check locks the file. So each counted lock is an attempt to write.
    const TemporaryLog m_log{-1};
};

TEST_F(ErrorLogAttempts, AreThirtyOneAndEachWaitIsThreeMillisecondsLonger) {
    struct Case {
        unsigned int refused;
        unsigned int attempts;
        bool written;
    };
    for (const Case& c : {Case{0, 1, true}, Case{1, 2, true}, Case{2, 3, true}, Case{29, 30, true}, Case{30, 31, true},
                          Case{31, 31, false}, Case{100, 31, false}}) {
        record() = Record();
        record().locksToFail = c.refused;
        std::vector<DWORD> expectedSleepsMs;
        for (DWORD wait = 1; wait < c.attempts; ++wait) {
            expectedSleepsMs.push_back(3 * wait);
        }
        const TemporaryLog log(-1);
        const test::ImportPatch locks(importedLockFileEx, &failLocks);
        Exception::warn("text");
        EXPECT_EQ(record().lockCalls, c.attempts) << c.refused;
        EXPECT_EQ(record().sleepsMs, expectedSleepsMs) << c.refused;
        EXPECT_EQ(log.messages(), c.written ? Texts{"WARN: text"} : Texts{}) << c.refused;
    }
}

TEST_F(ErrorLogAttempts, Sleep1395MillisecondsBeforeALineIsDropped) {
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

TEST_F(ErrorLogAttempts, OpenTheFileAgain) {
    const test::LockedFile held(m_log.path());
    record().duringSleep = [this] { std::rename(m_log.path().c_str(), m_log.folder().file("elsewhere").c_str()); };
    Exception::warn("text");
    EXPECT_EQ(record().sleepsMs, std::vector<DWORD>{3});
    EXPECT_EQ(m_log.messages(), Texts{"WARN: text"});
}

TEST_F(ErrorLogAttempts, WriteTheTimeBeforeTheFirstAttempt) {
    const test::TimeZone zone;
    __time64_t now = 1234567890;
    const test::ImportHook<importedTime> clock([&](__time64_t*) { return now; });
    record().duringSleep = [&] { now += 60; };
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
    record().locksToFail = 1;  // the lock of the size check
    const test::ImportPatch locks(importedLockFileEx, &failLocks);
    Exception::warn("text");
    EXPECT_TRUE(record().sleepsMs.empty());
    EXPECT_EQ(record().lockCalls, 2u);
}

/// Records the calls of an imported function under a name, and forwards them.
template <class Function, Function*& Slot>
class RecordedStep;

template <class Result, class... Arguments, Result (*&Slot)(Arguments...)>
class RecordedStep<Result(Arguments...), Slot> {
public:
    explicit RecordedStep(const char* name) : m_patch(Slot, &call) {
        s_name = name;
        s_original = m_patch.original();
    }

private:
    static Result call(Arguments... arguments) {
        record().steps.emplace_back(s_name);
        return s_original(arguments...);
    }

    static inline const char* s_name = nullptr;
    static inline Result (*s_original)(Arguments...) = nullptr;

    test::ImportPatch<Result(Arguments...)> m_patch;
};

struct RecordedSteps {
    RecordedStep<decltype(::LockFileEx), importedLockFileEx> lock{"lock"};
    RecordedStep<decltype(::UnlockFileEx), importedUnlockFileEx> unlock{"unlock"};
    RecordedStep<decltype(::_close), importedClose> close{"close"};
    RecordedStep<decltype(::_unlink), importedUnlink> unlink{"delete"};
    RecordedStep<decltype(::rename), importedRename> rename{"rename"};
    RecordedStep<decltype(::fflush), importedFlush> flush{"flush"};
    RecordedStep<decltype(::fclose), importedCloseStream> closeStream{"close stream"};
};

TEST(ErrorLogSteps, AreCheckLockWriteFlushUnlockClose) {
    record() = Record();
    const TemporaryLog log;
    {
        const RecordedSteps recorded;
        Exception::warn("text");
    }
    EXPECT_EQ(record().steps, (Texts{"lock", "unlock", "close", "lock", "flush", "unlock", "close stream"}));
}

TEST(ErrorLogSteps, RenameTheFileAfterUnlockingAndClosing) {
    record() = Record();
    const TemporaryLog log;
    Exception::warn("old");
    Exception::SetErrorLogSize(1);
    {
        const RecordedSteps recorded;
        Exception::warn("new");
    }
    EXPECT_EQ(record().steps,
              (Texts{"lock", "delete", "unlock", "close", "rename", "lock", "flush", "unlock", "close stream"}));
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

TEST(ErrorLogSteps, LockTheWholeRangeWithoutWaiting) {
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
