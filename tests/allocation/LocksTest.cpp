// Locks with a name under a failing heap: nothing is held that was not told, and a failure is told as what it is.

#include <optional>
#include <string>
#include <typeinfo>
#include <vector>

#include <windows.h>

#include "allocation/Walker.h"
#include "core/ThreadSafetySwitch.h"
#include "support/Handle.h"
#include "support/ImportPatch.h"
#include "support/NamedEvent.h"
#include "support/SystemText.h"
#include "vorel/core/Guard.h"
#include "vorel/exceptions/ExceptionFamily.h"
#include "vorel/sync/AutoMutex.h"
#include "vorel/sync/Condition.h"
#include "vorel/sync/NamedCondition.h"

extern "C" {
extern decltype(&::WaitForSingleObject) importedWait __asm__("__imp_WaitForSingleObject");
extern decltype(&::ReleaseMutex) importedRelease __asm__("__imp_ReleaseMutex");
}

namespace {

using test::Handle;
using vorel::AutoMutex;
using vorel::BaseString;
using vorel::NamedCondition;

const std::wstring kRethrown = L": Vorel exception rethrown";

/// A mutex of the system, and the name that a client gives it.
struct TakenMutex {
    TakenMutex() : name(test::NamedEvent::uniqueName(L"failing_heap_mutex")), handle(make(name)) {}

    static Handle make(const std::wstring& name) {
        return Handle(CreateMutexW(nullptr, FALSE, (L"Global\\" + name).c_str()));
    }

