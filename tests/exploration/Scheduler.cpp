#include "exploration/Scheduler.h"

#include <algorithm>
#include <utility>

#include "exploration/Path.h"

namespace exploration {

namespace {

enum class TaskState { Ready, Blocked, Sleeping, Finished, Killed };

struct Task {
    Plan plan;
    std::unique_ptr<Fiber> fiber;
    TaskState state = TaskState::Ready;
    std::function<bool()> isFree;
    std::optional<Tick> deadline;
    Wake wake = Wake::Resumed;

    [[nodiscard]] bool isLive() const { return state != TaskState::Finished && state != TaskState::Killed; }
    [[nodiscard]] bool canContinue() const {
        return state == TaskState::Ready || (state == TaskState::Blocked && isFree());
    }
};

/// A possible next step of the scheduler.
struct Option {
    enum class Kind { Run, TimeOut, Kill };

    Kind kind;
    TaskId task;
    unsigned int preemptions;
};

/// Reuses fibers whose functions have ended. Other fibers are destroyed, and new fibers replace them.
class FiberPool {
public:
    std::unique_ptr<Fiber> take() {
        if (m_idle.empty()) {
            return std::make_unique<Fiber>(m_main);
        }
        std::unique_ptr<Fiber> fiber = std::move(m_idle.back());
        m_idle.pop_back();
        return fiber;
    }

    void giveBack(std::unique_ptr<Fiber> fiber) {
        if (fiber->hasEnded()) {
            m_idle.push_back(std::move(fiber));
        }
    }

    MainFiber& main() { return m_main; }

private:
    MainFiber m_main;
    std::vector<std::unique_ptr<Fiber>> m_idle;
};

class Schedule;
thread_local Schedule* s_running = nullptr;

/// One schedule: runs the tasks in the order of the path's decisions.
class Schedule final : public Scheduler {
public:
    Schedule(Scenario& scenario, FiberPool& fibers, Path& path, const Limits& limits, bool isTracing)
        : m_scenario(scenario),
          m_fibers(fibers),
          m_path(path),
          m_preemptions(limits.preemptions),
          m_kills(limits.kills),
          m_maxDecisions(limits.decisions),
          m_isTracing(isTracing) {
        s_running = this;
    }
    ~Schedule() override {
        for (Task& task : m_tasks) {
            m_fibers.giveBack(std::move(task.fiber));
        }
        s_running = nullptr;
    }

    Schedule(const Schedule&) = delete;
    Schedule& operator=(const Schedule&) = delete;

    std::optional<Failure> run() {
        m_path.restart();
        for (Plan& plan : m_scenario.plans()) {
            Task& task = m_tasks.emplace_back();
            task.plan = std::move(plan);
            task.fiber = m_fibers.take();
        }
        for (Task& task : m_tasks) {  // a second loop, because the first may move the tasks
            task.fiber->start([this, &task] {
                try {
                    task.plan.body();
                } catch (...) {
                    fail("an exception leaves the task");
                }
            });
        }
        while (!m_failure && step()) {}
        if (!m_failure) {
            m_scenario.finish(endings());
        }
        if (m_failure) {
            m_failure->decisions = m_path.decisions();
            m_failure->trace = m_trace;
        }
        return m_failure;
    }

    /// Whether an option was omitted because of the limit on preemptions.
    [[nodiscard]] bool hasLeftOut() const { return m_hasLeftOut; }

    [[nodiscard]] TaskId task() const override { return *m_current; }
    [[nodiscard]] ProcessId process() const override { return m_tasks[*m_current].plan.process; }
    [[nodiscard]] Tick now() const override { return m_now; }
    [[nodiscard]] bool isTracing() const override { return m_isTracing; }
    [[nodiscard]] bool isTaskRunning() const { return m_current.has_value(); }

    void point() override {
        Task& task = m_tasks[*m_current];
        task.state = TaskState::Ready;
        leave();
    }

    Wake block(std::function<bool()> isFree, std::optional<Tick> milliseconds) override {
        Task& task = m_tasks[*m_current];
        task.state = TaskState::Blocked;
        task.isFree = std::move(isFree);
        task.deadline = milliseconds ? std::optional(m_now + *milliseconds) : std::nullopt;
        leave();
        return task.wake;
    }

