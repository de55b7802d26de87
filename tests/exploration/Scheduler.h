/// \file
/// Tries every order in which tasks can make their system calls (stateless model checking: P. Godefroid, "Model
/// Checking for Programming Languages using VeriSoft", 1997; with a limit on preemptions: M. Musuvathi and S. Qadeer,
/// "Iterative Context Bounding for Systematic Testing of Multithreaded Programs", 2007).
///
/// A task is a thread of the program under test, run as a fiber. A task runs alone until it reaches a scheduling point.
/// The model of the system has a scheduling point before each call, and another after each call that releases an
/// object. At a scheduling point, the scheduler decides which task continues. A schedule is the list of these
/// decisions. The next schedule repeats the decisions before the last decision that has an untried option, and then
/// takes this option. When no decision has an untried option, the search starts again with a limit that allows one more
/// preemption. It ends when a higher limit is not allowed or would add no schedule.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "exploration/Fiber.h"

namespace exploration {

/// Milliseconds of the simulated clock.
using Tick = unsigned long long;

using TaskId = unsigned int;
using ProcessId = unsigned int;

/// One task of a scenario.
struct Plan {
    std::string name;
    ProcessId process;
    std::function<void()> body;
};

/// How the tasks of a schedule ended.
enum class Ending { Finished, Killed, Blocked };

/// One run of the tasks: the objects that they share, and the properties to check. Each schedule has a new scenario.
class Scenario {
public:
    Scenario() = default;
    virtual ~Scenario() = default;

    Scenario(const Scenario&) = delete;
    Scenario& operator=(const Scenario&) = delete;

    virtual std::vector<Plan> plans() = 0;

    /// Called outside of all tasks: after a task has ended, and after a process was killed.
    virtual void taskEnded(TaskId) {}
    virtual void processKilled(ProcessId) {}

    /// Called when no task can continue, unless the schedule has failed. Checks the result, and calls `Scheduler::fail`
    /// if it is wrong.
    virtual void finish(const std::vector<Ending>& endings) = 0;
};

struct Limits {
    static constexpr unsigned int kUnlimited = ~0u;

    /// Maximum number of preemptions in one schedule. A switch from a task that could continue is a preemption. A
    /// timeout and the end of a sleep may count as one, too (see `Scheduler::block` and `Scheduler::sleep`).
    unsigned int preemptions = kUnlimited;
    unsigned int kills = 0;  ///< maximum number of processes that are killed in one schedule
    std::chrono::milliseconds time = std::chrono::hours(1);
    std::size_t decisions = 2000;  ///< a schedule with more steps of the scheduler is reported as endless
};

struct Failure {
    std::string message;
    std::vector<std::string> trace;      ///< one line for each call, each killed process and the failure
    std::vector<std::size_t> decisions;  ///< for `replay`

    [[nodiscard]] std::string text() const;
};

struct Result {
    unsigned long long schedules = 0;
    std::size_t longest = 0;        ///< number of decisions with more than one option in the longest schedule
    bool hasFinishedLevel = false;  ///< whether all schedules with up to `preemptions` preemptions were run
    unsigned int preemptions = 0;   ///< the highest number for which this is so
    bool isComplete = false;        ///< whether every schedule within the limits was run
    bool isExhaustive = false;      ///< whether a higher limit on preemptions would add no schedule
    std::optional<Failure> failure;
};

using ScenarioFactory = std::function<std::unique_ptr<Scenario>()>;

/// Runs all schedules within `limits` until one fails or the time is over. Schedules with fewer preemptions are run
/// first, and again at each higher limit on preemptions.
Result explore(const ScenarioFactory& factory, const Limits& limits);

/// Runs the schedule of a failure again. The options of a decision depend on the limits. So if `limits.preemptions` is
/// not the limit at which `explore` found the failure, the decisions may select another schedule.
std::optional<Failure> replay(const ScenarioFactory& factory, const Limits& limits,
                              const std::vector<std::size_t>& decisions);

enum class Wake { Resumed, TimedOut };

/// The scheduler of the running schedule. The model of the system calls it.
class Scheduler {
public:
    /// Null if no schedule is running.
    static Scheduler* running() noexcept;

    /// Whether the caller is a task of a running schedule.
    static bool isInTask() noexcept;

    virtual ~Scheduler() = default;

    [[nodiscard]] virtual TaskId task() const = 0;
    [[nodiscard]] virtual ProcessId process() const = 0;
    [[nodiscard]] virtual Tick now() const = 0;

    /// A scheduling point.
    virtual void point() = 0;

    /// A scheduling point at which the task cannot continue before `isFree` is true or, if there is a time limit, the
    /// wait has timed out. A timeout counts as a preemption in the same cases as the end of a sleep.
    virtual Wake block(std::function<bool()> isFree, std::optional<Tick> milliseconds) = 0;

    /// A scheduling point at which the task sleeps. The end of the sleep counts as a preemption if another task could
    /// continue, or if another time limit or sleep would end earlier.
    virtual void sleep(Tick milliseconds) = 0;

    /// Chooses one of `count` (at least 1) possible results of a call.
    virtual std::size_t choose(std::size_t count) = 0;

    /// Reports a violated property. A call from a task ends the schedule and does not return.
    virtual void fail(const std::string& message) = 0;

    /// Whether `trace` records lines. If not, callers need not build the lines.
    [[nodiscard]] virtual bool isTracing() const = 0;
    virtual void trace(const std::string& line) = 0;
};

/// Ends the schedule with `message` unless `holds`.
void require(bool holds, const std::string& message);

}  // namespace exploration