    std::wstring name;
    Handle handle;
};

template <bool LockNow>
void construct(Trial& trial) {
    const TakenMutex mutex;
    {
        std::optional<AutoMutex> object;
        trial.perform([&] { object.emplace(mutex.name.c_str(), LockNow, false); });
        EXPECT_EQ(object.has_value(), trial.completed());
        EXPECT_EQ(trial.completed(), !trial.refused());
        if (!trial.completed()) {
            ASSERT_GE(trial.logged().size(), 2u);
            EXPECT_EQ(trial.logged().back(), "Vorel Error: AutoMutex::AutoMutex(): Vorel exception rethrown");
        }
    }
    // Another thread could take it: nothing is held any more. This one could in any case, but would hold it twice.
    EXPECT_EQ(WaitForSingleObject(mutex.handle.get(), 0), WAIT_OBJECT_0);
    EXPECT_TRUE(ReleaseMutex(mutex.handle.get()));
    EXPECT_FALSE(ReleaseMutex(mutex.handle.get())) << "it was held already";
}

/// Under another name: without memory the object has the old mutex still, or none, and can be initialised again.
void initializeAnew(Trial& trial) {
    const TakenMutex first;
    const TakenMutex second;
    AutoMutex object(first.name.c_str(), false, false);
    bool result = false;
    trial.perform([&] { result = object.initialize(second.name.c_str(), false); });
    trial.expectMemoryOrDone();
    EXPECT_EQ(result, trial.completed());
    EXPECT_TRUE(object.initialize(second.name.c_str(), false));
    EXPECT_TRUE(object.tryLock());
    object.unlock();
}

void lockAndUnlock(Trial& trial) {
    const TakenMutex mutex;
    AutoMutex object(mutex.name.c_str(), false, false);
    trial.perform([&] {
        object.lock(1000, true);
        object.tryLock();
        object.unlock();
        object.unlock();
    });
    trial.expectCompleted();
    EXPECT_EQ(trial.requests(), 0u);
}

// ---- A wait that ends in vain ----

DWORD waitingInVain = 0;
decltype(&::WaitForSingleObject) realWait = nullptr;

/// Other threads, those of the runtime and of the tests' library, wait as ever.
DWORD WINAPI timesOut(HANDLE object, DWORD timeout) {
    return GetCurrentThreadId() == waitingInVain ? WAIT_TIMEOUT : realWait(object, timeout);
}

/// Runs a call whose waits end in vain.
template <class Call>
bool inVain(Call&& call) {
    waitingInVain = GetCurrentThreadId();
    realWait = importedWait;
    const test::ImportPatch noWait(importedWait, &timesOut);
    return call();
}

bool lockInVain(AutoMutex& object, unsigned int timeout, bool throwOnFailure, BaseString<wchar_t>* errorText) {
    return inVain([&] { return object.lock(timeout, throwOnFailure, errorText); });
}

std::wstring timedOut(const std::wstring& name) {
    return L"Failed to lock mutex " + name + L": Timed out";
}

/// The exception that was asked for, or the one for the memory of its reason.
void lockThatThrows(Trial& trial) {
    const TakenMutex mutex;
    AutoMutex object(mutex.name.c_str(), false, false);
    trial.perform([&] { lockInVain(object, 10, true, nullptr); });
    const std::wstring record = L"AutoMutex::lock" + kRethrown;
    if (trial.thrown() == typeid(vorel::MemoryException).name()) {
        trial.expectMemoryException({{16, 2}}, {record});
    } else {
        trial.expectThrown(typeid(vorel::Exception).name(), {L"AutoMutex::lock: " + timedOut(mutex.name), record});
    }
}

BOOL WINAPI refuseRelease(HANDLE) {
    SetLastError(ERROR_NOT_OWNER);
    return FALSE;
}

/// Whatever there is no memory for, the hold is there until it is given back.
void unlockThatFails(Trial& trial) {
    const TakenMutex mutex;
    AutoMutex object(mutex.name.c_str(), true, false);
    {
        const test::ImportPatch release(importedRelease, &refuseRelease);
        trial.perform([&] { object.unlock(); });
    }
    EXPECT_FALSE(trial.completed());
    const std::wstring record = L"AutoMutex::unlock" + kRethrown;
    if (trial.thrown() == typeid(vorel::MemoryException).name()) {
        // How much was asked for depends on the system's words.
        EXPECT_EQ(trial.logged().back(), "Vorel Error: " + test::utf8(record));
    } else {
        trial.expectThrown(typeid(vorel::Exception).name(), {L"AutoMutex::unlock: Failed to release mutex " +
                                                                 mutex.name + L": " + test::systemText(ERROR_NOT_OWNER),
                                                             record});
    }
    object.unlock();
    EXPECT_TRUE(test::isFreeForOthers(object));
}

void lockThatTells(Trial& trial) {
    const TakenMutex mutex;
    AutoMutex object(mutex.name.c_str(), false, false);
    BaseString<wchar_t> text;
    bool result = true;
    trial.perform([&] { result = lockInVain(object, 0, false, &text); });
    trial.expectMemoryOrDone();
    if (trial.completed()) {
        EXPECT_FALSE(result);
        EXPECT_EQ(text.view(), timedOut(mutex.name));
    } else {
        EXPECT_TRUE(text.empty());
    }
}

void lockThatWarns(Trial& trial) {
    const TakenMutex mutex;
    AutoMutex object(mutex.name.c_str(), false, false);
    bool result = true;
    trial.perform([&] { result = lockInVain(object, 10, false, nullptr); });
    trial.expectMemoryOrDone();
    if (trial.completed()) {
        const heap::Unwatched unwatched;
        EXPECT_FALSE(result);
        EXPECT_EQ(trial.logged(),
                  std::vector<std::string>{"WARN: AutoMutex::lock: " + test::utf8(timedOut(mutex.name))});
    }
}

/// A call that asks for no answer gets none, and asks for no memory.
void lockThatIsQuiet(Trial& trial) {
    const TakenMutex mutex;
    AutoMutex object(mutex.name.c_str(), false, false);
    bool result = true;
    trial.perform([&] {
        result = lockInVain(object, 0, false, nullptr);
        result = inVain([&] { return object.tryLock(); }) || result;
    });
    trial.expectCompleted();
    EXPECT_FALSE(result);
    EXPECT_EQ(trial.requests(), 0u);
}

void useWithoutAMutex(Trial& trial) {
    AutoMutex object(nullptr, false, false);
    trial.perform([&] { object.lock(10, false); });
    trial.expectThrown(typeid(vorel::Exception).name(),
                       {L"AutoMutex::lock: Mutex not initialized", L"AutoMutex::lock" + kRethrown});
}

void initializeWithoutAName(Trial& trial) {
    AutoMutex object(nullptr, false, false);
    trial.perform([&] { object.initialize(nullptr, false); });
    trial.expectThrown(typeid(vorel::Exception).name(),
                       {L"AutoMutex::initialize: Name required for mutex", L"AutoMutex::initialize" + kRethrown});
}

void constructNamedCondition(Trial& trial) {
    const std::wstring name = test::NamedEvent::uniqueName(L"failing_heap_condition");
    {
        std::optional<NamedCondition> object;
        trial.perform([&] { object.emplace(name.c_str()); });
        trial.expectMemoryException({{64, 2}}, {L"NamedCondition::createCondition" + kRethrown});
        EXPECT_EQ(object.has_value(), trial.completed());
    }
    EXPECT_FALSE(Handle(OpenEventW(SYNCHRONIZE, FALSE, name.c_str()))) << "the event is still open";
}

/// A name of another kind of object: the failure is told whatever was refused.
void constructNamedConditionOfATakenName(Trial& trial) {
    const TakenMutex mutex;
    const std::wstring name = L"Global\\" + mutex.name;
    trial.perform([&] { const NamedCondition object(name.c_str()); });
    EXPECT_FALSE(trial.completed());
    const heap::Unwatched unwatched;
    const bool isMemory = trial.thrown() == typeid(vorel::MemoryException).name();
    EXPECT_TRUE(trial.thrown() == typeid(vorel::Exception).name() || (trial.refused() && isMemory)) << trial.thrown();
    ASSERT_GE(trial.logged().size(), 2u);
    EXPECT_EQ(trial.logged().back(), "Vorel Error: NamedCondition::createCondition: Vorel exception rethrown");
    const std::string& told = trial.logged()[trial.logged().size() - 2];
    EXPECT_TRUE(told.starts_with(isMemory ? "Vorel Error: No more memory is available: "
                                          : "Vorel Error: Failed to create condition '" + test::utf8(name) + "': "))
        << told;
}

void signalAndWait(Trial& trial) {
    vorel::ForcedCriticalSection lock;
    vorel::Condition condition(lock);
    NamedCondition named(test::NamedEvent::uniqueName(L"failing_heap_condition").c_str());
    int released = 0;
    trial.perform([&] {
        const vorel::Guard held(lock);
        condition.signal();
        condition.broadcast();
        released += condition.wait(1000) ? 1 : 0;
        named.signal();
        released += named.wait(1000) ? 1 : 0;
    });
    trial.expectCompleted();
    EXPECT_EQ(trial.requests(), 0u);
    EXPECT_EQ(released, 2);
}

const std::vector<Operation>& operations() {
    static const std::vector<Operation> kOperations = {
        {"AutoMutex_Named", construct<false>},
        {"AutoMutex_Locked", construct<true>},
        {"Initialize_Anew", initializeAnew},
        {"LockAndUnlock", lockAndUnlock},
        {"Lock_ThatThrows", lockThatThrows},
        {"Lock_ThatTells", lockThatTells},
        {"Lock_ThatWarns", lockThatWarns},
        {"Lock_ThatIsQuiet", lockThatIsQuiet},
        {"Unlock_ThatFails", unlockThatFails},
        {"Lock_WithoutAMutex", useWithoutAMutex},
        {"Initialize_WithoutAName", initializeWithoutAName},
        {"NamedCondition", constructNamedCondition},
        {"NamedCondition_OfATakenName", constructNamedConditionOfATakenName},
        {"SignalAndWait", signalAndWait},
    };
    return kOperations;
}

INSTANTIATE_TEST_SUITE_P(Locks, FailingHeap, underBothFailures(operations()), failingHeapName);

}  // namespace
