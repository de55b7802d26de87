/// \file
/// The named mutex: its layout, the order of its steps, and its behaviour while it records an owner that has exited.

#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include <gmock/gmock.h>

#include <windows.h>

#include "core/ThreadSafetySwitch.h"
#include "support/Expect.h"
#include "support/ImportHook.h"
#include "support/SystemText.h"
#include "support/TemporaryLog.h"
#include "support/WideText.h"
#include "sync/ObjectNames.h"
#include "whitebox/AutoMutexMembers.h"

namespace {

using test::call;
using test::expectThrows;
using test::ImportHook;
using test::isFreeForOthers;
using test::onAnotherThread;
using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using vorel::AutoMutex;
using vorel::Exception;

const std::wstring kRethrown = L": Vorel exception rethrown";

/// Locks the mutex `holds` times on a thread that exits without unlocking it. Returns the id of that thread.
unsigned long abandon(AutoMutex& mutex, int holds) {
    return onAnotherThread([&mutex, holds] {
        for (int held = 0; held != holds; ++held) {
            mutex.lock(1000, true);
        }
        return GetCurrentThreadId();
    });
}

std::string ownerText(long long owner) {
    if (owner == 0) {
        return " of none";
    }
    return owner == static_cast<long long>(GetCurrentThreadId()) ? " of the caller" : " of another";
}

class AutoMutexSteps : public testing::Test {
public:
    // The destructor of the member `m_mutex` is not noexcept. Without `noexcept` here, this destructor would not be
    // noexcept either, and could not override the destructor of `testing::Test`.
    ~AutoMutexSteps() noexcept override = default;

protected:
    [[nodiscard]] std::wstring nameOfMutex() const { return std::wstring((m_mutex.*reveal(test::Name())).view()); }
    [[nodiscard]] bool flagOfMutex() const { return m_mutex.*reveal(test::Flag()); }
    [[nodiscard]] void* bookkeeping() const { return (m_mutex.*reveal(test::Bookkeeping())).getHandle(); }

    const test::TemporaryLog m_log;
    const std::wstring m_name = test::uniqueName(L"mutex");
    const std::wstring m_otherName = m_name + L"_other";
    AutoMutex m_mutex{m_name.c_str(), false, false};
};

// ---- Layout ---------------------------------------------------------------------------------------------------------

TEST_F(AutoMutexSteps, FieldsAreAtFixedOffsets) {
    EXPECT_EQ(test::offsetOf(m_mutex, reveal(test::MutexHandle())), 8u) << "after the pointer to the virtual table";
    EXPECT_EQ(test::offsetOf(m_mutex, reveal(test::Name())), 16u);
    EXPECT_EQ(test::offsetOf(m_mutex, reveal(test::InitializeError())), 32u);
    EXPECT_EQ(test::offsetOf(m_mutex, reveal(test::Bookkeeping())), 48u);
    EXPECT_EQ(test::offsetOf(m_mutex, reveal(test::LockCount())), 56u);
    EXPECT_EQ(test::offsetOf(m_mutex, reveal(test::LockingThreadId())), 64u);
    EXPECT_EQ(test::offsetOf(m_mutex, reveal(test::Flag())), 72u);
    EXPECT_EQ(test::offsetOf(m_mutex, reveal(test::UseFcntlTimeout())), 73u);
}

/// A client's class that overrides every virtual function.
class OverridingMutex : public AutoMutex {
public:
    explicit OverridingMutex(std::vector<std::string>& calls) : AutoMutex(nullptr, false, false), m_calls(calls) {}
    ~OverridingMutex() noexcept(false) override { m_calls.emplace_back("destructor"); }

    OverridingMutex(const OverridingMutex&) = delete;
    OverridingMutex& operator=(const OverridingMutex&) = delete;

