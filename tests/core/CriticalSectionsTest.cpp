#include "vorel/core/CriticalSections.h"

#include <chrono>
#include <cstring>
#include <future>
#include <type_traits>
#include <utility>

#include <gtest/gtest.h>

#include <windows.h>

#include "core/ThreadSafetySwitch.h"
#include "vorel/core/ThreadSafety.h"

namespace {

using test::isFreeForOthers;
using test::onAnotherThread;
using vorel::AutoCriticalSection;
using vorel::EnableThreadSafety;
using vorel::ForcedCriticalSection;
using vorel::NoLock;

constexpr std::chrono::seconds kGenerous{60};

static_assert(sizeof(AutoCriticalSection) == sizeof(void*) && std::is_standard_layout_v<AutoCriticalSection>);
static_assert(sizeof(ForcedCriticalSection) == sizeof(void*) && std::is_standard_layout_v<ForcedCriticalSection>);
static_assert(std::is_empty_v<NoLock>);
static_assert(!std::is_copy_constructible_v<AutoCriticalSection> && !std::is_copy_assignable_v<AutoCriticalSection>);
static_assert(!std::is_copy_constructible_v<ForcedCriticalSection>);

CRITICAL_SECTION* sectionOf(const auto& lock) {
    return static_cast<CRITICAL_SECTION*>(lock.getHandle());
}

/// The rules of both kinds of critical section while thread safety is on (`EnableThreadSafety`).
template <class Lock>
class CriticalSection : public ::testing::Test {};

using Sections = ::testing::Types<AutoCriticalSection, ForcedCriticalSection>;
TYPED_TEST_SUITE(CriticalSection, Sections);

TYPED_TEST(CriticalSection, Lock_ExcludesOtherThreadsUntilUnlock) {
    TypeParam lock;
    EXPECT_TRUE(isFreeForOthers(lock));
    EXPECT_TRUE(lock.lock(60000, true));
    EXPECT_FALSE(isFreeForOthers(lock));
    lock.unlock();
    EXPECT_TRUE(isFreeForOthers(lock));
}

TYPED_TEST(CriticalSection, Lock_WithTimeoutZeroTriesOnce) {
    TypeParam lock;
    EXPECT_TRUE(lock.lock(0, true));
    EXPECT_FALSE(onAnotherThread([&] { return lock.lock(0, true); }));
    EXPECT_FALSE(onAnotherThread([&] { return lock.lock(0, false); }));
    lock.unlock();
    EXPECT_TRUE(isFreeForOthers(lock));
}

TYPED_TEST(CriticalSection, Lock_IsRecursive) {
    TypeParam lock;
    EXPECT_TRUE(lock.lock(1, false));
    EXPECT_TRUE(lock.tryLock());
    EXPECT_TRUE(lock.lock(0, false));
    lock.unlock();
    lock.unlock();
    EXPECT_FALSE(isFreeForOthers(lock));
    lock.unlock();
    EXPECT_TRUE(isFreeForOthers(lock));
}

TYPED_TEST(CriticalSection, Lock_WithANonzeroTimeoutWaitsForever) {
    for (const unsigned int timeoutMs : {1u, 5u, 60000u}) {
        TypeParam lock;
        ASSERT_TRUE(lock.lock(timeoutMs, true));
        std::promise<void> started;
        std::future<bool> waiter = std::async(std::launch::async, [&] {
            started.set_value();
            const bool taken = lock.lock(timeoutMs, true);
            if (taken) {
                lock.unlock();
            }
            return taken;
        });
        started.get_future().wait();
        // The thread still waits, although a timeout of 1 or 5 ms ended long ago.
        EXPECT_EQ(waiter.wait_for(std::chrono::milliseconds(60)), std::future_status::timeout);
        lock.unlock();
        ASSERT_EQ(waiter.wait_for(kGenerous), std::future_status::ready);
        EXPECT_TRUE(waiter.get());
    }
}

TYPED_TEST(CriticalSection, GetHandle_ReturnsTheCriticalSectionOfTheSystem) {
    TypeParam lock;
    const TypeParam other;
    ASSERT_NE(lock.getHandle(), nullptr);
    EXPECT_NE(lock.getHandle(), other.getHandle());
    EnterCriticalSection(sectionOf(lock));
    EXPECT_FALSE(isFreeForOthers(lock));
    LeaveCriticalSection(sectionOf(lock));
    lock.lock(1, true);
    EXPECT_FALSE(onAnotherThread([&] { return TryEnterCriticalSection(sectionOf(lock)) != 0; }));
    lock.unlock();
}

/// Sets the handle of a lock to null, as in a partly constructed or destroyed lock. `~WithoutHandle` restores it.
template <class Lock>
class WithoutHandle {
public:
    explicit WithoutHandle(Lock& lock) : m_lock(lock), m_handle(lock.getHandle()) { setHandle(nullptr); }
    ~WithoutHandle() { setHandle(m_handle); }

    WithoutHandle(const WithoutHandle&) = delete;
    WithoutHandle& operator=(const WithoutHandle&) = delete;

private:
    void setHandle(void* handle) { std::memcpy(static_cast<void*>(&m_lock), &handle, sizeof handle); }

