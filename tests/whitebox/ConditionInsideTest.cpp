/// \file
/// The behaviour of the conditions if system calls fail, how a broadcast excludes new waiters, the offsets of the
/// fields, and the private members that only throw.

#include <chrono>
#include <cstring>
#include <future>
#include <new>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include <windows.h>

#include "core/ThreadSafetySwitch.h"
#include "support/CaseName.h"
#include "support/Expect.h"
#include "support/ImportHook.h"
#include "support/NamedEvent.h"
#include "support/PrivateMember.h"
#include "support/SystemText.h"
#include "support/TemporaryLog.h"
#include "vorel/core/Guard.h"
#include "vorel/sync/Condition.h"
#include "vorel/sync/NamedCondition.h"

extern "C" {
// These constructors are private. The test calls them by their mangled names, like clients that import them by name.
void constructDefault(void* memory) __asm__("_ZN5vorel14NamedConditionC1Ev");
void constructCopy(void* memory, const vorel::NamedCondition& other) __asm__("_ZN5vorel14NamedConditionC1ERKS0_");
}

namespace test {

using vorel::Condition;
using vorel::NamedCondition;

struct BroadcastLock : PrivateMember<BroadcastLock, vorel::ForcedCriticalSection Condition::*> {};
struct Waiters : PrivateMember<Waiters, volatile long Condition::*> {};
struct Event : PrivateMember<Event, vorel::detail::KernelHandle Condition::*> {};
struct NamedConditionEvent : PrivateMember<NamedConditionEvent, vorel::detail::KernelHandle NamedCondition::*> {};
struct NamedConditionName : PrivateMember<NamedConditionName, vorel::BaseString<wchar_t> NamedCondition::*> {};
struct CloseCondition : PrivateMember<CloseCondition, void (Condition::*)()> {};
struct CloseNamed : PrivateMember<CloseNamed, void (NamedCondition::*)()> {};
struct Assign : PrivateMember<Assign, NamedCondition& (NamedCondition::*)(const NamedCondition&)> {};
template struct Reveal<BroadcastLock, &Condition::m_broadcastLock>;
template struct Reveal<Waiters, &Condition::m_waiters>;
template struct Reveal<Event, &Condition::m_event>;
template struct Reveal<NamedConditionEvent, &NamedCondition::m_event>;
template struct Reveal<NamedConditionName, &NamedCondition::m_name>;
template struct Reveal<CloseCondition, &Condition::closeCondition>;
template struct Reveal<CloseNamed, &NamedCondition::closeCondition>;
template struct Reveal < Assign, &NamedCondition::operator=>;

}  // namespace test