    void sleep(Tick milliseconds) override {
        Task& task = m_tasks[*m_current];
        task.state = TaskState::Sleeping;
        task.deadline = m_now + milliseconds;
        leave();
    }

    std::size_t choose(std::size_t count) override {
        if (count == 1) {
            return 0;
        }
        const std::optional<std::size_t> decision = m_path.decide(count);
        if (!decision) {
            fail(kChanged);
            return 0;
        }
        return *decision;
    }

    void fail(const std::string& message) override {
        if (!m_failure) {
            m_failure = Failure{message, {}, {}};
            trace("FAILED: " + message);
        }
        if (m_current) {
            leave();
        }
    }

    void trace(const std::string& line) override {
        if (m_isTracing) {
            m_trace.push_back((m_current ? m_tasks[*m_current].plan.name : std::string("scheduler")) + ": " + line);
        }
    }

private:
    static constexpr const char* kChanged = "the schedule is not the same when it is repeated";

    /// Switches from the task's fiber back to `resume`.
    void leave() { m_fibers.main().resume(); }

    [[nodiscard]] std::vector<Ending> endings() const {
        std::vector<Ending> result;
        for (const Task& task : m_tasks) {
            result.push_back(task.state == TaskState::Finished ? Ending::Finished
                             : task.state == TaskState::Killed ? Ending::Killed
                                                               : Ending::Blocked);
        }
        return result;
    }

    /// Chooses one of the options: runs a task to its next scheduling point, or kills a process. Returns false if no
    /// option exists, if there were too many decisions, or if the choice fails. If the task itself fails, the result is
    /// true, and `m_failure` is set.
    bool step() {
        const std::vector<Option> options = allOptions();
        if (options.empty()) {
            return false;
        }
        if (++m_decisions > m_maxDecisions) {
            fail("the tasks never end");
        }
        const std::size_t decision = choose(options.size());
        if (m_failure) {
            return false;
        }
        const Option& option = options[decision];
        m_preemptions -= option.preemptions;
        if (option.kind == Option::Kind::Kill) {
            kill(m_tasks[option.task].plan.process);
        } else {
            resume(option);
        }
        return true;
    }

    [[nodiscard]] std::vector<Option> allOptions() {
        std::vector<Option> options;
        const bool someCanContinue =
            std::any_of(m_tasks.begin(), m_tasks.end(), [](const Task& task) { return task.canContinue(); });
        const bool lastCanContinue = m_last && m_tasks[*m_last].canContinue();
        const auto add = [&](TaskId id) {
            const Task& task = m_tasks[id];
            if (!task.isLive()) {
                return;
            }
            // Leaving a task that can continue is a preemption. The end of a time limit or of a sleep also counts as a
            // preemption if a task can continue, or if another time limit or sleep would end first. So a task cannot
            // retry without a limit, by timeouts or sleeps, while another task can continue.
            unsigned int preemptions = lastCanContinue && id != *m_last ? 1 : 0;
            if (task.canContinue()) {
                offer(options, {Option::Kind::Run, id, preemptions});
            } else if (task.deadline) {
                preemptions = someCanContinue || *task.deadline != firstDeadline() ? 1 : 0;
                offer(options, {Option::Kind::TimeOut, id, preemptions});
            }
            if (m_kills != 0) {
                offer(options, {Option::Kind::Kill, id, preemptions});
            }
        };
        // The task that ran last comes first, so the first schedule never leaves a task that can continue.
        if (m_last) {
            add(*m_last);
        }
        for (TaskId id = 0; id < m_tasks.size(); ++id) {
            if (id != m_last) {
                add(id);
            }
        }
        const auto isKill = [](const Option& option) { return option.kind == Option::Kind::Kill; };
        std::stable_partition(options.begin(), options.end(), [&](const Option& option) { return !isKill(option); });
        // If the only options are to kill tasks, the schedule ends, and these tasks stay blocked.
        if (std::all_of(options.begin(), options.end(), isKill)) {
            options.clear();
        }
        return options;
    }

    void offer(std::vector<Option>& options, const Option& option) {
        if (option.preemptions <= m_preemptions) {
            options.push_back(option);
        } else {
            m_hasLeftOut = true;
        }
    }

