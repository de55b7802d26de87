#include "vorel/core/Guard.h"

#include <cstring>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/ThreadSafetySwitch.h"
#include "support/Expect.h"
#include "support/TemporaryLog.h"
#include "support/WideText.h"
#include "vorel/core/CriticalSections.h"
#include "vorel/exceptions/ExceptionFamily.h"

namespace {

using test::expectThrows;
using test::isFreeForOthers;
using ::testing::ElementsAre;
using vorel::AutoCriticalSection;
using vorel::Exception;
using vorel::ForcedCriticalSection;
using vorel::Guard;
using vorel::NoLock;
using vorel::UnGuard;

static_assert(sizeof(Guard<NoLock>) == 16 && std::is_standard_layout_v<Guard<NoLock>>);
static_assert(sizeof(UnGuard<NoLock>) == 16 && std::is_standard_layout_v<UnGuard<NoLock>>);
static_assert(!std::is_copy_constructible_v<Guard<NoLock>> && !std::is_copy_assignable_v<Guard<NoLock>>);
static_assert(!std::is_copy_constructible_v<UnGuard<NoLock>> && !std::is_copy_assignable_v<UnGuard<NoLock>>);
static_assert(!std::is_convertible_v<NoLock&, Guard<NoLock>>, "taking a lock must be explicit");
static_assert(!std::is_nothrow_destructible_v<Guard<NoLock>> && !std::is_nothrow_destructible_v<UnGuard<NoLock>>);

// ---- With real locks ------------------------------------------------------------------------------------------------

template <class Lock>
class GuardOf : public ::testing::Test {};

using Sections = ::testing::Types<AutoCriticalSection, ForcedCriticalSection>;
TYPED_TEST_SUITE(GuardOf, Sections);

TYPED_TEST(GuardOf, HoldsTheLockUntilTheEndOfItsBlock) {
    TypeParam lock;
    {
        const Guard<TypeParam> held(lock);
        EXPECT_FALSE(isFreeForOthers(lock));
        { const Guard<TypeParam> again(lock); }
        EXPECT_FALSE(isFreeForOthers(lock));
    }
    EXPECT_TRUE(isFreeForOthers(lock));
}

TYPED_TEST(GuardOf, UnGuard_ReleasesTheLockUntilTheEndOfItsBlock) {
    TypeParam lock;
    {
        const Guard<TypeParam> held(lock);
        {
            const UnGuard<TypeParam> left(lock);
            EXPECT_TRUE(isFreeForOthers(lock));
        }
        EXPECT_FALSE(isFreeForOthers(lock));
    }
    EXPECT_TRUE(isFreeForOthers(lock));
}

TYPED_TEST(GuardOf, ReleasesTheLockDuringUnwinding) {
    TypeParam lock;
    try {
        const Guard<TypeParam> held(lock);
        throw std::runtime_error("passing");
    } catch (const std::runtime_error&) {
        EXPECT_TRUE(isFreeForOthers(lock));
    }
}

TEST(GuardOfNoLock, DoesNothing) {
    NoLock lock;
    const Guard<NoLock> held(lock);
    const UnGuard<NoLock> left(lock);
    EXPECT_TRUE(isFreeForOthers(lock));
}

TEST(GuardOfAutoCriticalSection, ThreadSafetyOffInsideTheBlock_DoesNotReleaseTheLock) {
    const test::ThreadSafetySwitch restored;
    AutoCriticalSection lock;
    {
        const Guard<AutoCriticalSection> held(lock);
        vorel::EnableThreadSafety(false);
    }
    vorel::EnableThreadSafety(true);
    EXPECT_FALSE(isFreeForOthers(lock));
    lock.unlock();
}

// ---- Calls ----------------------------------------------------------------------------------------------------------

/// A lock that records its calls and fails on request.
class RecordingLock {
public:
    bool lock(unsigned int timeout, bool flag) {
        calls.push_back("lock " + std::to_string(timeout) + (flag ? " true" : " false"));
        failIfRequested(onLock);
        return grants;
    }
    void unlock() {
        calls.emplace_back("unlock");
        failIfRequested(onUnlock);
    }

    enum class Failure { None, OfTheLibrary, Other };

