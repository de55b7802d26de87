/// \file
/// `Condition`: waiting, signalling and broadcasting. Scenarios with many schedules have a limit on preemptions.

#include <functional>
#include <memory>
#include <string>

#include "exploration/SystemScenario.h"
#include "support/PrivateMember.h"
#include "vorel/sync/Condition.h"

namespace test {

struct Waiters : PrivateMember<Waiters, volatile long vorel::Condition::*> {};
template struct Reveal<Waiters, &vorel::Condition::m_waiters>;

}  // namespace test

namespace {

using exploration::Ending;
using exploration::require;
using exploration::SystemScenario;
using vorel::Condition;
using vorel::ForcedCriticalSection;

constexpr unsigned int kTimeoutMs = 60000;

/// Waiters that increment `m_began` under the lock and then wait. Derived scenarios add a task that signals or
/// broadcasts.
class ConditionScenario : public SystemScenario {
protected:
    void start() override {
        m_lock.create();
        m_condition.create(*m_lock);
    }

    void addWaiter(const char* name, int timeoutMs) {
        task(name, 1, [this, timeoutMs] {
            m_lock->lock(kTimeoutMs, true);
            ++m_began;
            const bool isSignalled = m_condition->wait(timeoutMs);
            require(machine().holds(m_lock->getHandle()), "wait returned without the lock");
            ++(isSignalled ? m_signalled : m_timedOut);
            m_lock->unlock();
        });
    }

    /// Returns when `count` waiters have called `wait`, and these calls have released the lock.
    void untilBegan(int count) {
        await([this, count] { return m_began >= count; });
        m_lock->lock(kTimeoutMs, true);
        m_lock->unlock();
    }

    /// Destroys the condition, as its owner would after the last use. Checks that no handle is open and no lock is
    /// held.
    void destroy() {
        m_condition.destroy();
        require(machine().handleCount() == 0, "a handle stays open");
        require(machine().heldSections() == 0, "a lock stays held");
        m_lock.destroy();
    }

    exploration::ProcessObject<ForcedCriticalSection> m_lock;
    exploration::ProcessObject<Condition> m_condition;
    int m_began = 0;
    int m_signalled = 0;
    int m_timedOut = 0;
};

/// If all waiters have begun to wait, one signal releases exactly one waiter.
class OneSignal final : public ConditionScenario {
public:
    explicit OneSignal(int waiters) : m_waiters(waiters) {}

private:
    void start() override {
        ConditionScenario::start();
        for (int waiter = 0; waiter < m_waiters; ++waiter) {
            addWaiter(waiter == 0 ? "first" : "second", -1);
        }
        task("signaller", 1, [this] {
            untilBegan(m_waiters);
            m_condition->signal();
        });
    }

    void check(const std::vector<Ending>& endings) override {
        require(m_signalled == 1, "a signal released " + std::to_string(m_signalled) + " waiters");
        require(endings.back() == Ending::Finished, "the signaller is blocked");
        if (m_waiters == 1) {
            destroy();
        }
    }

    int m_waiters;
};

/// One signal for each waiter releases all waiters, if each signal is sent after the previous waiter has returned.
class SignalEach final : public ConditionScenario {
    void start() override {
        ConditionScenario::start();
        addWaiter("first", -1);
        addWaiter("second", -1);
        task("signaller", 1, [this] {
            untilBegan(2);
            m_condition->signal();
            await([this] { return m_signalled == 1; });
            m_condition->signal();
        });
    }

    void check(const std::vector<Ending>&) override {
        require(m_signalled == 2, "a waiter is not released");
        destroy();
    }
};

/// A signal after the release of a waiter is kept, even if that waiter has not returned yet.
class SignalAfterRelease final : public ConditionScenario {
    void start() override {
        ConditionScenario::start();
        addWaiter("waiter", -1);
        task("signaller", 1, [this] {
            untilBegan(1);
            m_condition->signal();
            await([this] { return machine().givenCount() == 1; });
            m_condition->signal();
        });
    }

    void check(const std::vector<Ending>&) override {
        require(m_signalled == 1, "the waiter is not released");
        m_lock->lock(kTimeoutMs, true);
        require(m_condition->wait(0), "the second signal is lost");
        m_lock->unlock();
        destroy();
    }
};

/// If no thread waits, two signals count as one: they release the next waiter only.
class SignalBeforeWait final : public ConditionScenario {
    void start() override {
        ConditionScenario::start();
        task("signaller", 1, [this] {
            m_condition->signal();
            m_condition->signal();
            m_isSignalled = true;
        });
        for (const char* const name : {"first", "second"}) {
            task(name, 1, [this] {
                await([this] { return m_isSignalled; });
                m_lock->lock(kTimeoutMs, true);
                ++(m_condition->wait(10) ? m_signalled : m_timedOut);
                m_lock->unlock();
            });
        }
    }

