/// \file
/// `AutoMutex`: threads of two processes, recursion, time limits, and a process that is killed at any call.

#include <chrono>
#include <functional>
#include <string>

#include "exploration/SystemScenario.h"
#include "vorel/exceptions/Exception.h"
#include "vorel/sync/AutoMutex.h"
#include "whitebox/AutoMutexMembers.h"

namespace {

using exploration::Ending;
using exploration::ProcessId;
using exploration::require;
using exploration::SystemScenario;
using vorel::AutoMutex;

constexpr unsigned int kTimeoutMs = 60000;
constexpr ProcessId kOtherProcess = 2;
constexpr const wchar_t* kName = L"explored";

int lockCount(const AutoMutex& mutex) {
    return mutex.*reveal(test::LockCount());
}

long long owner(const AutoMutex& mutex) {
    return mutex.*reveal(test::LockingThreadId());
}

/// Tasks that lock one mutex. Tasks that `addShared` adds belong to the main process and share an object. A task that
/// `addOther` adds belongs to the other process and has its own object.
class MutexScenario : public SystemScenario {
protected:
    struct Counts {
        unsigned long long abandoned = 0;
        unsigned long long timedOut = 0;
    };

    explicit MutexScenario(Counts& counts) : m_counts(counts) {}

    void start() override {
        machine().files().setScheduling(false);  // only the log uses files, and the log has its own scenarios
        m_shared.create(kName, false, false);
    }

    /// Locks the mutex `depth` times, checks that no other task holds it, and unlocks it `depth` times. If the first
    /// lock times out, only counts the timeout.
    void useMutex(AutoMutex& mutex, int depth) {
        for (int locked = 0; locked < depth; ++locked) {
            if (!mutex.lock(kTimeoutMs, false)) {
                require(locked == 0, "the owner cannot lock the mutex again");
                require(exploration::Scheduler::running()->now() >= kTimeoutMs, "lock failed before its time limit");
                ++m_counts.timedOut;
                return;
            }
        }
        const exploration::TaskId self = machine().task();
        require(m_inside == exploration::kNoTask, "two tasks hold the mutex");
        m_inside = self;
        exploration::schedulingPoint();
        require(m_inside == self, "two tasks hold the mutex");
        require(lockCount(mutex) == depth, "the lock count is " + std::to_string(lockCount(mutex)));
        require(owner(mutex) == static_cast<long long>(GetCurrentThreadId()),
                "another thread is recorded as the owner");
        for (int locked = 0; locked < depth; ++locked) {
            if (locked == depth - 1) {
                m_inside = exploration::kNoTask;
            }
            mutex.unlock();
        }
    }

    void addShared(const char* name, int depth = 1) {
        task(name, exploration::kMainProcess, [this, depth] { useMutex(*m_shared, depth); });
    }

    void addOther(const char* name) {
        task(name, kOtherProcess, [this] {
            AutoMutex own(kName, false, false);
            useMutex(own, 1);
        });
    }

    void processEnded(ProcessId process) override {
        if (m_inside != exploration::kNoTask && processOf(m_inside) == process) {
            m_inside = exploration::kNoTask;
        }
    }

    void check(const std::vector<Ending>& endings) override {
        for (const Ending ending : endings) {
            require(ending != Ending::Blocked, "a task is blocked");
        }
        require(warnings() == machine().abandonedWaits(), std::to_string(warnings()) + " warnings about " +
                                                              std::to_string(machine().abandonedWaits()) +
                                                              " abandoned mutexes");
        m_counts.abandoned += machine().abandonedWaits();
        if (endings.front() == Ending::Killed || (mayStayLocked() && lockCount(*m_shared) != 0)) {
            return;
        }
        require(lockCount(*m_shared) == 0, "the lock count stays above 0");
        require(owner(*m_shared) == 0, "an owner stays recorded after the last unlock");
        m_shared.destroy();
        require(machine().handleCount() == 0, "a handle stays open");
        require(machine().heldSections() == 0, "a lock stays held");
    }