    bool initialize(const wchar_t* name, bool flag) override {
        m_calls.push_back("initialize " + test::narrowed(name) + (flag ? " true" : " false"));
        return false;
    }

private:
    std::vector<std::string>& m_calls;
};

static_assert(std::has_virtual_destructor_v<AutoMutex>);

TEST(AutoMutexVirtual, InitializeAndDestructorAreVirtual) {
    std::vector<std::string> calls;
    {
        const std::unique_ptr<AutoMutex> mutex = std::make_unique<OverridingMutex>(calls);
        EXPECT_FALSE(mutex->initialize(L"name", true));
    }
    EXPECT_THAT(calls, ElementsAre("initialize name true", "destructor"));
}

// ---- Initialising with another name ---------------------------------------------------------------------------------

TEST_F(AutoMutexSteps, InitializeDoesNotChangeNameAndFlagIfTheMutexCannotBeClosed) {
    {
        const ImportHook<importedCloseHandle> close([&](HANDLE handle) {
            close.original(handle);
            return FALSE;
        });
        expectThrows<Exception>([&] { m_mutex.initialize(m_otherName.c_str(), true); },
                                {L"AutoMutex::terminate: Error closing mutex " + m_name + L".",
                                 L"AutoMutex::terminate" + kRethrown, L"AutoMutex::initialize" + kRethrown});
    }
    EXPECT_EQ(nameOfMutex(), m_name);
    EXPECT_FALSE(flagOfMutex());
    EXPECT_FALSE(m_mutex.*reveal(test::MutexHandle()));
    EXPECT_FALSE(test::mutexExists(L"Global\\" + m_otherName));

    EXPECT_TRUE(m_mutex.initialize(m_otherName.c_str(), true)) << "nothing is left to close";
    EXPECT_EQ(nameOfMutex(), m_otherName);
    EXPECT_TRUE(flagOfMutex());
}

TEST_F(AutoMutexSteps, InitializeChangesNothingIfTheAbandonedMutexCannotBeLocked) {
    abandon(m_mutex, 1);
    {
        const ImportHook<importedWaitForSingleObject> wait([](HANDLE, DWORD) { return DWORD{WAIT_TIMEOUT}; });
        expectThrows<Exception>([&] { m_mutex.initialize(m_otherName.c_str(), true); },
                                {L"AutoMutex::lock: Failed to lock mutex " + m_name + L": Timed out",
                                 L"AutoMutex::terminate" + kRethrown, L"AutoMutex::initialize" + kRethrown});
    }
    EXPECT_EQ(nameOfMutex(), m_name);
    EXPECT_FALSE(flagOfMutex());
    EXPECT_EQ(call<test::GetLockCount>(m_mutex), 1);
    EXPECT_FALSE(test::mutexExists(L"Global\\" + m_otherName));
    EXPECT_TRUE(m_mutex.initialize(m_name.c_str(), true));
    EXPECT_FALSE(flagOfMutex()) << "the mutex already has this name, so the flag is not stored";

    EXPECT_TRUE(m_mutex.initialize(m_otherName.c_str(), true));
    EXPECT_EQ(nameOfMutex(), m_otherName);
    EXPECT_TRUE(flagOfMutex());
}

// ---- Locking --------------------------------------------------------------------------------------------------------

TEST_F(AutoMutexSteps, NameOfAnyLengthIsPrefixedWithTheGlobalNamespace) {
    std::wstring created;
    bool isOnStack = false;
    const ImportHook<importedCreateMutexW> create(
        [&](LPSECURITY_ATTRIBUTES attributes, BOOL isOwned, const wchar_t* name) {
            created = name;
            ULONG_PTR low = 0;
            ULONG_PTR high = 0;
            GetCurrentThreadStackLimits(&low, &high);
            const auto address = reinterpret_cast<ULONG_PTR>(name);
            isOnStack = address >= low && address < high;
            return create.original(attributes, isOwned, L"Global\\vorel_any_length");
        });
    for (const std::size_t length : {0u, 1u, 252u, 253u, 254u, 255u, 260u, 261u, 1000u, 40000u}) {
        const std::wstring name(length, L'n');
        const AutoMutex mutex(name.c_str(), false, false);
        EXPECT_EQ(created, L"Global\\" + name);
        EXPECT_EQ(isOnStack, length <= 253) << length;
    }
}

TEST_F(AutoMutexSteps, NameThatGrowsDuringTheCallIsTruncated) {
    std::wstring created;
    const ImportHook<importedCreateMutexW> create(
        [&](LPSECURITY_ATTRIBUTES attributes, BOOL isOwned, const wchar_t* name) {
            created = name;
            return create.original(attributes, isOwned, L"Global\\vorel_growing");
        });
    for (const std::size_t length : {0u, 10u, 253u}) {
        std::wstring name(length, L'n');
        name += std::wstring(L"\0more", 5);
        const ImportHook<importedWcslen> grow([&](const wchar_t* text) {
            const std::size_t units = grow.original(text);
            if (text == name.data()) {
                name[length] = L'x';
            }
            return units;
        });
        const AutoMutex mutex(name.c_str(), false, false);
        EXPECT_EQ(created, L"Global\\" + std::wstring(length, L'n'));
    }
}

TEST_F(AutoMutexSteps, TimeoutIsPassedToTheSystemUnchanged) {
    std::vector<DWORD> waitsMs;
    {
        const ImportHook<importedWaitForSingleObject> wait([&](HANDLE mutex, DWORD milliseconds) {
            waitsMs.push_back(milliseconds);
            return wait.original(mutex, 0);
        });
        for (const unsigned int timeoutMs : {0u, 1u, 60001u, 0xFFFFFFFEu, 0xFFFFFFFFu}) {
            EXPECT_TRUE(m_mutex.lock(timeoutMs, true));
        }
    }
    EXPECT_THAT(waitsMs, ElementsAre(0u, 1u, 60001u, 0xFFFFFFFEu, INFINITE));
}

TEST_F(AutoMutexSteps, ErrorTextIsSetBeforeTheWarningIsLogged) {
    vorel::BaseString<wchar_t> errorText(L"as before");
    std::vector<std::wstring> atTheWarning;
    {
        const ImportHook<importedWaitForSingleObject> wait([](HANDLE, DWORD) { return DWORD{WAIT_TIMEOUT}; });
        const ImportHook<importedLockFileEx> lockLog([&](auto... arguments) {
            atTheWarning.emplace_back(errorText.view());
            return lockLog.original(arguments...);
        });
        EXPECT_FALSE(m_mutex.lock(5, false, &errorText));
    }
    EXPECT_THAT(atTheWarning, AllOf(Not(IsEmpty()), Each(L"Failed to lock mutex " + m_name + L": Timed out")));
    EXPECT_THAT(m_log.messages(),
                ElementsAre("WARN: AutoMutex::lock: Failed to lock mutex " + test::narrowed(m_name) + ": Timed out"));
}

TEST_F(AutoMutexSteps, ExitedOwnerIsClearedUnderTheBookkeepingLock) {
    abandon(m_mutex, 2);
    const int& count = m_mutex.*reveal(test::LockCount());
    const long long& owner = m_mutex.*reveal(test::LockingThreadId());
    std::vector<std::string> trace;
    const auto note = [&](const char* step, const void* section) {
        if (section == bookkeeping()) {
            trace.push_back(step + std::to_string(count) + ownerText(owner));
        }
    };
    {
        const ImportHook<importedEnterCriticalSection> enter([&](CRITICAL_SECTION* section) {
            enter.original(section);
            note("enter ", section);
        });
        const ImportHook<importedLeaveCriticalSection> leave([&](CRITICAL_SECTION* section) {
            note("leave ", section);
            leave.original(section);
        });
        m_mutex.lock(1000, true);
    }
    EXPECT_THAT(trace, ElementsAre("enter 2 of another", "leave 0 of none",       // clears the old owner
                                   "enter 0 of none", "leave 1 of the caller"));  // counts the new hold
}

TEST_F(AutoMutexSteps, StandardExceptionWhileCountingBecomesASevereError) {
    const ImportHook<importedEnterCriticalSection> enter([&](CRITICAL_SECTION* section) {
        if (section == bookkeeping()) {
            throw std::runtime_error("not of the library");
        }
        enter.original(section);
    });
    for (const bool increment : {true, false}) {
        expectThrows<Exception>([&] { call<test::SetLockCount>(m_mutex, increment); },
                                {L"AutoMutex::SetLockCount: Severe error thrown"});
    }
    expectThrows<Exception>([&] { m_mutex.lock(0, true); },
                            {L"AutoMutex::SetLockCount: Severe error thrown", L"AutoMutex::lock" + kRethrown});
}

// ---- Destructor -----------------------------------------------------------------------------------------------------

TEST_F(AutoMutexSteps, FailureOfTheDestructorIsSuppressedDuringUnwinding) {
    {
        const ImportHook<importedCloseHandle> close([&](HANDLE handle) {
            close.original(handle);
            return FALSE;
        });
        const auto throwWhileOneIsAlive = [this] {
            const AutoMutex mutex(m_otherName.c_str(), false, false);
            throw std::runtime_error("first failure");
        };
        EXPECT_THROW(throwWhileOneIsAlive(), std::runtime_error);
    }
    EXPECT_THAT(m_log.messages(), ElementsAre("Vorel Error: AutoMutex::terminate: Error closing mutex " +
                                                  test::narrowed(m_otherName) + ".",
                                              "Vorel Error: AutoMutex::terminate: Vorel exception rethrown",
                                              "Vorel Error: AutoMutex::~AutoMutex: Vorel exception suppressed"));
}

// ---- An exited owner that was reported to another object ------------------------------------------------------------

/// The owner that `m_stale` records is a thread that exited while it held the mutex. The system reports this only once,
/// to the next thread that locks the mutex. The constructor locks the mutex through `m_other`, another object for the
/// same mutex, so `m_stale` does not get the report.
class AutoMutexWithAStaleOwner : public AutoMutexSteps {
public:
    ~AutoMutexWithAStaleOwner() noexcept override {
        if (m_stale) {
            (*m_stale).*reveal(test::LockCount()) = 0;  // otherwise the destructor throws
        }
    }

protected:
    AutoMutexWithAStaleOwner() {
        m_other.lock(1000, true);
        m_other.unlock();
        EXPECT_EQ(call<test::GetLockCount>(m_other), 0);
    }