    Failure onLock = Failure::None;
    Failure onUnlock = Failure::None;
    bool grants = true;
    std::vector<std::string> calls;

private:
    static void failIfRequested(Failure failure) {
        if (failure == Failure::OfTheLibrary) {
            throw vorel::TimeoutException();
        }
        if (failure == Failure::Other) {
            throw std::runtime_error("not of the library");
        }
    }
};

using Failure = RecordingLock::Failure;

TEST(GuardCalls, LockInTheConstructorAndUnlockInTheDestructor) {
    RecordingLock lock;
    {
        const Guard<RecordingLock> held(lock);
        EXPECT_THAT(lock.calls, ElementsAre("lock 60000 true"));
    }
    EXPECT_THAT(lock.calls, ElementsAre("lock 60000 true", "unlock"));
}

TEST(GuardCalls, FailedLockIsNotReleased) {
    RecordingLock lock;
    lock.grants = false;
    { const Guard<RecordingLock> held(lock); }
    EXPECT_THAT(lock.calls, ElementsAre("lock 60000 true"));
}

TEST(UnGuardCalls, UnlockInTheConstructorAndLockInTheDestructor) {
    RecordingLock lock;
    {
        const UnGuard<RecordingLock> left(lock);
        EXPECT_THAT(lock.calls, ElementsAre("unlock"));
    }
    EXPECT_THAT(lock.calls, ElementsAre("unlock", "lock 60000 true"));
}

/// Reads the flag that follows the pointer: whether the guard holds the lock.
bool isHeldBy(const auto& guard) {
    bool held = false;
    std::memcpy(&held, reinterpret_cast<const char*>(&guard) + sizeof(void*), sizeof held);
    return held;
}

TEST(GuardCalls, GuardStoresWhetherItHoldsTheLock) {
    RecordingLock lock;
    EXPECT_TRUE(isHeldBy(Guard<RecordingLock>(lock)));
    EXPECT_FALSE(isHeldBy(UnGuard<RecordingLock>(lock)));
    lock.grants = false;
    EXPECT_FALSE(isHeldBy(Guard<RecordingLock>(lock)));
}

TEST(GuardCalls, FailureInTheConstructorIsThrownUnchanged) {
    RecordingLock lock;
    lock.onLock = Failure::OfTheLibrary;
    expectThrows<vorel::TimeoutException>([&] { const Guard<RecordingLock> held(lock); },
                                          {L"Operation has overrun its specified timeout limit."});
    EXPECT_THAT(lock.calls, ElementsAre("lock 60000 true"));
}

TEST(UnGuardCalls, FailureInTheConstructorIsThrownUnchanged) {
    RecordingLock lock;
    lock.onUnlock = Failure::OfTheLibrary;
    expectThrows<vorel::TimeoutException>([&] { const UnGuard<RecordingLock> left(lock); },
                                          {L"Operation has overrun its specified timeout limit."});
    EXPECT_THAT(lock.calls, ElementsAre("unlock"));
}

// ---- Failures at the end of the block -------------------------------------------------------------------------------

/// Leaves the block of a guard, normally or by an exception. At the end of the block, the guard unlocks or locks
/// `lock`, and this call fails as `failure` describes.
template <template <class> class Scope>
void leaveBlock(RecordingLock& lock, Failure failure, bool unwinding) {
    const Scope<RecordingLock> scope(lock);
    lock.onLock = failure;
    lock.onUnlock = failure;
    if (unwinding) {
        throw std::runtime_error("first failure");
    }
}

struct Names {
    static std::wstring wide(const char* name, const wchar_t* rest) {
        const std::wstring wideName = test::widened(name);
        return wideName + L"::~" + wideName + rest;
    }
    static std::string logged(const char* name, const char* rest) {
        return std::string("Vorel Error: ") + name + "::~" + name + rest;
    }
};

template <template <class> class Scope>
void expectEndOfBlockRules(const char* name) {
    {
        RecordingLock lock;
        expectThrows<vorel::TimeoutException>(
            [&] { leaveBlock<Scope>(lock, Failure::OfTheLibrary, false); },
            {L"Operation has overrun its specified timeout limit.", Names::wide(name, L": Vorel exception rethrown")});
        EXPECT_EQ(lock.calls.size(), 2u) << "the guard must not try again";
    }
    {
        RecordingLock lock;
        expectThrows<Exception>([&] { leaveBlock<Scope>(lock, Failure::Other, false); },
                                {Names::wide(name, L": Severe error thrown")});
        EXPECT_EQ(lock.calls.size(), 2u);
    }
    const test::TemporaryLog log;
    RecordingLock lock;
    EXPECT_THROW(leaveBlock<Scope>(lock, Failure::OfTheLibrary, true), std::runtime_error);
    lock.onLock = lock.onUnlock = Failure::None;
    EXPECT_THROW(leaveBlock<Scope>(lock, Failure::Other, true), std::runtime_error);
    EXPECT_THAT(log.messages(), ElementsAre("Vorel Error: Operation has overrun its specified timeout limit.",
                                            Names::logged(name, ": Vorel exception suppressed"),
                                            Names::logged(name, ": Severe error suppressed")));
}

TEST(GuardEnd, FailureIsRethrownButDuringUnwindingItIsSuppressed) {
    expectEndOfBlockRules<Guard>("Guard");
}

TEST(UnGuardEnd, FailureIsRethrownButDuringUnwindingItIsSuppressed) {
    expectEndOfBlockRules<UnGuard>("UnGuard");
}

TEST(GuardEnd, RethrownFailureIsLoggedWithTheRecordOfTheGuard) {
    const test::TemporaryLog log;
    RecordingLock lock;
    EXPECT_THROW(leaveBlock<Guard>(lock, Failure::OfTheLibrary, false), vorel::TimeoutException);
    EXPECT_THAT(log.messages(), ElementsAre("Vorel Error: Operation has overrun its specified timeout limit.",
                                            "Vorel Error: Guard::~Guard: Vorel exception rethrown"));
}

TEST(GuardEnd, FailureDuringUnwindingDoesNotReplaceThePendingException) {
    RecordingLock lock;
    expectThrows<vorel::BadParameterException>(
        [&] {
            const Guard<RecordingLock> held(lock);
            lock.onUnlock = Failure::OfTheLibrary;
            throw vorel::BadParameterException(L"mode", L"x");
        },
        {L"Parameter \"mode\" value \"x\" is unrecognized; perhaps your system components need updating?"});
}

}  // namespace
