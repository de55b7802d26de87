#include "vorel/sync/Condition.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <future>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "core/ThreadSafetySwitch.h"
#include "support/NamedEvent.h"
#include "vorel/core/Guard.h"

namespace {

using test::isFreeForOthers;
using vorel::Condition;
using vorel::ForcedCriticalSection;
using Held = vorel::Guard<ForcedCriticalSection>;

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr int kGenerousMs = static_cast<int>(test::kGenerousMs);
constexpr milliseconds kClockTick{16};  // the resolution of the system's clock

/// Threads that wait on a condition. When `start` returns, `wait` has released the lock in each of these threads.
class Waiters {
public:
    Waiters(ForcedCriticalSection& lock, Condition& condition) : m_lock(lock), m_condition(condition) {}

    void start(int count, int timeoutMs) {
        std::atomic<int> entered{0};
        for (int waiter = 0; waiter != count; ++waiter) {
            m_results.push_back(std::async(std::launch::async, [this, timeoutMs, &entered] {
                const Held held(m_lock);
                ++entered;
                return m_condition.wait(timeoutMs);
            }));
        }
        while (entered != count) {
            std::this_thread::yield();
        }
        const Held held(m_lock);  // possible only after the last waiter has released the lock
    }

    /// Waits for all threads, and returns the number of threads that were woken by a signal.
    int woken() {
        int count = 0;
        for (std::future<bool>& result : m_results) {
            count += result.get() ? 1 : 0;
        }
        m_results.clear();
        return count;
    }

    /// The number of threads that have returned so far.
    [[nodiscard]] std::ptrdiff_t done() const {
        return std::count_if(m_results.begin(), m_results.end(), [](const std::future<bool>& result) {
            return result.wait_for(milliseconds(0)) == std::future_status::ready;
        });
    }

private:
    ForcedCriticalSection& m_lock;
    Condition& m_condition;
    std::vector<std::future<bool>> m_results;
};

class ConditionTest : public testing::Test {
public:
    // The destructor of the member `m_condition` may throw. So the implicit destructor would not be noexcept, but the
    // base class requires a destructor that is noexcept.
    ~ConditionTest() noexcept override = default;

protected:
    /// Calls `wait` with the lock held, and expects that the thread holds the lock again after the call.
    bool waitHoldingTheLock(int timeoutMs) {
        const Held held(m_lock);
        const bool signalled = m_condition.wait(timeoutMs);
        EXPECT_FALSE(isFreeForOthers(m_lock));
        return signalled;
    }

    ForcedCriticalSection m_lock;
    Condition m_condition{m_lock};
    Waiters m_waiters{m_lock, m_condition};
};

TEST_F(ConditionTest, SignalsWithoutAWaiterReleaseOneWaiter) {
    m_condition.signal();
    m_condition.signal();
    EXPECT_TRUE(waitHoldingTheLock(0));
    EXPECT_FALSE(waitHoldingTheLock(0));
}

TEST_F(ConditionTest, WaitTimesOut) {
    const Clock::time_point start = Clock::now();
    EXPECT_FALSE(waitHoldingTheLock(100));
    const auto waited = Clock::now() - start;
    EXPECT_GE(waited + kClockTick, milliseconds(100));
    EXPECT_LT(waited, milliseconds(5000));
    EXPECT_TRUE(isFreeForOthers(m_lock));
}

TEST_F(ConditionTest, WaitReleasesTheLockAndASignalWakesOneWaiter) {
    m_waiters.start(2, kGenerousMs);  // returns after both waiting threads have released the lock
    m_condition.signal();
    while (m_waiters.done() != 1) {
        std::this_thread::yield();
    }
    m_condition.signal();
    EXPECT_EQ(m_waiters.woken(), 2);
    EXPECT_FALSE(waitHoldingTheLock(0)) << "no signal may be left";
}

TEST_F(ConditionTest, OneSignalWakesOneOfTwoWaiters) {
    m_waiters.start(2, 300);
    m_condition.signal();
    EXPECT_EQ(m_waiters.woken(), 1);
}

TEST_F(ConditionTest, MinusOneWaitsForever) {
    m_waiters.start(1, -1);
    EXPECT_EQ(m_waiters.done(), 0);
    m_condition.signal();
    EXPECT_EQ(m_waiters.woken(), 1);
}

TEST_F(ConditionTest, SignalMayBeCalledWithTheLockHeld) {
    m_waiters.start(1, kGenerousMs);
    {
        const Held held(m_lock);
        m_condition.signal();
        EXPECT_EQ(m_waiters.done(), 0) << "the waiter needs the lock to return";
    }
    EXPECT_EQ(m_waiters.woken(), 1);
}

TEST_F(ConditionTest, WaitReleasesTheLockOnlyOnceIfTheCallerHoldsItTwice) {
    // If the caller holds the lock twice, other threads cannot acquire the lock while the caller waits.
    const Held once(m_lock);
    const Held twice(m_lock);
    std::future<bool> free = std::async(std::launch::async, [this] { return isFreeForOthers(m_lock); });
    EXPECT_FALSE(m_condition.wait(50));
    EXPECT_FALSE(free.get());
}

TEST_F(ConditionTest, BroadcastWithoutWaitersLeavesNoSignal) {
    m_condition.broadcast();
    EXPECT_FALSE(waitHoldingTheLock(0));
}

TEST_F(ConditionTest, BroadcastWakesWaitersTenMillisecondsApart) {
    m_waiters.start(3, kGenerousMs);
    // `wait` counts its thread as a waiter only after it has released the lock. A broadcast between these two steps
    // does not wake the thread, so the test repeats the broadcast.
    const Clock::time_point start = Clock::now();
    while (m_waiters.done() != 3 && Clock::now() - start < milliseconds(kGenerousMs)) {
        m_condition.broadcast();
        std::this_thread::yield();
    }
    EXPECT_GE(Clock::now() - start + kClockTick, milliseconds(30));
    EXPECT_EQ(m_waiters.woken(), 3);
}

TEST_F(ConditionTest, BroadcastReturnsIfItsWaitersTimeOut) {
    for (int round = 0; round != 5; ++round) {
        m_waiters.start(3, 1 + round * 10);
        m_condition.broadcast();  // must return, no matter whether the signal or the timeout comes first
        (void)m_waiters.woken();
        (void)waitHoldingTheLock(0);  // consumes a signal that the broadcast may leave
        EXPECT_FALSE(waitHoldingTheLock(0));
    }
}

}  // namespace