    /// The messages of the exception that `operation` throws if the thread that ended is still recorded as the owner.
    [[nodiscard]] std::vector<std::wstring> messagesOfFailure(const std::wstring& operation) const {
        return {L"Mutex " + m_name +
                    L": Trying to increment lock count from a thread that does not own the mutex.  Current owner = " +
                    std::to_wstring(m_exitedThread) + L", my threadID = " + std::to_wstring(GetCurrentThreadId()) +
                    L", current lock count = 1",
                L"AutoMutex::SetLockCount" + kRethrown, L"AutoMutex::" + operation + kRethrown};
    }

    AutoMutex m_other{m_name.c_str(), false, false};
    std::unique_ptr<AutoMutex> m_stale = std::make_unique<AutoMutex>(m_name.c_str(), false, false);
    const unsigned long m_exitedThread = abandon(*m_stale, 1);
};

TEST_F(AutoMutexWithAStaleOwner, EveryLockFailsAndReleasesTheMutex) {
    for (int round = 0; round != 3; ++round) {
        expectThrows<Exception>([&] { m_stale->lock(1000, false); }, messagesOfFailure(L"lock"));
        expectThrows<Exception>([&] { m_stale->tryLock(); }, messagesOfFailure(L"tryLock"));
        m_stale->unlock();  // does nothing, because this thread is not the recorded owner
        EXPECT_EQ(call<test::GetLockCount>(*m_stale), 1);
        EXPECT_EQ(call<test::GetLockingThreadID>(*m_stale), static_cast<long long>(m_exitedThread));
        EXPECT_TRUE(isFreeForOthers(m_other));
    }
}

TEST_F(AutoMutexWithAStaleOwner, InitializeFailsAndTheDestructorThrowsButClosesTheHandle) {
    std::vector<std::wstring> messages = messagesOfFailure(L"terminate");
    messages.push_back(L"AutoMutex::initialize" + kRethrown);
    expectThrows<Exception>([&] { m_stale->initialize(m_otherName.c_str(), false); }, messages);

    messages.back() = L"AutoMutex::~AutoMutex" + kRethrown;
    // NOLINTNEXTLINE(readability-uniqueptr-delete-release): `reset` is noexcept, but the destructor throws
    expectThrows<Exception>([&] { delete m_stale.release(); }, messages);
    EXPECT_TRUE(isFreeForOthers(m_other));
    call<test::Terminate>(m_other);
    call<test::Terminate>(m_mutex);
    EXPECT_FALSE(test::mutexExists(L"Global\\" + m_name)) << "every handle must be closed";
}

TEST_F(AutoMutexWithAStaleOwner, ThreadWithTheIdOfTheExitedOwnerIsTreatedAsTheOwner) {
    // Simulates that the system has reused the id of the exited thread for this thread.
    (*m_stale).*reveal(test::LockingThreadId()) = GetCurrentThreadId();
    const std::wstring notReleased =
        L"AutoMutex::unlock: Failed to release mutex " + m_name + L": " + test::systemText(ERROR_NOT_OWNER);
    for (int round = 0; round != 2; ++round) {
        expectThrows<Exception>([&] { m_stale->unlock(); }, {notReleased, L"AutoMutex::unlock" + kRethrown});
        EXPECT_EQ(call<test::GetLockCount>(*m_stale), 1);

        EXPECT_TRUE(m_stale->lock(1000, true));
        EXPECT_EQ(call<test::GetLockCount>(*m_stale), 2) << "the hold of the exited thread is still counted";
        EXPECT_FALSE(isFreeForOthers(m_other));
        m_stale->unlock();
        EXPECT_TRUE(isFreeForOthers(m_other));
    }
    expectThrows<Exception>([&] { call<test::Terminate>(*m_stale); },
                            {notReleased, L"AutoMutex::unlock" + kRethrown, L"AutoMutex::terminate" + kRethrown});
}

TEST_F(AutoMutexWithAStaleOwner, LaterReportOfAnExitedOwnerClearsTheStaleOwner) {
    onAnotherThread([this] {
        const test::Handle mutex(OpenMutexW(SYNCHRONIZE, FALSE, (L"Global\\" + m_name).c_str()));
        return WaitForSingleObject(mutex.get(), test::kGenerousMs);
    });
    EXPECT_TRUE(m_stale->lock(1000, true));
    EXPECT_EQ(call<test::GetLockCount>(*m_stale), 1);
    EXPECT_EQ(call<test::GetLockingThreadID>(*m_stale), static_cast<long long>(GetCurrentThreadId()));
    m_stale->unlock();
}

}  // namespace
