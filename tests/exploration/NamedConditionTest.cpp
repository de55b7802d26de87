/// \file
/// `NamedCondition` in two or three processes.

#include <functional>
#include <string>

#include "exploration/SystemScenario.h"
#include "vorel/sync/NamedCondition.h"

namespace {

using exploration::Ending;
using exploration::require;
using exploration::SystemScenario;
using vorel::NamedCondition;

constexpr const wchar_t* kName = L"explored";

/// A signaller and waiters. Each waiter waits once.
class SignalAndWait final : public SystemScenario {
public:
    SignalAndWait(unsigned int waiters, int timeoutMs) : m_waiters(waiters), m_timeoutMs(timeoutMs) {}

private:
    void start() override {
        task("signaller", 1, [this] {
            NamedCondition condition(kName);
            // A signal is kept only while a process has the condition open.
            await([this] { return m_open == m_waiters; });
            condition.signal();
            await([this] { return m_returned != 0; });
        });
        for (unsigned int waiter = 0; waiter < m_waiters; ++waiter) {
            task(waiter == 0 ? "first" : "second", 2 + waiter, [this] {
                NamedCondition condition(kName);
                ++m_open;
                m_signalled += condition.wait(m_timeoutMs) ? 1u : 0u;
                ++m_returned;
            });
        }
    }

    void check(const std::vector<Ending>& endings) override {
        if (m_timeoutMs == -1) {
            require(m_signalled == 1, "a signal released " + std::to_string(m_signalled) + " waiters");
        } else {
            require(m_signalled <= 1, "a signal released two waiters");
            require(endings == std::vector(endings.size(), Ending::Finished), "a task is blocked");
        }
    }

    unsigned int m_waiters;
    int m_timeoutMs;
    unsigned int m_open = 0;
    unsigned int m_returned = 0;
    unsigned int m_signalled = 0;
};

/// A waiter that is killed at any call. If the killed waiter did not receive the signal, the main task receives it.
class KilledWaiter final : public SystemScenario {
public:
    explicit KilledWaiter(unsigned long long& kills) : m_kills(kills) {}

private:
    void start() override {
        task("waiter", 2, [] {
            NamedCondition condition(kName);
            condition.wait(-1);
        });
        task("main", 1, [this] {
            NamedCondition condition(kName);
            condition.signal();
            await([this] { return m_hasEnded; });
            m_isKept = condition.wait(0);
        });
    }

    void processEnded(exploration::ProcessId process) override { m_hasEnded |= process == 2; }

    void check(const std::vector<Ending>& endings) override {
        if (endings[0] != Ending::Killed || endings[1] != Ending::Finished) {
            return;
        }
        ++m_kills;
        require(m_isKept || machine().givenCount() == 1, "the signal is lost");
    }

    unsigned long long& m_kills;
    bool m_hasEnded = false;
    bool m_isKept = false;
};

class NamedConditionExploration : public exploration::ExplorationTest {};

TEST_F(NamedConditionExploration, ASignalReleasesOneProcess) {
    explores<SignalAndWait>({.preemptions = 3}, 1u, -1);
    explores<SignalAndWait>({.preemptions = 2}, 2u, -1);
}

TEST_F(NamedConditionExploration, ASignalReleasesAtMostOneWaiterWithATimeLimit) {
    explores<SignalAndWait>({.preemptions = 2}, 2u, 100);
}

TEST_F(NamedConditionExploration, ASignalThatAKilledWaiterDidNotReceiveIsKept) {
    unsigned long long kills = 0;
    explores<KilledWaiter>({.preemptions = 2, .kills = 1}, std::ref(kills));
    EXPECT_NE(kills, 0u);
}

}  // namespace
