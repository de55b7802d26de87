#include "exploration/SystemScenario.h"

#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>

namespace exploration {

namespace {

/// The decisions of a schedule that failed, from the environment, for example "0 2 1". Empty if none are set.
std::vector<std::size_t> decisionsToReplay() {
    std::vector<std::size_t> decisions;
    const char* const text = std::getenv("VOREL_EXPLORE_REPLAY");
    std::istringstream words(text ? text : "");
    for (std::size_t decision = 0; words >> decision;) {
        decisions.push_back(decision);
    }
    return decisions;
}

/// The time limit for each exploration, if the environment sets one.
std::optional<std::chrono::seconds> secondsFromEnvironment() {
    const char* const text = std::getenv("VOREL_EXPLORE_SECONDS");
    return text ? std::optional(std::chrono::seconds(std::atoi(text))) : std::nullopt;
}

void print(const Limits& limits, const Result& result, double seconds) {
    const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
    std::printf("explored %s.%s: %llu schedules, %.0f per second, each with up to %zu decisions and up to %u kills: ",
                test->test_suite_name(), test->name(), result.schedules,
                static_cast<double>(result.schedules) / std::max(seconds, 1e-3), result.longest, limits.kills);
    if (result.isExhaustive) {
        std::printf("all orders were run\n");
    } else if (result.hasFinishedLevel) {
        std::printf("all orders with up to %u preemptions were run%s\n", result.preemptions,
                    result.isComplete ? "" : ", then the exploration stopped");
    } else {
        std::printf("stopped before all orders without preemptions were run\n");
    }
}

}  // namespace

void SystemScenario::task(const char* name, ProcessId process, std::function<void()> body) {
    m_plans.push_back({name, process, std::move(body)});
}

void SystemScenario::await(std::function<bool()> isReached) {
    Scheduler::running()->block(std::move(isReached), std::nullopt);
}

std::vector<Plan> SystemScenario::plans() {
    m_machine.setCaller(kNoTask, kMainProcess);
    start();
    return m_plans;
}

void SystemScenario::taskEnded(TaskId task) {
    m_machine.taskEnded(task);
}

void SystemScenario::processKilled(ProcessId process) {
    std::vector<TaskId> tasks;
    for (TaskId task = 0; task < m_plans.size(); ++task) {
        if (m_plans[task].process == process) {
            tasks.push_back(task);
        }
    }
    m_machine.processKilled(process, tasks);
    processEnded(process);
}

void SystemScenario::finish(const std::vector<Ending>& endings) {
    check(endings);
}

void ExplorationTest::run(const ScenarioFactory& factory, Limits limits) {
    if (const std::vector<std::size_t> decisions = decisionsToReplay(); !decisions.empty()) {
        const std::optional<Failure> failure = replay(factory, limits, decisions);
        ASSERT_FALSE(failure) << failure->text();
        return;
    }
    limits.time = secondsFromEnvironment().value_or(std::chrono::duration_cast<std::chrono::seconds>(limits.time));
    const auto begin = std::chrono::steady_clock::now();
    const Result result = explore(factory, limits);
    print(limits, result, std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
    EXPECT_FALSE(result.failure) << result.failure->text();
}

}  // namespace exploration
