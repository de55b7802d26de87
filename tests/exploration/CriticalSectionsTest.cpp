/// \file
/// The locks within a process, their guards, and the thread-safety switch.

#include <functional>
#include <string>

#include "exploration/SystemScenario.h"
#include "vorel/core/CriticalSections.h"
#include "vorel/core/Guard.h"
#include "vorel/core/ThreadSafety.h"

namespace {

using exploration::Ending;
using exploration::require;
using exploration::SystemScenario;
using vorel::Guard;
using vorel::UnGuard;

/// Tasks that lock a critical section in different ways.
template <class Lock>
class Guards final : public SystemScenario {
public:
    explicit Guards(unsigned int tasks) : m_tasks(tasks) {}

private:
    void start() override {
        m_lock.create();
        task("guard", 1, [this] {
            const Guard held(*m_lock);
            use();
            {
                const UnGuard left(*m_lock);
                exploration::schedulingPoint();
            }
            use();
        });
        task("recursive guard", 1, [this] {
            const Guard held(*m_lock);
            const Guard again(*m_lock);
            use();
        });
        if (m_tasks == 3) {
            task("try", 1, [this] {
                if (m_lock->tryLock()) {
                    use();
                    m_lock->unlock();
                }
            });
        }
    }

    void use() {
        require(!m_isUsed, "two tasks hold the lock");
        m_isUsed = true;
        exploration::schedulingPoint();
        m_isUsed = false;
    }

    void check(const std::vector<Ending>& endings) override {
        for (const Ending ending : endings) {
            require(ending == Ending::Finished, "a task is blocked");
        }
        require(machine().heldSections() == 0, "a lock stays held");
        m_lock.destroy();
    }

    exploration::ProcessObject<Lock> m_lock;
    unsigned int m_tasks;
    bool m_isUsed = false;
};

/// A task disables and enables thread safety while other tasks use an AutoCriticalSection. Programs must not do this.
/// The test counts the schedules with each kind of failure. A schedule may have several kinds of failures.
class SwitchDuringUse final : public SystemScenario {
public:
    struct Counts {
        unsigned long long stuck = 0;        ///< the lock stays held, or a task stays blocked
        unsigned long long unprotected = 0;  ///< two tasks are in the locked section at the same time
        unsigned long long misused = 0;      ///< a task releases a lock that it does not own
        unsigned long long harmless = 0;     ///< without any of these failures
    };

    explicit SwitchDuringUse(Counts& counts) : m_counts(counts) {}

private:
    void start() override {
        machine().countMisuse();
        m_lock.create();
        for (const char* const name : {"first", "second"}) {
            task(name, 1, [this] {
                const Guard held(*m_lock);
                m_wasUnprotected |= m_inside++ != 0;
                exploration::schedulingPoint();
                --m_inside;
            });
        }
        task("switch", 1, [] {
            vorel::EnableThreadSafety(false);
            exploration::schedulingPoint();
            vorel::EnableThreadSafety(true);
        });
    }

    void check(const std::vector<Ending>& endings) override {
        vorel::ThreadSafetyEnabledCount = 1;
        const bool isStuck = machine().heldSections() != 0 || endings != std::vector(endings.size(), Ending::Finished);
        m_counts.stuck += isStuck ? 1u : 0u;
        m_counts.unprotected += m_wasUnprotected ? 1u : 0u;
        m_counts.misused += machine().misuses() != 0 ? 1u : 0u;
        m_counts.harmless += isStuck || m_wasUnprotected || machine().misuses() != 0 ? 0u : 1u;
    }

    Counts& m_counts;
    exploration::ProcessObject<vorel::AutoCriticalSection> m_lock;
    int m_inside = 0;
    bool m_wasUnprotected = false;
};

class CriticalSectionsExploration : public exploration::ExplorationTest {};

TEST_F(CriticalSectionsExploration, GuardsExcludeEachOther) {
    explores<Guards<vorel::ForcedCriticalSection>>({}, 2u);
    explores<Guards<vorel::AutoCriticalSection>>({}, 2u);
    explores<Guards<vorel::ForcedCriticalSection>>({.preemptions = 3}, 3u);
    explores<Guards<vorel::AutoCriticalSection>>({.preemptions = 3}, 3u);
}

TEST_F(CriticalSectionsExploration, ChangingThreadSafetyDuringUseBreaksLocks) {
    SwitchDuringUse::Counts counts;
    explores<SwitchDuringUse>({.preemptions = 2}, std::ref(counts));
    EXPECT_NE(counts.stuck, 0u);
    EXPECT_NE(counts.unprotected, 0u);
    EXPECT_NE(counts.misused, 0u);
    EXPECT_NE(counts.harmless, 0u);
}

}  // namespace
