/// \file
/// A scenario with a simulated system, and the fixture of tests that explore such scenarios.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "exploration/Machine.h"
#include "exploration/Scheduler.h"
#include "exploration/SimulatedImports.h"

namespace exploration {

/// The process that owns the objects that a scenario creates in `start`.
inline constexpr ProcessId kMainProcess = 1;

/// An object that belongs to a process. Only `destroy` destroys the object. The end of the scenario does not, because
/// by then the process may have been killed, or a task may still be in a member function of the object.
template <class T>
class ProcessObject {
public:
    ProcessObject() = default;
    ~ProcessObject() = default;

    ProcessObject(const ProcessObject&) = delete;
    ProcessObject& operator=(const ProcessObject&) = delete;

    template <class... Arguments>
    void create(Arguments&&... arguments) {
        new (m_bytes) T(std::forward<Arguments>(arguments)...);
    }
    void destroy() { get().~T(); }

    T& operator*() { return get(); }
    T* operator->() { return &get(); }

private:
    T& get() { return *std::launder(reinterpret_cast<T*>(m_bytes)); }

    alignas(T) std::byte m_bytes[sizeof(T)];
};

/// A derived class overrides `start`, which creates the objects that the tasks share and adds the tasks, and `check`,
/// which checks how the tasks ended.
class SystemScenario : public Scenario {
public:
    std::vector<Plan> plans() final;
    void taskEnded(TaskId task) final;
    void processKilled(ProcessId process) final;
    void finish(const std::vector<Ending>& endings) final;

protected:
    Machine& machine() { return m_machine; }

    /// Adds a task. Only `start` may call this function.
    void task(const char* name, ProcessId process, std::function<void()> body);

    /// Blocks the calling task, without a time limit, until `isReached` returns true. A scenario waits with
    /// this function for its own conditions, not for objects of the simulated system.
    static void await(std::function<bool()> isReached);

    /// Called after a process was killed.
    virtual void processEnded(ProcessId) {}

    [[nodiscard]] ProcessId processOf(TaskId task) const { return m_plans[task].process; }

    virtual void start() = 0;
    virtual void check(const std::vector<Ending>& endings) = 0;

private:
    Machine m_machine;
    std::vector<Plan> m_plans;
};

class ExplorationTest : public testing::Test {
protected:
    /// Runs the schedules of a scenario that is constructed from `arguments`. No schedule may fail. The environment
    /// variable VOREL_EXPLORE_SECONDS replaces the time limit. If VOREL_EXPLORE_REPLAY has the decisions of a schedule,
    /// runs only this schedule.
    template <class T, class... Arguments>
    void explores(const Limits& limits, const Arguments&... arguments) {
        run([&]() -> std::unique_ptr<Scenario> { return std::make_unique<T>(arguments...); }, limits);
    }

private:
    static void run(const ScenarioFactory& factory, Limits limits);

    const SimulatedImports m_imports;
};

}  // namespace exploration
