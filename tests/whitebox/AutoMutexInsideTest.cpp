/// \file
/// The named mutex: its bookkeeping, its system calls, and its errors when those calls fail.

#include <chrono>
#include <functional>
#include <future>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include <windows.h>

#include "core/ThreadSafetySwitch.h"
#include "support/Expect.h"
#include "support/Handle.h"
#include "support/ImportHook.h"
#include "support/NamedEvent.h"
#include "support/SystemText.h"
#include "support/TemporaryLog.h"
#include "support/WideText.h"
#include "vorel/core/Guard.h"
#include "vorel/sync/AutoMutex.h"
#include "whitebox/AutoMutexMembers.h"

namespace {

using test::call;
using test::expectThrows;
using test::ImportPatch;
using test::isFreeForOthers;
using test::onAnotherThread;
using test::systemText;
using test::TemporaryLog;
using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::SizeIs;
using vorel::AutoMutex;
using vorel::Exception;

/// The system calls of the mutex since the test started. `waitResult` is the result of each simulated wait. `mutex` is
/// the mutex whose count and owner are recorded at each release.
struct System {
    DWORD waitResult = WAIT_TIMEOUT;
    std::vector<DWORD> waitsMs;
    std::vector<DWORD> sleepsMs;
    std::vector<std::wstring> created;
    std::vector<std::wstring> opened;
    AutoMutex* mutex = nullptr;
    std::vector<int> countsAtRelease;
    std::vector<long long> ownersAtRelease;
};

System& theSystem() {
    static System theOne;
    return theOne;
}

DWORD WINAPI answerWait(HANDLE, DWORD milliseconds) {
    theSystem().waitsMs.push_back(milliseconds);
    SetLastError(ERROR_INVALID_HANDLE);
    return theSystem().waitResult;
}

decltype(&::ReleaseMutex) realRelease = nullptr;

BOOL WINAPI recordAndRelease(HANDLE mutex) {
    theSystem().countsAtRelease.push_back(call<test::GetLockCount>(*theSystem().mutex));
    theSystem().ownersAtRelease.push_back(call<test::GetLockingThreadID>(*theSystem().mutex));
    return realRelease(mutex);
}

BOOL WINAPI failRelease(HANDLE) {
    SetLastError(ERROR_NOT_OWNER);
    return FALSE;
}

HANDLE WINAPI failCreate(SECURITY_ATTRIBUTES*, BOOL initialOwner, const wchar_t* name) {
    EXPECT_EQ(initialOwner, FALSE);
    theSystem().created.emplace_back(name);
    SetLastError(ERROR_ACCESS_DENIED);
    return nullptr;
}

HANDLE WINAPI failOpen(DWORD, BOOL, const wchar_t* name) {
    theSystem().opened.emplace_back(name);
    SetLastError(ERROR_FILE_NOT_FOUND);
    return nullptr;
}

void WINAPI recordSleep(DWORD milliseconds) {
    theSystem().sleepsMs.push_back(milliseconds);
}

decltype(&::CloseHandle) realClose = nullptr;

BOOL WINAPI closeAndReportFailure(HANDLE handle) {
    realClose(handle);
    return FALSE;
}

class AutoMutexInside : public testing::Test {
public:
    AutoMutexInside() { theSystem() = {}; }
    ~AutoMutexInside() noexcept override = default;  // noexcept, although the destructor of `m_mutex` is not

protected:
    /// Makes a new thread record itself as the owner, and waits until the thread has exited. Returns the id of the
    /// thread.
    unsigned long recordExitedThread() {
        return onAnotherThread([this] {
            call<test::SetLockingThreadID>(m_mutex);
            return GetCurrentThreadId();
        });
    }