namespace {

using test::expectThrows;
using test::ImportPatch;
using test::isFreeForOthers;
using test::TemporaryLog;
using vorel::Condition;
using vorel::Exception;
using vorel::ForcedCriticalSection;
using vorel::Guard;
using vorel::NamedCondition;

// cppcheck-suppress constParameter; the system's signature
HANDLE WINAPI failToCreateEvent(SECURITY_ATTRIBUTES* security, BOOL manualReset, BOOL initialState,
                                const wchar_t* name) {
    EXPECT_EQ(security, nullptr);
    EXPECT_EQ(manualReset, FALSE);
    EXPECT_EQ(initialState, FALSE);
    EXPECT_EQ(name, nullptr);
    return nullptr;
}

DWORD WINAPI waitAndThrow(HANDLE, DWORD) {
    throw std::runtime_error("wait failed");
}

DWORD waitedMs = 0;

DWORD WINAPI failToWait(HANDLE, DWORD milliseconds) {
    waitedMs = milliseconds;
    return WAIT_FAILED;
}

TEST(ConditionInside, FailureToCreateTheEventThrows) {
    const TemporaryLog log;
    ForcedCriticalSection lock;
    const ImportPatch create(importedCreateEventW, &failToCreateEvent);
    expectThrows<Exception>([&] { const Condition condition(lock); },
                            {L"Failed to create condition.", L"Condition::createCondition: Vorel exception rethrown",
                             L"Condition::Condition(): Vorel exception rethrown"});
}

TEST(ConditionInside, FailureToSetTheEventThrows) {
    const TemporaryLog log;
    ForcedCriticalSection lock;
    Condition condition(lock);
    NamedCondition named(nullptr);
    const auto set = test::failCalls<importedSetEvent>();
    expectThrows<Exception>([&] { condition.signal(); },
                            {L"Failed to set event.", L"Condition::signal: Vorel exception rethrown"});
    expectThrows<Exception>([&] { named.signal(); },
                            {L"Failed to set event.", L"NamedCondition::signal: Vorel exception rethrown"});
}

TEST(ConditionInside, FailedBroadcastReleasesTheBroadcastLock) {
    const TemporaryLog log;
    ForcedCriticalSection lock;
    Condition condition(lock);
    condition.*reveal(test::Waiters()) = 1;
    {
        const auto set = test::failCalls<importedSetEvent>();
        expectThrows<Exception>([&] { condition.broadcast(); },
                                {L"Failed to set event.", L"Condition::signal: Vorel exception rethrown",
                                 L"Condition::broadcast: Vorel exception rethrown"});
    }
    EXPECT_TRUE(isFreeForOthers(condition.*reveal(test::BroadcastLock())));
}

TEST(ConditionInside, WaitPassesItsTimeoutAndReturnsFalseIfTheSystemsWaitFails) {
    ForcedCriticalSection lock;
    Condition condition(lock);
    NamedCondition named(nullptr);
    const Guard held(lock);
    const ImportPatch wait(importedWaitForSingleObject, &failToWait);
    EXPECT_FALSE(condition.wait(1234));
    EXPECT_EQ(waitedMs, 1234u);
    EXPECT_FALSE(condition.wait(-1));
    EXPECT_EQ(waitedMs, INFINITE);
    EXPECT_FALSE(named.wait(4321));
    EXPECT_EQ(waitedMs, 4321u);
    EXPECT_FALSE(named.wait(-1));
    EXPECT_EQ(waitedMs, INFINITE);
    EXPECT_EQ(condition.*reveal(test::Waiters()), 0);
}

TEST(ConditionInside, WaitThatThrowsReacquiresTheLockAndIsNoLongerCounted) {
    const TemporaryLog log;
    ForcedCriticalSection lock;
    Condition condition(lock);
    {
        const Guard held(lock);
        const ImportPatch wait(importedWaitForSingleObject, &waitAndThrow);
        expectThrows<Exception>([&] { condition.wait(0); }, {L"Condition::wait: Severe error thrown"});
        EXPECT_EQ(condition.*reveal(test::Waiters()), 0);
    }
    const Guard held(lock);
    EXPECT_FALSE(isFreeForOthers(lock));
}

/// A way in which a wait on the event ends.
struct WaitEnd {
    const char* name;
    DWORD result;
    bool throws;

