/// \file
/// Creates and destroys named locks and all kinds of conditions many times, including the failing paths. Every handle
/// must be closed, and a named object must not exist after its last handle is closed.

#include <ostream>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include <windows.h>

#include "support/CaseName.h"
#include "support/Handle.h"
#include "support/ImportHook.h"
#include "support/NamedEvent.h"
#include "support/TemporaryLog.h"
#include "vorel/exceptions/Exception.h"
#include "vorel/sync/AutoMutex.h"
#include "vorel/sync/Condition.h"
#include "vorel/sync/NamedCondition.h"
#include "whitebox/LiveBlocks.h"
#include "whitebox/LiveHandles.h"

namespace {

using test::Handle;
using vorel::AutoMutex;
using vorel::Exception;

using Name = const std::wstring&;

constexpr int kRounds = 10000;

struct Cycle {
    const char* name;
    HANDLE (*prepare)(Name name);  // creates the object that exists before the first round, or returns null
    bool (*run)(Name name);        // runs a round, and returns whether it succeeded

    bool succeedsEachTime;
    int rounds = kRounds;

    friend void PrintTo(const Cycle& cycle, std::ostream* out) { *out << cycle.name; }
};

HANDLE nothing(Name) {
    return nullptr;
}

HANDLE newEvent(Name name) {
    return CreateEventW(nullptr, FALSE, FALSE, (L"Global\\" + name).c_str());
}

HANDLE newMutex(Name name) {
    return CreateMutexW(nullptr, FALSE, (L"Global\\" + name).c_str());
}

/// Returns false if the body throws a library exception.
template <class Body>
bool succeeds(Body&& body) {
    try {
        body();
        return true;
    } catch (const Exception&) {
        return false;
    }
}

bool useMutex(Name name) {
    return succeeds([&] {
        AutoMutex mutex(name.c_str(), true, false);
        mutex.unlock();
    });
}

bool leaveMutexHeld(Name name) {
    return succeeds([&] {
        AutoMutex mutex(name.c_str(), true, false);
        mutex.lock(0, true);
    });
}

bool renameMutex(Name name) {
    return succeeds([&] {
        AutoMutex mutex(name.c_str(), true, false);
        mutex.initialize((name + L"_other").c_str(), false);
    });
}

bool abandonMutex(Name name) {
    return succeeds([&] {
        AutoMutex mutex(name.c_str(), false, false);
        std::thread([&] { mutex.lock(0, true); }).join();
    });
}

bool failToLock(Name name) {
    const test::ImportPatch wait(
        importedWaitForSingleObject, +[](HANDLE, DWORD) WINAPI -> DWORD { return WAIT_TIMEOUT; });
    return succeeds([&] { const AutoMutex mutex(name.c_str(), true, false); });
}

bool useCondition(Name) {
    return succeeds([&] {
        vorel::ForcedCriticalSection lock;
        vorel::Condition condition(lock);
        lock.lock(0, true);
        condition.signal();
        condition.wait(0);
        lock.unlock();
    });
}

bool failToSignal(Name) {
    const auto failing = test::failCalls<importedSetEvent>();
    return succeeds([&] {
        vorel::ForcedCriticalSection lock;
        vorel::Condition condition(lock);
        condition.signal();
    });
}

bool useNamedCondition(Name name) {
    return succeeds([&] {
        vorel::NamedCondition condition((L"Global\\" + name).c_str());
        condition.signal();
        condition.wait(0);
    });
}

const Cycle kCycles[] = {
    {"AutoMutex_New", nothing, useMutex, true},
    {"AutoMutex_Existing", newMutex, useMutex, true},
    {"AutoMutex_DestroyedWhileHeld", nothing, leaveMutexHeld, true},
    {"AutoMutex_InitializedWithAnotherName", nothing, renameMutex, true},
    {"AutoMutex_ThatCannotBeLocked", nothing, failToLock, false},
    {"Condition_New", nothing, useCondition, true},
    {"Condition_ThatCannotSignal", nothing, failToSignal, false},
    {"NamedCondition_New", nothing, useNamedCondition, true},
    {"NamedCondition_Existing", newEvent, useNamedCondition, true},
    // The next cycle starts a thread in each round, which is slow.
    {"AutoMutex_AbandonedByAThread", nothing, abandonMutex, true, kRounds / 10},
    // In each round of the next two cycles, the library makes eleven attempts to create or open the object.
    {"AutoMutex_WithTheNameOfAnEvent", newEvent, useMutex, false, kRounds / 11},
    {"NamedCondition_WithTheNameOfAMutex", newMutex, useNamedCondition, false, kRounds / 11},
};

class LockLeaks : public testing::TestWithParam<Cycle> {
protected:
    LockLeaks() { Exception::SetErrorLogSize(0); }

    const test::TemporaryLog m_log;  // its destructor restores the size limit of the log
    const std::wstring m_name = test::NamedEvent::uniqueName(L"leaks");
};

TEST_P(LockLeaks, ManyRoundsLeaveNoHandleOpen) {
    const Cycle& cycle = GetParam();
    {
        const Handle prepared(cycle.prepare(m_name));
        const test::ImportPatch sleep(
            importedSleep, +[](DWORD) WINAPI {});  // so that attempts follow without a wait
        (void)cycle.run(m_name);                   // in the first round, the system may open handles and keep them
        const DWORD reported = test::reportedHandles();
        const test::LiveHandles handles;
        const test::LiveBlocks blocks;
        for (int round = 0; round < cycle.rounds; ++round) {
            ASSERT_EQ(cycle.run(m_name), cycle.succeedsEachTime) << round;
            ASSERT_EQ(handles.live(), 0u) << round;
            ASSERT_EQ(blocks.live(), 0u) << round;
        }
        EXPECT_EQ(test::reportedHandles(), reported);
    }
    const std::wstring fullName = L"Global\\" + m_name;
    EXPECT_FALSE(Handle(OpenMutexW(SYNCHRONIZE, FALSE, fullName.c_str())));
    EXPECT_FALSE(Handle(OpenEventW(SYNCHRONIZE, FALSE, fullName.c_str())));
    EXPECT_FALSE(Handle(OpenMutexW(SYNCHRONIZE, FALSE, (fullName + L"_other").c_str())));
}

INSTANTIATE_TEST_SUITE_P(Each, LockLeaks, testing::ValuesIn(kCycles), test::caseName);

}  // namespace
