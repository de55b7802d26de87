// Named locks with a failing heap: after a failed construction the mutex is free, after a failed unlock the object
// still owns the mutex, and failures are reported correctly.

#include <optional>
#include <string>
#include <typeinfo>
#include <vector>

#include <windows.h>

#include "allocation/Walker.h"
#include "core/ThreadSafetySwitch.h"
#include "support/Handle.h"
#include "support/ImportHook.h"
#include "support/NamedEvent.h"
#include "support/SystemText.h"
#include "support/WideText.h"
#include "vorel/core/Guard.h"
#include "vorel/exceptions/ExceptionFamily.h"
#include "vorel/sync/AutoMutex.h"
#include "vorel/sync/Condition.h"
#include "vorel/sync/NamedCondition.h"

namespace {

using test::Handle;
using vorel::AutoMutex;
using vorel::BaseString;
using vorel::NamedCondition;

const std::wstring kRethrown = L": Vorel exception rethrown";

/// A mutex that exists in the system, and the name for opening it with the library, which adds "Global\".
struct ExistingMutex {
    ExistingMutex() : name(test::NamedEvent::uniqueName(L"failing_heap_mutex")), handle(make(name)) {}

    static Handle make(const std::wstring& name) {
        return Handle(CreateMutexW(nullptr, FALSE, (L"Global\\" + name).c_str()));
    }