    Lock& m_lock;
    void* m_handle;
};

TYPED_TEST(CriticalSection, Lock_WithoutAHandleSucceedsAndLocksNothing) {
    TypeParam lock;
    {
        const WithoutHandle<TypeParam> taken(lock);
        EXPECT_EQ(lock.getHandle(), nullptr);
        EXPECT_TRUE(lock.lock(60000, true));
        EXPECT_TRUE(lock.lock(0, false));
        EXPECT_TRUE(lock.tryLock());
        EXPECT_TRUE(onAnotherThread([&] { return lock.tryLock(); }));
        lock.unlock();
    }
    EXPECT_TRUE(isFreeForOthers(lock));
}

TYPED_TEST(CriticalSection, Destructor_ClearsTheHandle) {
    alignas(TypeParam) unsigned char memory[sizeof(TypeParam)];
    auto* const lock = new (memory) TypeParam;
    EXPECT_NE(lock->getHandle(), nullptr);
    lock->~TypeParam();
    void* handle = memory;
    std::memcpy(&handle, memory, sizeof handle);
    EXPECT_EQ(handle, nullptr) << "a late use of a static lock must lock nothing";
}

TYPED_TEST(CriticalSection, Lock_ProtectsSharedData) {
    TypeParam lock;
    long counter = 0;
    const auto work = [&] {
        for (int round = 0; round < 20000; ++round) {
            lock.lock(60000, true);
            ++counter;
            lock.unlock();
        }
        return true;
    };
    std::future<bool> other = std::async(std::launch::async, work);
    work();
    EXPECT_TRUE(other.get());
    EXPECT_EQ(counter, 40000);
}

// ---- The switch -----------------------------------------------------------------------------------------------------

TEST(AutoCriticalSection, ThreadSafetyOff_TwoThreadsMayHoldTheLock) {
    const test::ThreadSafetySwitch restored;
    EnableThreadSafety(false);
    AutoCriticalSection lock;
    EXPECT_TRUE(lock.lock(60000, true));
    EXPECT_TRUE(lock.lock(0, false));
    EXPECT_TRUE(lock.tryLock());
    EXPECT_TRUE(onAnotherThread([&] { return lock.lock(60000, true) && lock.lock(0, true) && lock.tryLock(); }));
    lock.unlock();
    // None of these calls entered the critical section of the system.
    EXPECT_TRUE(onAnotherThread([&] {
        const bool entered = TryEnterCriticalSection(sectionOf(lock)) != 0;
        LeaveCriticalSection(sectionOf(lock));
        return entered;
    }));
}

TEST(AutoCriticalSection, ThreadSafetyOffTwice_TurningItOnOnceLocksAgain) {
    const test::ThreadSafetySwitch restored;
    EnableThreadSafety(false);
    EnableThreadSafety(false);
    EnableThreadSafety(true);
    AutoCriticalSection lock;
    lock.lock(1, true);
    EXPECT_FALSE(isFreeForOthers(lock));
    lock.unlock();
}

TEST(AutoCriticalSection, ThreadSafetyOffWhileHeld_UnlockDoesNotLeaveTheSection) {
    const test::ThreadSafetySwitch restored;
    AutoCriticalSection lock;
    lock.lock(1, true);
    EnableThreadSafety(false);
    lock.unlock();
    EnableThreadSafety(true);
    EXPECT_FALSE(isFreeForOthers(lock));
    lock.unlock();
    EXPECT_TRUE(isFreeForOthers(lock));
}

TEST(ForcedCriticalSection, IgnoresTheThreadSafetySwitch) {
    const test::ThreadSafetySwitch restored;
    EnableThreadSafety(false);
    ForcedCriticalSection lock;
    EXPECT_TRUE(lock.lock(60000, true));
    EXPECT_FALSE(isFreeForOthers(lock));
    lock.unlock();
    EXPECT_TRUE(isFreeForOthers(lock));
}

/// Gives the tests access to the two protected functions that ignore the switch.
struct OpenCriticalSection : AutoCriticalSection {
    using AutoCriticalSection::lockImpl;
    using AutoCriticalSection::unlockImpl;
};

TEST(AutoCriticalSection, LockImplAndUnlockImpl_IgnoreTheThreadSafetySwitch) {
    const test::ThreadSafetySwitch restored;
    OpenCriticalSection lock;
    EnableThreadSafety(false);
    EXPECT_TRUE(lock.lockImpl(60000, true));
    EXPECT_FALSE(onAnotherThread([&] { return lock.lockImpl(0, false); }));
    EXPECT_TRUE(lock.lockImpl(0, false));
    lock.unlockImpl();
    lock.unlockImpl();
    EXPECT_TRUE(onAnotherThread([&] {
        const bool taken = lock.lockImpl(0, false);
        lock.unlockImpl();
        return taken;
    }));
}

TEST(NoLock, NeverLocks) {
    NoLock lock;
    EXPECT_TRUE(lock.lock(0, false));
    EXPECT_TRUE(lock.lock(60000, true));
    EXPECT_TRUE(lock.tryLock());
    EXPECT_TRUE(isFreeForOthers(lock));
    lock.unlock();
    lock.unlock();
}

TEST(NoLock, HasNoHandle) {
    const NoLock lock;
    static_assert(noexcept(lock.getHandle()));
    EXPECT_EQ(lock.getHandle(), static_cast<void*>(nullptr));
}

}  // namespace