    /// Whether a task may end without unlocking.
    [[nodiscard]] virtual bool mayStayLocked() const { return false; }

    AutoMutex& shared() { return *m_shared; }

private:
    /// The number of warnings in the log about an abandoned mutex.
    std::size_t warnings() {
        std::size_t count = 0;
        for (const std::string& path : machine().files().paths()) {
            const std::string text = *machine().files().contents(path);
            for (std::size_t at = 0; (at = text.find("WAIT_ABANDONED", at)) != std::string::npos; ++at) {
                ++count;
            }
        }
        return count;
    }

    Counts& m_counts;
    exploration::ProcessObject<AutoMutex> m_shared;
    exploration::TaskId m_inside = exploration::kNoTask;
};

class TwoProcesses final : public MutexScenario {
public:
    explicit TwoProcesses(Counts& counts) : MutexScenario(counts) {}

    using MutexScenario::Counts;

private:
    void start() override {
        MutexScenario::start();
        addShared("main");
        addOther("other");
    }
};

class ThreeThreads final : public MutexScenario {
public:
    explicit ThreeThreads(Counts& counts) : MutexScenario(counts) {}

    using MutexScenario::Counts;

private:
    void start() override {
        MutexScenario::start();
        addShared("main");
        addShared("recursive", 2);
        addOther("other");
    }
};

/// Two tasks of one process that lock one mutex through different objects.
class TwoObjects final : public MutexScenario {
public:
    explicit TwoObjects(Counts& counts) : MutexScenario(counts) {}

    using MutexScenario::Counts;

private:
    void start() override {
        MutexScenario::start();
        addShared("first object");
        task("second object", exploration::kMainProcess, [this] {
            AutoMutex second(kName, false, false);
            useMutex(second, 1);
        });
    }
};

/// A thread that ends without unlocking the mutex, and a second thread that locks the mutex through the same object.
class EndedOwner final : public MutexScenario {
public:
    explicit EndedOwner(Counts& counts) : MutexScenario(counts) {}

    using MutexScenario::Counts;

private:
    void start() override {
        MutexScenario::start();
        task("ended", exploration::kMainProcess, [this] { shared().lock(kTimeoutMs, false); });
        addShared("next");
    }

    [[nodiscard]] bool mayStayLocked() const override { return true; }
};

class AutoMutexExploration : public exploration::ExplorationTest {};

TEST_F(AutoMutexExploration, TwoProcessesExcludeEachOther) {
    TwoProcesses::Counts counts;
    explores<TwoProcesses>({.preemptions = 3}, std::ref(counts));
    EXPECT_NE(counts.timedOut, 0u);
    EXPECT_EQ(counts.abandoned, 0u);
}

TEST_F(AutoMutexExploration, AKilledOwnerIsReportedOnce) {
    TwoProcesses::Counts counts;
    explores<TwoProcesses>({.preemptions = 2, .kills = 1}, std::ref(counts));
    EXPECT_NE(counts.abandoned, 0u);
}

TEST_F(AutoMutexExploration, AThreadThatEndedIsNoLongerTheOwner) {
    EndedOwner::Counts counts;
    explores<EndedOwner>({}, std::ref(counts));
    EXPECT_NE(counts.abandoned, 0u);
}

TEST_F(AutoMutexExploration, ThreeThreadsInTwoProcessesExcludeEachOther) {
    ThreeThreads::Counts counts;
    explores<ThreeThreads>({.preemptions = 2, .time = std::chrono::seconds(10)}, std::ref(counts));
}

TEST_F(AutoMutexExploration, TwoObjectsWithOneNameInAProcessExcludeEachOther) {
    TwoObjects::Counts counts;
    explores<TwoObjects>({.preemptions = 2}, std::ref(counts));
}

}  // namespace