    [[nodiscard]] Tick firstDeadline() const {
        std::optional<Tick> first;
        for (const Task& task : m_tasks) {
            if (task.isLive() && !task.canContinue() && task.deadline) {
                first = std::min(first.value_or(*task.deadline), *task.deadline);
            }
        }
        return *first;
    }

    void resume(const Option& option) {
        Task& task = m_tasks[option.task];
        task.wake = option.kind == Option::Kind::TimeOut ? Wake::TimedOut : Wake::Resumed;
        if (option.kind == Option::Kind::TimeOut) {
            m_now = std::max(m_now, *task.deadline);
        }
        task.state = TaskState::Ready;
        task.deadline.reset();
        m_current = m_last = option.task;
        task.fiber->run();
        m_current.reset();
        if (task.fiber->hasEnded()) {
            task.state = TaskState::Finished;
            m_scenario.taskEnded(option.task);
        }
    }

    void kill(ProcessId process) {
        --m_kills;
        trace("kills process " + std::to_string(process));
        for (Task& task : m_tasks) {
            if (task.plan.process == process && task.isLive()) {
                task.state = TaskState::Killed;
            }
        }
        m_scenario.processKilled(process);
    }

    Scenario& m_scenario;
    FiberPool& m_fibers;
    Path& m_path;
    unsigned int m_preemptions;
    unsigned int m_kills;
    std::size_t m_maxDecisions;
    bool m_isTracing;
    bool m_hasLeftOut = false;
    std::size_t m_decisions = 0;
    std::vector<Task> m_tasks;
    std::optional<TaskId> m_current;
    std::optional<TaskId> m_last;
    Tick m_now = 0;
    std::optional<Failure> m_failure;
    std::vector<std::string> m_trace;
};

std::optional<Failure> runOnce(const ScenarioFactory& factory, FiberPool& fibers, Path& path, const Limits& limits,
                               bool isTracing, bool& hasLeftOut) {
    const std::unique_ptr<Scenario> scenario = factory();
    Schedule schedule(*scenario, fibers, path, limits, isTracing);
    std::optional<Failure> failure = schedule.run();
    hasLeftOut |= schedule.hasLeftOut();
    return failure;
}

}  // namespace

Scheduler* Scheduler::running() noexcept {
    return s_running;
}

bool Scheduler::isInTask() noexcept {
    return s_running && s_running->isTaskRunning();
}

void require(bool holds, const std::string& message) {
    if (!holds) {
        Scheduler::running()->fail(message);
    }
}

std::string Failure::text() const {
    std::string result = message + "\n";
    for (const std::string& line : trace) {
        result += "    " + line + "\n";
    }
    result += "decisions:";
    for (const std::size_t decision : decisions) {
        result += " " + std::to_string(decision);
    }
    return result + "\n";
}

Result explore(const ScenarioFactory& factory, const Limits& limits) {
    const auto end = std::chrono::steady_clock::now() + limits.time;
    FiberPool fibers;
    Result result;
    for (unsigned int preemptions = 0;; ++preemptions) {
        Limits current = limits;
        current.preemptions = preemptions;
        Path path;
        bool hasLeftOut = false;
        do {
            if (std::chrono::steady_clock::now() > end) {
                return result;
            }
            result.failure = runOnce(factory, fibers, path, current, false, hasLeftOut);
            ++result.schedules;
            result.longest = std::max(result.longest, path.length());
            if (result.failure) {
                bool ignored = false;
                Path again(result.failure->decisions);
                result.failure = runOnce(factory, fibers, again, current, true, ignored);
                return result;
            }
        } while (path.advance());
        result.hasFinishedLevel = true;
        result.preemptions = preemptions;
        result.isExhaustive = !hasLeftOut;
        if (result.isExhaustive || preemptions == limits.preemptions) {
            result.isComplete = true;
            return result;
        }
    }
}

std::optional<Failure> replay(const ScenarioFactory& factory, const Limits& limits,
                              const std::vector<std::size_t>& decisions) {
    FiberPool fibers;
    Path path(decisions);
    bool ignored = false;
    return runOnce(factory, fibers, path, limits, true, ignored);
}

}  // namespace exploration