    void check(const std::vector<Ending>&) override {
        require(m_signalled == 1 && m_timedOut == 1, "two signals without a waiter released " +
                                                         std::to_string(m_signalled) + " waiters, and " +
                                                         std::to_string(m_timedOut) + " timed out");
        destroy();
    }

    bool m_isSignalled = false;
};

/// A waiter with a time limit, and a signal that may come too late. The signal is never lost.
class SignalOrTimeout final : public ConditionScenario {
    void start() override {
        ConditionScenario::start();
        addWaiter("waiter", 50);
        task("signaller", 1, [this] { m_condition->signal(); });
    }

    void check(const std::vector<Ending>&) override {
        require(m_signalled + m_timedOut == 1, "the waiter is blocked");
        if (m_timedOut == 1) {
            m_lock->lock(kTimeoutMs, true);
            require(m_condition->wait(0), "the late signal is lost");
            m_lock->unlock();
        }
        destroy();
    }
};

/// A broadcast releases every thread that is counted as a waiter, and then ends. It may miss a thread whose call of
/// `wait` has released the lock but has not counted the thread yet. This gap is documented, and `missed` counts the
/// schedules in which it occurs. If `holdsLock`, the broadcaster holds the lock during the broadcast.
class Broadcast final : public ConditionScenario {
public:
    Broadcast(int waiters, bool holdsLock, unsigned long long& missed)
        : m_waiters(waiters), m_holdsLock(holdsLock), m_missed(missed) {}

private:
    void start() override {
        ConditionScenario::start();
        for (int waiter = 0; waiter < m_waiters; ++waiter) {
            addWaiter(waiter == 0 ? "first" : "second", -1);
        }
        task("broadcaster", 1, [this] {
            untilBegan(m_waiters);
            if (m_holdsLock) {
                m_lock->lock(kTimeoutMs, true);
            }
            m_waiting = (*m_condition).*reveal(test::Waiters());
            m_condition->broadcast();
            if (m_holdsLock) {
                m_lock->unlock();
            }
            m_isBroadcast = true;
        });
    }

    void check(const std::vector<Ending>&) override {
        require(m_isBroadcast, "the broadcast does not end");
        require(m_signalled >= m_waiting, "a thread that was counted as a waiter is not released");
        if (m_signalled < m_waiters) {
            ++m_missed;
        } else {
            destroy();
        }
    }

    int m_waiters;
    bool m_holdsLock;
    unsigned long long& m_missed;
    long m_waiting = 0;
    bool m_isBroadcast = false;
};

/// A broadcast to waiters that may time out. All waiters return, and the broadcast ends.
class BroadcastOrTimeout final : public ConditionScenario {
    void start() override {
        ConditionScenario::start();
        addWaiter("first", 50);
        addWaiter("second", 20);
        task("broadcaster", 1, [this] { m_condition->broadcast(); });
    }

    void check(const std::vector<Ending>& endings) override {
        for (const Ending ending : endings) {
            require(ending == Ending::Finished, "a task is blocked");
        }
        destroy();
    }
};

class ConditionExploration : public exploration::ExplorationTest {};

TEST_F(ConditionExploration, ASignalReleasesTheOnlyWaiter) {
    explores<OneSignal>({}, 1);
}

TEST_F(ConditionExploration, ASignalReleasesOneOfTwoWaiters) {
    explores<OneSignal>({.preemptions = 2}, 2);
}

TEST_F(ConditionExploration, ASecondSignalReleasesTheSecondWaiterAfterTheFirstHasReturned) {
    explores<SignalEach>({.preemptions = 2});
}

TEST_F(ConditionExploration, ASignalAfterTheReleaseOfAWaiterIsKept) {
    explores<SignalAfterRelease>({.preemptions = 3});
}

TEST_F(ConditionExploration, SignalsBeforeTheWaitsReleaseOnlyOneWaiter) {
    explores<SignalBeforeWait>({.preemptions = 2});
}

TEST_F(ConditionExploration, ASignalAfterATimeoutIsNotLost) {
    explores<SignalOrTimeout>({});
}

TEST_F(ConditionExploration, EveryWaiterReturnsAfterABroadcastOrATimeout) {
    explores<BroadcastOrTimeout>({.preemptions = 2});
}

TEST_F(ConditionExploration, ABroadcastReleasesAllCountedWaiters) {
    for (const int waiters : {1, 2}) {
        for (const bool holdsLock : {false, true}) {
            unsigned long long missed = 0;
            // Without the lock, the broadcast can happen after both threads increment the number of waiters and before
            // either of them waits for the event. Such a schedule needs three preemptions.
            const unsigned int preemptions = waiters == 2 && !holdsLock ? 3U : 2U;
            explores<Broadcast>({.preemptions = preemptions}, waiters, holdsLock, std::ref(missed));
            EXPECT_NE(missed, 0u) << "the documented gap is not reached, so the scenario is too small";
        }
    }
}

}  // namespace