    std::wstring name;
    Handle handle;
};

template <bool LockNow>
void construct(Attempt& attempt) {
    const ExistingMutex mutex;
    {
        std::optional<AutoMutex> object;
        attempt.perform([&] { object.emplace(mutex.name.c_str(), LockNow, false); });
        EXPECT_EQ(object.has_value(), attempt.completed());
        EXPECT_EQ(attempt.completed(), !attempt.allocationFailed());
        if (!attempt.completed()) {
            ASSERT_GE(attempt.logged().size(), 2u);
            EXPECT_EQ(attempt.logged().back(), "Vorel Error: AutoMutex::AutoMutex(): Vorel exception rethrown");
        }
    }
    // The mutex must be free. If this thread still owned the mutex, the wait would succeed, too. But then the thread
    // would own the mutex twice, and the second release would succeed.
    EXPECT_EQ(WaitForSingleObject(mutex.handle.get(), 0), WAIT_OBJECT_0);
    EXPECT_TRUE(ReleaseMutex(mutex.handle.get()));
    EXPECT_FALSE(ReleaseMutex(mutex.handle.get())) << "the thread owned the mutex twice";
}

/// Initialises the object with another name. After a failure, the object still has the old mutex or none, and can be
/// initialised again.
void initializeAgain(Attempt& attempt) {
    const ExistingMutex first;
    const ExistingMutex second;
    AutoMutex object(first.name.c_str(), false, false);
    bool result = false;
    attempt.perform([&] { result = object.initialize(second.name.c_str(), false); });
    attempt.expectCompletedOrMemoryException();
    EXPECT_EQ(result, attempt.completed());
    EXPECT_TRUE(object.initialize(second.name.c_str(), false));
    EXPECT_TRUE(object.tryLock());
    object.unlock();
}

void lockAndUnlock(Attempt& attempt) {
    const ExistingMutex mutex;
    AutoMutex object(mutex.name.c_str(), false, false);
    attempt.perform([&] {
        object.lock(1000, true);
        object.tryLock();
        object.unlock();
        object.unlock();
    });
    attempt.expectCompleted();
    EXPECT_EQ(attempt.requests(), 0u);
}

// ---- Waits that time out ----

DWORD timingOutThread = 0;
decltype(&::WaitForSingleObject) realWait = nullptr;

/// Replaces `WaitForSingleObject`. All waits of the test's thread time out. Other threads (of the runtime and of
/// GoogleTest) wait as usual.
DWORD WINAPI timesOut(HANDLE object, DWORD timeout) {
    return GetCurrentThreadId() == timingOutThread ? WAIT_TIMEOUT : realWait(object, timeout);
}

/// Runs a call whose waits time out.
template <class Call>
bool withTimeout(Call&& call) {
    timingOutThread = GetCurrentThreadId();
    realWait = importedWaitForSingleObject;
    const test::ImportPatch noWait(importedWaitForSingleObject, &timesOut);
    return call();
}

bool lockWithTimeout(AutoMutex& object, unsigned int timeout, bool throwOnFailure, BaseString<wchar_t>* errorText) {
    return withTimeout([&] { return object.lock(timeout, throwOnFailure, errorText); });
}

std::wstring timedOut(const std::wstring& name) {
    return L"Failed to lock mutex " + name + L": Timed out";
}

/// Expects the exception about the timeout, or a `MemoryException` if memory for the text of that exception could not
/// be allocated.
void lockThatThrows(Attempt& attempt) {
    const ExistingMutex mutex;
    AutoMutex object(mutex.name.c_str(), false, false);
    attempt.perform([&] { lockWithTimeout(object, 10, true, nullptr); });
    const std::wstring record = L"AutoMutex::lock" + kRethrown;
    if (attempt.thrown() == typeid(vorel::MemoryException).name()) {
        attempt.expectMemoryException({{16, 2}}, {record});
    } else {
        attempt.expectThrown(typeid(vorel::Exception).name(), {L"AutoMutex::lock: " + timedOut(mutex.name), record});
    }
}

BOOL WINAPI failRelease(HANDLE) {
    SetLastError(ERROR_NOT_OWNER);
    return FALSE;
}

/// The system refuses to release the mutex. Whichever allocation fails, the object still owns the mutex after the
/// failed call, and can release it later.
void unlockThatFails(Attempt& attempt) {
    const ExistingMutex mutex;
    AutoMutex object(mutex.name.c_str(), true, false);
    {
        const test::ImportPatch release(importedReleaseMutex, &failRelease);
        attempt.perform([&] { object.unlock(); });
    }
    EXPECT_FALSE(attempt.completed());
    const std::wstring record = L"AutoMutex::unlock" + kRethrown;
    if (attempt.thrown() == typeid(vorel::MemoryException).name()) {
        // The message about missing memory is not compared, because it depends on the length of the system's text.
        EXPECT_EQ(attempt.logged().back(), "Vorel Error: " + test::utf8(record));
    } else {
        attempt.expectThrown(
            typeid(vorel::Exception).name(),
            {L"AutoMutex::unlock: Failed to release mutex " + mutex.name + L": " + test::systemText(ERROR_NOT_OWNER),
             record});
    }
    object.unlock();
    EXPECT_TRUE(test::isFreeForOthers(object));
}

void lockWithErrorText(Attempt& attempt) {
    const ExistingMutex mutex;
    AutoMutex object(mutex.name.c_str(), false, false);
    BaseString<wchar_t> text;
    bool result = true;
    attempt.perform([&] { result = lockWithTimeout(object, 0, false, &text); });
    attempt.expectCompletedOrMemoryException();
    if (attempt.completed()) {
        EXPECT_FALSE(result);
        EXPECT_EQ(text.view(), timedOut(mutex.name));
    } else {
        EXPECT_TRUE(text.empty());
    }
}

void lockThatWarns(Attempt& attempt) {
    const ExistingMutex mutex;
    AutoMutex object(mutex.name.c_str(), false, false);
    bool result = true;
    attempt.perform([&] { result = lockWithTimeout(object, 10, false, nullptr); });
    attempt.expectCompletedOrMemoryException();
    if (attempt.completed()) {
        const heap::Unwatched unwatched;
        EXPECT_FALSE(result);
        EXPECT_EQ(attempt.logged(),
                  std::vector<std::string>{"WARN: AutoMutex::lock: " + test::utf8(timedOut(mutex.name))});
    }
}

/// If the timeout is 0 and the caller requests neither an exception nor an error text, a failed lock is not reported,
/// and no memory is allocated.
void lockSilently(Attempt& attempt) {
    const ExistingMutex mutex;
    AutoMutex object(mutex.name.c_str(), false, false);
    bool result = true;
    attempt.perform([&] {
        result = lockWithTimeout(object, 0, false, nullptr);
        result = withTimeout([&] { return object.tryLock(); }) || result;
    });
    attempt.expectCompleted();
    EXPECT_FALSE(result);
    EXPECT_EQ(attempt.requests(), 0u);
}

void lockWithoutMutex(Attempt& attempt) {
    AutoMutex object(nullptr, false, false);
    attempt.perform([&] { object.lock(10, false); });
    attempt.expectThrown(typeid(vorel::Exception).name(),
                         {L"AutoMutex::lock: Mutex not initialized", L"AutoMutex::lock" + kRethrown});
}

void initializeWithoutName(Attempt& attempt) {
    AutoMutex object(nullptr, false, false);
    attempt.perform([&] { object.initialize(nullptr, false); });
    attempt.expectThrown(typeid(vorel::Exception).name(),
                         {L"AutoMutex::initialize: Name required for mutex", L"AutoMutex::initialize" + kRethrown});
}

void constructNamedCondition(Attempt& attempt) {
    const std::wstring name = test::NamedEvent::uniqueName(L"failing_heap_condition");
    {
        std::optional<NamedCondition> object;
        attempt.perform([&] { object.emplace(name.c_str()); });
        attempt.expectMemoryException({{64, 2}}, {L"NamedCondition::createCondition" + kRethrown});
        EXPECT_EQ(object.has_value(), attempt.completed());
    }
    EXPECT_FALSE(Handle(OpenEventW(SYNCHRONIZE, FALSE, name.c_str()))) << "the event is still open";
}

/// The conversion of a narrow name may fail, too.
void constructNamedConditionOfNarrowName(Attempt& attempt) {
    const std::wstring name = test::NamedEvent::uniqueName(L"failing_heap_condition");
    const std::string narrow = test::narrowed(name);
    {
        std::optional<NamedCondition> object;
        attempt.perform([&] { object.emplace(narrow.c_str()); });
        EXPECT_EQ(object.has_value(), attempt.completed());
        EXPECT_EQ(attempt.thrown(), attempt.completed() ? "" : typeid(vorel::MemoryException).name());
        EXPECT_GE(attempt.requests(), attempt.completed() ? 3u : 1u)
            << "requests for the name, for its wide form, and for the name in the object";
    }
    EXPECT_FALSE(Handle(OpenEventW(SYNCHRONIZE, FALSE, name.c_str()))) << "the event is still open";
}

/// The name belongs to an object of another kind. The failure is reported, whichever memory request fails.
void constructNamedConditionOfNameInUse(Attempt& attempt) {
    const ExistingMutex mutex;
    const std::wstring name = L"Global\\" + mutex.name;
    attempt.perform([&] { const NamedCondition object(name.c_str()); });
    EXPECT_FALSE(attempt.completed());
    const heap::Unwatched unwatched;
    const bool isMemory = attempt.thrown() == typeid(vorel::MemoryException).name();
    EXPECT_TRUE(attempt.thrown() == typeid(vorel::Exception).name() || (attempt.allocationFailed() && isMemory))
        << attempt.thrown();
    ASSERT_GE(attempt.logged().size(), 2u);
    EXPECT_EQ(attempt.logged().back(), "Vorel Error: NamedCondition::createCondition: Vorel exception rethrown");
    const std::string& line = attempt.logged()[attempt.logged().size() - 2];
    EXPECT_TRUE(line.starts_with(isMemory ? "Vorel Error: No more memory is available: "
                                          : "Vorel Error: Failed to create condition '" + test::utf8(name) + "': "))
        << line;
}

void signalAndWait(Attempt& attempt) {
    vorel::ForcedCriticalSection lock;
    vorel::Condition condition(lock);
    NamedCondition named(test::NamedEvent::uniqueName(L"failing_heap_condition").c_str());
    int released = 0;
    attempt.perform([&] {
        const vorel::Guard held(lock);
        condition.signal();
        condition.broadcast();
        released += condition.wait(1000) ? 1 : 0;
        named.signal();
        released += named.wait(1000) ? 1 : 0;
    });
    attempt.expectCompleted();
    EXPECT_EQ(attempt.requests(), 0u);
    EXPECT_EQ(released, 2);
}

const std::vector<Operation>& operations() {
    static const std::vector<Operation> kOperations = {
        {"AutoMutex_Named", construct<false>},
        {"AutoMutex_Locked", construct<true>},
        {"Initialize_Again", initializeAgain},
        {"LockAndUnlock", lockAndUnlock},
        {"Lock_ThatThrows", lockThatThrows},
        {"Lock_WithErrorText", lockWithErrorText},
        {"Lock_ThatWarns", lockThatWarns},
        {"Lock_Silent", lockSilently},
        {"Unlock_ThatFails", unlockThatFails},
        {"Lock_WithoutMutex", lockWithoutMutex},
        {"Initialize_WithoutName", initializeWithoutName},
        {"NamedCondition", constructNamedCondition},
        {"NamedCondition_OfNarrowName", constructNamedConditionOfNarrowName},
        {"NamedCondition_OfNameInUse", constructNamedConditionOfNameInUse},
        {"SignalAndWait", signalAndWait},
    };
    return kOperations;
}

INSTANTIATE_TEST_SUITE_P(Locks, FailingHeap, underBothFailures(operations()), failingHeapName);

}  // namespace