    const TemporaryLog m_log;
    const std::wstring m_name = test::NamedEvent::uniqueName(L"mutex");
    AutoMutex m_mutex{m_name.c_str(), false, false};
};

// ---- Bookkeeping ----------------------------------------------------------------------------------------------------

TEST_F(AutoMutexInside, CountsTheHoldsOfItsOwner) {
    EXPECT_EQ(call<test::GetLockCount>(m_mutex), 0);
    EXPECT_EQ(call<test::GetLockingThreadID>(m_mutex), 0);
    m_mutex.lock(0, true);
    m_mutex.tryLock();
    EXPECT_EQ(call<test::GetLockCount>(m_mutex), 2);
    EXPECT_EQ(call<test::GetLockingThreadID>(m_mutex), static_cast<long long>(GetCurrentThreadId()));
    m_mutex.unlock();
    EXPECT_EQ(call<test::GetLockCount>(m_mutex), 1);
    EXPECT_EQ(call<test::GetLockingThreadID>(m_mutex), static_cast<long long>(GetCurrentThreadId()));
    m_mutex.unlock();
    EXPECT_EQ(call<test::GetLockCount>(m_mutex), 0);
    EXPECT_EQ(call<test::GetLockingThreadID>(m_mutex), 0);
}

TEST_F(AutoMutexInside, OnlyTheOwnerCanChangeTheCount) {
    m_mutex.lock(0, true);
    m_mutex.lock(0, true);
    for (const bool increment : {true, false}) {
        onAnotherThread([&] {
            expectThrows<Exception>([&] { call<test::SetLockCount>(m_mutex, increment); },
                                    {L"Mutex " + m_name + L": Trying to " + (increment ? L"increment" : L"decrement") +
                                         L" lock count from a thread that does not own the mutex.  Current owner = " +
                                         std::to_wstring(call<test::GetLockingThreadID>(m_mutex)) +
                                         L", my threadID = " + std::to_wstring(GetCurrentThreadId()) +
                                         L", current lock count = 2",
                                     L"AutoMutex::SetLockCount: Vorel exception rethrown"});
            return 0;
        });
    }
    EXPECT_EQ(call<test::GetLockCount>(m_mutex), 2);
}

TEST_F(AutoMutexInside, DecrementBelowZeroIsLoggedAndLeavesTheCountAtZero) {
    call<test::SetLockCount>(m_mutex, false);
    EXPECT_THAT(m_log.messages(),
                ElementsAre("WARN: Mutex " + test::narrowed(m_name) + ": lockCount was decremented below 0"));
    EXPECT_EQ(call<test::GetLockCount>(m_mutex), 0);
    EXPECT_EQ(call<test::GetLockingThreadID>(m_mutex), 0);
}

TEST_F(AutoMutexInside, OnlyTheOwnerCanSetAndResetTheOwner) {
    call<test::SetLockingThreadID>(m_mutex);
    call<test::SetLockingThreadID>(m_mutex);
    EXPECT_EQ(call<test::GetLockingThreadID>(m_mutex), static_cast<long long>(GetCurrentThreadId()));
    const std::wstring owner = std::to_wstring(GetCurrentThreadId());
    onAnotherThread([&] {
        const std::wstring rest = L" threadID from a thread that does not own the mutex.  Current owner = " + owner +
                                  L", my threadID = " + std::to_wstring(GetCurrentThreadId());
        expectThrows<Exception>([&] { call<test::SetLockingThreadID>(m_mutex); },
                                {L"Mutex " + m_name + L": Trying to set" + rest});
        expectThrows<Exception>([&] { call<test::ResetLockingThreadID>(m_mutex); },
                                {L"Mutex " + m_name + L": Trying to reset" + rest});
        return 0;
    });
    call<test::ResetLockingThreadID>(m_mutex);
    call<test::ResetLockingThreadID>(m_mutex);
    EXPECT_EQ(call<test::GetLockingThreadID>(m_mutex), 0);
}

TEST_F(AutoMutexInside, BookkeepingIsLockedOnlyWhileThreadSafetyIsOn) {
    const test::ThreadSafetySwitch restored;
    const std::vector<void (*)(AutoMutex&)> accesses = {
        [](AutoMutex& mutex) { call<test::GetLockCount>(mutex); },
        [](AutoMutex& mutex) { call<test::GetLockingThreadID>(mutex); },
        [](AutoMutex& mutex) { call<test::SetLockingThreadID>(mutex); },
        [](AutoMutex& mutex) { call<test::ResetLockingThreadID>(mutex); },
        [](AutoMutex& mutex) { call<test::SetLockCount>(mutex, false); },
    };
    for (const unsigned int switchedOn : {1u, 0u}) {
        vorel::ThreadSafetyEnabledCount = switchedOn;
        for (const auto& access : accesses) {
            AutoMutex mutex(m_name.c_str(), false, false);
            auto& bookkeeping = mutex.*reveal(test::Bookkeeping());
            auto* const section = static_cast<CRITICAL_SECTION*>(bookkeeping.getHandle());
            EnterCriticalSection(section);
            std::future<void> accessing = std::async(std::launch::async, access, std::ref(mutex));
            if (switchedOn == 0) {
                accessing.get();  // this access must not wait for the lock
            } else {
                EXPECT_EQ(accessing.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
            }
            LeaveCriticalSection(section);
            if (accessing.valid()) {
                accessing.get();
            }
        }
    }
}

// ---- System calls ---------------------------------------------------------------------------------------------------

TEST_F(AutoMutexInside, InitializeTriesElevenTimes) {
    AutoMutex mutex(nullptr, false, false);
    const ImportPatch create(importedCreateMutexW, &failCreate);
    const ImportPatch open(importedOpenMutexW, &failOpen);
    const ImportPatch sleep(importedSleep, &recordSleep);
    EXPECT_FALSE(mutex.initialize(m_name.c_str(), false));
    EXPECT_THAT(theSystem().created, AllOf(SizeIs(11), Each(L"Global\\" + m_name)));
    EXPECT_THAT(theSystem().opened, AllOf(SizeIs(11), Each(L"Global\\" + m_name)));
    EXPECT_THAT(theSystem().sleepsMs, AllOf(SizeIs(10), Each(100u)));
    EXPECT_FALSE(mutex.initialize(m_name.c_str(), false));
    EXPECT_THAT(theSystem().created, SizeIs(22)) << "without a mutex, a second call with the same name tries again";
}

TEST_F(AutoMutexInside, ConstructorWaitsUpToAMinuteForTheLock) {
    const ImportPatch wait(importedWaitForSingleObject, &answerWait);
    expectThrows<Exception>([&] { const AutoMutex mutex(m_name.c_str(), true, false); },
                            {L"AutoMutex::lock: Failed to lock mutex " + m_name + L": Timed out",
                             L"AutoMutex::lock: Vorel exception rethrown",
                             L"AutoMutex::AutoMutex(): Vorel exception rethrown"});
    EXPECT_THAT(theSystem().waitsMs, ElementsAre(60000u));
}

TEST_F(AutoMutexInside, FailedWaitIsReportedWithTheSystemText) {
    const ImportPatch wait(importedWaitForSingleObject, &answerWait);
    theSystem().waitResult = WAIT_FAILED;
    vorel::BaseString<wchar_t> text;
    EXPECT_FALSE(m_mutex.lock(0, false, &text));
    const std::wstring failed = L"Failed to lock mutex " + m_name + L": " + systemText(ERROR_INVALID_HANDLE);
    EXPECT_EQ(std::wstring(text.view()), failed);
    EXPECT_FALSE(m_mutex.lock(0, false));
    EXPECT_FALSE(m_mutex.tryLock());
    EXPECT_THAT(m_log.lines(), SizeIs(0));
    EXPECT_FALSE(m_mutex.lock(5, false));
    EXPECT_THAT(m_log.messages(), ElementsAre("WARN: AutoMutex::lock: " + test::utf8(failed)));
    expectThrows<Exception>([&] { m_mutex.lock(7, true); }, {L"AutoMutex::lock: Failed to lock mutex " + m_name +
                                                                 L": " + systemText(ERROR_INVALID_HANDLE),
                                                             L"AutoMutex::lock: Vorel exception rethrown"});
    EXPECT_FALSE(m_mutex.tryLock());
    EXPECT_THAT(theSystem().waitsMs, ElementsAre(0u, 0u, 0u, 5u, 7u, 0u));
    EXPECT_EQ(call<test::GetLockCount>(m_mutex), 0);
}

TEST_F(AutoMutexInside, HoldIsStillCountedIfTheReleaseFails) {
    m_mutex.lock(0, true);
    {
        const ImportPatch release(importedReleaseMutex, &failRelease);
        expectThrows<Exception>([&] { m_mutex.unlock(); }, {L"AutoMutex::unlock: Failed to release mutex " + m_name +
                                                                L": " + systemText(ERROR_NOT_OWNER),
                                                            L"AutoMutex::unlock: Vorel exception rethrown"});
    }
    EXPECT_EQ(call<test::GetLockCount>(m_mutex), 1);
    EXPECT_EQ(call<test::GetLockingThreadID>(m_mutex), static_cast<long long>(GetCurrentThreadId()));
    m_mutex.unlock();
    EXPECT_TRUE(isFreeForOthers(m_mutex));
}

TEST_F(AutoMutexInside, CountIsDecrementedBeforeTheRelease) {
    m_mutex.lock(0, true);
    m_mutex.lock(0, true);
    theSystem().mutex = &m_mutex;
    {
        const ImportPatch release(importedReleaseMutex, &recordAndRelease);
        realRelease = release.original();
        m_mutex.unlock();
        m_mutex.unlock();
    }
    EXPECT_THAT(theSystem().countsAtRelease, ElementsAre(1, 0));
    EXPECT_THAT(theSystem().ownersAtRelease, ElementsAre(static_cast<long long>(GetCurrentThreadId()), 0));
}

TEST_F(AutoMutexInside, MutexIsReleasedIfItsHoldCannotBeCounted) {
    AutoMutex other(m_name.c_str(), false, false);
    const unsigned long gone = recordExitedThread();
    EXPECT_THROW(m_mutex.lock(0, true), Exception);
    EXPECT_THROW(m_mutex.tryLock(), Exception);
    EXPECT_EQ(call<test::GetLockingThreadID>(m_mutex), static_cast<long long>(gone));
    EXPECT_TRUE(isFreeForOthers(other));
}

TEST_F(AutoMutexInside, TerminateWaitsUpToAMinuteForTheOwner) {
    onAnotherThread([this] { return m_mutex.lock(0, true) && m_mutex.lock(0, true); });
    {
        const ImportPatch wait(importedWaitForSingleObject, &answerWait);
        for (const DWORD result : {DWORD{WAIT_TIMEOUT}, DWORD{WAIT_FAILED}}) {
            theSystem().waitResult = result;
            expectThrows<Exception>(
                [&] { call<test::Terminate>(m_mutex); },
                {L"AutoMutex::lock: Failed to lock mutex " + m_name + L": " +
                     (result == WAIT_TIMEOUT ? std::wstring(L"Timed out") : systemText(ERROR_INVALID_HANDLE)),
                 L"AutoMutex::terminate: Vorel exception rethrown"});
        }
        EXPECT_THAT(theSystem().waitsMs, ElementsAre(60000u, 60000u));
    }
    call<test::Terminate>(m_mutex);  // the owner has exited, so this does not wait
    EXPECT_EQ(call<test::GetLockCount>(m_mutex), 0);
}

TEST_F(AutoMutexInside, FailedCloseIsReportedAndNotRepeated) {
    const ImportPatch close(importedCloseHandle, &closeAndReportFailure);
    realClose = close.original();
    const std::wstring message = L"AutoMutex::terminate: Error closing mutex " + m_name + L".";
    expectThrows<Exception>([&] { call<test::Terminate>(m_mutex); },
                            {message, L"AutoMutex::terminate: Vorel exception rethrown"});
    call<test::Terminate>(m_mutex);  // nothing is left to close

    expectThrows<Exception>([&] { const AutoMutex mutex(m_name.c_str(), false, false); },
                            {message, L"AutoMutex::terminate: Vorel exception rethrown",
                             L"AutoMutex::~AutoMutex: Vorel exception rethrown"});
}

}  // namespace
