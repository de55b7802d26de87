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
constexpr milliseconds kClockTick{16};  // the system's clock is no finer

/// Waiters on threads of their own. All of them have left the lock, on their way into the wait, when `start` returns.
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
        const Held held(m_lock);  // so the last one that entered has left it
    }

    /// How many were woken by a signal; waits for all.
    int woken() {
        int count = 0;
        for (std::future<bool>& result : m_results) {
            count += result.get() ? 1 : 0;
        }
        m_results.clear();
        return count;
    }

    /// How many have come back by now.
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
    ~ConditionTest() noexcept override = default;  // a condition's own may throw

protected:
    /// `wait` by a caller that holds the lock, and finds itself holding it again.
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

TEST_F(ConditionTest, ASignalWithoutAWaiterIsKeptForTheNextAndNoMoreThanOneIs) {
    m_condition.signal();
    m_condition.signal();
    EXPECT_TRUE(waitHoldingTheLock(0));
    EXPECT_FALSE(waitHoldingTheLock(0));
}

TEST_F(ConditionTest, WaitEndsWithItsTime) {
    const Clock::time_point start = Clock::now();
    EXPECT_FALSE(waitHoldingTheLock(100));
    const auto waited = Clock::now() - start;
    EXPECT_GE(waited + kClockTick, milliseconds(100));
    EXPECT_LT(waited, milliseconds(5000));
    EXPECT_TRUE(isFreeForOthers(m_lock));
}

TEST_F(ConditionTest, WaitLeavesTheLockAndASignalReleasesOneWaiter) {
    m_waiters.start(2, kGenerousMs);  // which takes the lock itself, while both wait
    m_condition.signal();
    while (m_waiters.done() != 1) {
        std::this_thread::yield();
    }
    m_condition.signal();
    EXPECT_EQ(m_waiters.woken(), 2);
    EXPECT_FALSE(waitHoldingTheLock(0)) << "each signal was used up";
}

TEST_F(ConditionTest, OneSignalWakesOneOfTwo) {
    m_waiters.start(2, 300);
    m_condition.signal();
    EXPECT_EQ(m_waiters.woken(), 1);
}

TEST_F(ConditionTest, MinusOneWaitsWithoutLimit) {
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
        EXPECT_EQ(m_waiters.done(), 0) << "the waiter needs the lock to come back";
    }
    EXPECT_EQ(m_waiters.woken(), 1);
}

TEST_F(ConditionTest, WaitGivesTheLockBackAsOftenAsItWasHeldLessOne) {
    // It leaves the lock once: a caller that holds it twice keeps others out while it waits.
    const Held once(m_lock);
    const Held twice(m_lock);
    std::future<bool> free = std::async(std::launch::async, [this] { return isFreeForOthers(m_lock); });
    EXPECT_FALSE(m_condition.wait(50));
    EXPECT_FALSE(free.get());
}

TEST_F(ConditionTest, BroadcastWithoutWaitersReturnsAtOnceAndLeavesNoSignal) {
    m_condition.broadcast();
    EXPECT_FALSE(waitHoldingTheLock(0));
}

TEST_F(ConditionTest, BroadcastReleasesEveryWaiterTenMillisecondsApart) {
    m_waiters.start(3, kGenerousMs);
    // A waiter counts a moment after it has left the lock; one that comes late is for the next round.
    const Clock::time_point start = Clock::now();
    while (m_waiters.done() != 3 && Clock::now() - start < milliseconds(kGenerousMs)) {
        m_condition.broadcast();
        std::this_thread::yield();
    }
    EXPECT_GE(Clock::now() - start + kClockTick, milliseconds(30));
    EXPECT_EQ(m_waiters.woken(), 3);
}

TEST_F(ConditionTest, BroadcastEndsWhenItsWaitersHaveTimedOut) {
    for (int round = 0; round != 5; ++round) {
        m_waiters.start(3, 1 + round * 10);
        m_condition.broadcast();  // ends, whichever of signal and end of the time comes first
        (void)m_waiters.woken();
        (void)waitHoldingTheLock(0);  // what may be left of the broadcast
        EXPECT_FALSE(waitHoldingTheLock(0));
    }
}

}  // namespace