    friend void PrintTo(const WaitEnd& end, std::ostream* out) { *out << end.name; }
};

class ConditionWait : public testing::TestWithParam<WaitEnd> {};

TEST_P(ConditionWait, WaiterIsCountedOnlyWhileItHoldsNoLock) {
    const TemporaryLog log;
    ForcedCriticalSection lock;
    Condition condition(lock);
    std::vector<std::string> trace;
    const auto note = [&](const char* call, const void* section) {
        const bool isCallers = section == lock.getHandle();
        if (isCallers || section == (condition.*reveal(test::BroadcastLock())).getHandle()) {
            const long waiters = condition.*reveal(test::Waiters());
            trace.push_back(call + std::string(isCallers ? " lock " : " broadcast ") + std::to_string(waiters));
        }
    };
    const Guard held(lock);
    {
        const test::ImportHook<importedEnterCriticalSection> enter([&](CRITICAL_SECTION* section) {
            note("enter", section);
            enter.original(section);
        });
        const test::ImportHook<importedLeaveCriticalSection> leave([&](CRITICAL_SECTION* section) {
            note("leave", section);
            leave.original(section);
        });
        // cppcheck-suppress constParameter ; the system's signature
        const test::ImportHook<importedWaitForSingleObject> wait([&](HANDLE event, DWORD) {
            EXPECT_EQ(event, (condition.*reveal(test::Event())).get());
            trace.push_back("wait " + std::to_string(condition.*reveal(test::Waiters())));
            return GetParam().throws ? throw std::runtime_error("wait failed") : GetParam().result;
        });
        try {
            EXPECT_EQ(condition.wait(1), GetParam().result == WAIT_OBJECT_0);
        } catch (const Exception&) {
            EXPECT_TRUE(GetParam().throws);
        }
    }
    EXPECT_THAT(trace, testing::ElementsAre("leave lock 0", "enter broadcast 0", "leave broadcast 0", "wait 1",
                                            "enter lock 0"));
}

INSTANTIATE_TEST_SUITE_P(Each, ConditionWait,
                         testing::Values(WaitEnd{"Signalled", WAIT_OBJECT_0, false},
                                         WaitEnd{"TimedOut", WAIT_TIMEOUT, false},
                                         WaitEnd{"Failed", WAIT_FAILED, false}, WaitEnd{"Thrown", WAIT_FAILED, true}),
                         test::caseName);

TEST(ConditionInside, FieldsAreAtFixedOffsets) {
    ForcedCriticalSection lock;
    const Condition condition(lock);
    const ForcedCriticalSection* first = nullptr;
    std::memcpy(&first, static_cast<const void*>(&condition), sizeof first);
    EXPECT_EQ(first, &lock);
    EXPECT_EQ(test::offsetOf(condition, reveal(test::BroadcastLock())), 8u);
    EXPECT_EQ(test::offsetOf(condition, reveal(test::Event())), 16u);
    EXPECT_EQ(test::offsetOf(condition, reveal(test::Waiters())), 24u);
}

TEST(NamedConditionInside, FieldsAreAtFixedOffsets) {
    const NamedCondition condition(nullptr);
    EXPECT_EQ(test::offsetOf(condition, reveal(test::NamedConditionEvent())), 0u);
    EXPECT_EQ(test::offsetOf(condition, reveal(test::NamedConditionName())), 8u);
}

TEST(NamedConditionInside, CreationIsTriedElevenTimesAtIntervalsOfFiftyMilliseconds) {
    const TemporaryLog log;
    std::vector<std::wstring> created;
    std::vector<std::wstring> opened;
    std::vector<DWORD> sleepsMs;
    const test::ImportHook<importedCreateEventW> create(
        [&](SECURITY_ATTRIBUTES*, BOOL manualReset, BOOL initialState, const wchar_t* name) -> HANDLE {
            EXPECT_EQ(manualReset, FALSE);
            EXPECT_EQ(initialState, FALSE);
            created.emplace_back(name);
            SetLastError(ERROR_ACCESS_DENIED);
            return nullptr;
        });
    const test::ImportHook<importedOpenEventW> open([&](DWORD, BOOL, const wchar_t* name) -> HANDLE {
        opened.emplace_back(name);
        SetLastError(ERROR_FILE_NOT_FOUND);
        return nullptr;
    });
    const test::ImportHook<importedSleep> sleep([&](DWORD milliseconds) { sleepsMs.push_back(milliseconds); });
    expectThrows<Exception>(
        [] { const NamedCondition condition(L"vorel_condition"); },
        {L"Failed to create condition 'vorel_condition': OpenEvent failed: " + test::systemText(ERROR_FILE_NOT_FOUND),
         L"NamedCondition::createCondition: Vorel exception rethrown"});
    const std::vector<std::wstring> elevenNames(11, L"vorel_condition");
    EXPECT_EQ(created, elevenNames);
    EXPECT_EQ(opened, elevenNames);
    EXPECT_EQ(sleepsMs, std::vector<DWORD>(10, 50));
}

/// Destroys an `X` while CloseHandle throws an exception after closing the event: first without another exception, then
/// while another exception unwinds the stack.
template <class X, class... Arguments>
void expectDestructorRules(const std::wstring& name, Arguments&&... arguments) {
    TemporaryLog log;
    const test::ImportHook<importedCloseHandle> close([&](HANDLE handle) -> BOOL {
        close.original(handle);
        throw std::runtime_error("not of the library");
    });
    const std::wstring closing = name + L"::closeCondition: Severe error thrown";
    const std::wstring ending = name + L"::~" + name;
    expectThrows<Exception>([&] { const X condition(arguments...); },
                            {closing, ending + L": Vorel exception rethrown"});
    log.remove();
    const auto throwWhileOneIsAlive = [&] {
        const X condition(arguments...);
        throw std::runtime_error("first failure");
    };
    EXPECT_THROW(throwWhileOneIsAlive(), std::runtime_error);
    EXPECT_THAT(log.messages(),
                testing::ElementsAre("Vorel Error: " + test::utf8(closing),
                                     "Vorel Error: " + test::utf8(ending) + ": Vorel exception suppressed"));
}

TEST(ConditionInside, FailureOfTheDestructorIsRecordedUnderTheDestructorsName) {
    ForcedCriticalSection lock;
    expectDestructorRules<Condition>(L"Condition", lock);
}

TEST(NamedConditionInside, FailureOfTheDestructorIsRecordedUnderTheDestructorsName) {
    expectDestructorRules<NamedCondition>(L"NamedCondition", nullptr);
}

TEST(ConditionInside, NamedWaitWithoutAnEventReturnsFalseImmediately) {
    NamedCondition named(nullptr);
    named.signal();
    (named.*reveal(test::CloseNamed()))();
    EXPECT_FALSE(named.wait(-1));
    (named.*reveal(test::CloseNamed()))();  // nothing is left to close
}

TEST(ConditionInside, WaiterDoesNotJoinABroadcastInProgress) {
    ForcedCriticalSection lock;
    Condition condition(lock);
    condition.signal();  // would wake a waiter immediately
    std::future<bool> waiter;
    {
        const Guard broadcasting(condition.*reveal(test::BroadcastLock()));
        const test::NamedEvent holds(test::NamedEvent::uniqueName(L"holds"));
        waiter = std::async(std::launch::async, [&] {
            const Guard held(lock);
            holds.set();
            return condition.wait(-1);
        });
        ASSERT_TRUE(holds.wait());
        { const Guard afterTheWaiter(lock); }  // waits until the waiter has released the lock in `wait`
        EXPECT_EQ(waiter.wait_for(std::chrono::milliseconds(30)), std::future_status::timeout);
        EXPECT_EQ(condition.*reveal(test::Waiters()), 0) << "the waiter must not be counted before the broadcast ends";
    }
    EXPECT_TRUE(waiter.get());
    EXPECT_EQ(condition.*reveal(test::Waiters()), 0);
}

TEST(ConditionInside, BroadcastPausesOncePerWaiterAndExcludesNewWaiters) {
    ForcedCriticalSection lock;
    Condition condition(lock);
    volatile long& waiters = condition.*reveal(test::Waiters());
    waiters = 3;
    unsigned int pauses = 0;
    const test::ImportHook<importedSleep> sleep([&](DWORD milliseconds) {
        EXPECT_EQ(milliseconds, 10u);
        EXPECT_FALSE(isFreeForOthers(condition.*reveal(test::BroadcastLock()))) << "new waiters must not join";
        ++pauses;
        --const_cast<long&>(waiters);
    });
    condition.broadcast();
    EXPECT_EQ(pauses, 3u);
}

TEST(NamedConditionInside, DefaultConstructionCopyAndAssignmentThrow) {
    const TemporaryLog log;
    NamedCondition condition(nullptr);
    alignas(NamedCondition) unsigned char memory[sizeof(NamedCondition)];
    expectThrows<Exception>([&] { constructDefault(memory); },
                            {L"You must use the const wchar_t* constructor for NamedCondition"});
    expectThrows<Exception>([&] { constructCopy(memory, condition); },
                            {L"Copy constructor is not available for NamedCondition"});
    NamedCondition other(nullptr);
    expectThrows<Exception>([&] { (other.*reveal(test::Assign()))(condition); },
                            {L"operator = is not available for NamedCondition"});
}

}  // namespace
