/// \file
/// Tests of the explorer itself: it runs every order of the tasks' steps, and finds a lost update and a deadlock.

#include <cerrno>
#include <set>
#include <string>

#include <gtest/gtest.h>
#include <windows.h>

#include "exploration/Scheduler.h"

namespace {

using exploration::Ending;
using exploration::Limits;
using exploration::Plan;
using exploration::Result;
using exploration::Scenario;
using exploration::Scheduler;

/// Several tasks. Task `i` makes `steps[i]` steps. The order of all steps is recorded: a letter for each step, and at
/// the end a "!" for each task that did not finish.
class Steps final : public Scenario {
public:
    Steps(std::vector<unsigned int> steps, std::multiset<std::string>& orders)
        : m_steps(std::move(steps)), m_orders(orders) {}

    std::vector<Plan> plans() override {
        std::vector<Plan> plans;
        for (std::size_t task = 0; task < m_steps.size(); ++task) {
            plans.push_back({"task", static_cast<unsigned int>(task), [this, task] {
                                 for (unsigned int step = 0; step < m_steps[task]; ++step) {
                                     if (step != 0) {
                                         Scheduler::running()->point();
                                     }
                                     m_order += static_cast<char>('A' + task);
                                 }
                             }});
        }
        return plans;
    }

    void finish(const std::vector<Ending>& endings) override {
        for (const Ending ending : endings) {
            m_order += ending == Ending::Finished ? "" : "!";
        }
        m_orders.insert(m_order);
    }

private:
    std::vector<unsigned int> m_steps;
    std::multiset<std::string>& m_orders;
    std::string m_order;
};

std::multiset<std::string> ordersOf(const std::vector<unsigned int>& steps, const Limits& limits, Result& result) {
    std::multiset<std::string> orders;
    result = exploration::explore([&] { return std::make_unique<Steps>(steps, orders); }, limits);
    return orders;
}

TEST(Scheduler, RunsEveryOrderOnceForEachPreemptionLevel) {
    Result result;
    // The explorer runs all schedules with no preemption, then all with up to one preemption, and so on. Two steps of A
    // and one step of B have 3!/(2! 1!) = 3 orders. None of them needs more than one preemption.
    const std::multiset<std::string> orders = ordersOf({2, 1}, {}, result);
    EXPECT_EQ(std::set<std::string>(orders.begin(), orders.end()), (std::set<std::string>{"AAB", "ABA", "BAA"}));
    EXPECT_EQ(orders.count("AAB"), 2u) << "AAB is found without preemptions, and again with up to one preemption";
    EXPECT_EQ(orders.count("ABA"), 1u) << "ABA needs a preemption";
    EXPECT_EQ(result.schedules, orders.size());
    EXPECT_TRUE(result.isExhaustive);
    EXPECT_TRUE(result.isComplete);
    EXPECT_EQ(result.preemptions, 1u);

    // Three tasks with two steps each have 6!/(2! 2! 2!) = 90 orders.
    const std::multiset<std::string> more = ordersOf({2, 2, 2}, {}, result);
    EXPECT_EQ(std::set<std::string>(more.begin(), more.end()).size(), 90u);
}

TEST(Scheduler, LimitsPreemptions) {
    for (const auto& [limit, orders] : {std::pair{0u, 2u}, {1u, 6u - 2u}, {2u, 6u}}) {
        // AABB and BBAA need no preemption, ABBA and BAAB need one, ABAB and BABA need two.
        Result result;
        const std::multiset<std::string> found = ordersOf({2, 2}, {.preemptions = limit}, result);
        EXPECT_EQ(std::set<std::string>(found.begin(), found.end()).size(), orders) << limit;
        EXPECT_TRUE(result.isComplete);
        EXPECT_EQ(result.isExhaustive, limit == 2);
    }
}

TEST(Scheduler, KillsAProcessAtEveryPoint) {
    Result result;
    const std::multiset<std::string> orders = ordersOf({2}, {.kills = 1}, result);
    EXPECT_EQ(orders, (std::multiset<std::string>{"AA", "A!", "!"}));
}

/// Two tasks. Each adds 1 to a number in two steps: it reads the number, and later writes the sum.
class LostUpdate final : public Scenario {
public:
    std::vector<Plan> plans() override {
        const auto add = [this] {
            const int before = m_number;
            Scheduler::running()->trace("reads " + std::to_string(before));
            Scheduler::running()->point();
            m_number = before + 1;
        };
        return {{"first", 1, add}, {"second", 1, add}};
    }
    void finish(const std::vector<Ending>&) override {
        exploration::require(m_number == 2, "the number is " + std::to_string(m_number));
    }

private:
    int m_number = 0;
};

TEST(Scheduler, FindsALostUpdateAndReplaysItsSchedule) {
    const auto factory = [] { return std::make_unique<LostUpdate>(); };
    EXPECT_FALSE(exploration::explore(factory, {.preemptions = 0}).failure);
    const Result result = exploration::explore(factory, {});
    ASSERT_TRUE(result.failure);
    EXPECT_EQ(result.failure->message, "the number is 1");
    EXPECT_EQ(result.failure->trace,
              (std::vector<std::string>{"first: reads 0", "second: reads 0", "scheduler: FAILED: the number is 1"}));
    const auto again = exploration::replay(factory, {}, result.failure->decisions);
    ASSERT_TRUE(again);
    EXPECT_EQ(again->trace, result.failure->trace);
}

/// Two tasks that take two locks in opposite order.
class Deadlock final : public Scenario {
public:
    std::vector<Plan> plans() override {
        const auto lockBoth = [this](int first, int second) {
            for (const int lock : {first, second}) {
                Scheduler::running()->block([this, lock] { return !m_locked[lock]; }, std::nullopt);
                m_locked[lock] = true;
            }
            m_locked[first] = m_locked[second] = false;
        };
        return {{"first", 1, [=] { lockBoth(0, 1); }}, {"second", 1, [=] { lockBoth(1, 0); }}};
    }
    void finish(const std::vector<Ending>& endings) override {
        exploration::require(endings == std::vector{Ending::Finished, Ending::Finished}, "deadlock");
    }

private:
    bool m_locked[2] = {};
};

TEST(Scheduler, FindsADeadlock) {
    const Result result = exploration::explore([] { return std::make_unique<Deadlock>(); }, {});
    ASSERT_TRUE(result.failure);
    EXPECT_EQ(result.failure->message, "deadlock");
}

TEST(Scheduler, KeepsErrorsAndExceptionsOfTasksApart) {
    class Errors final : public Scenario {
    public:
        std::vector<Plan> plans() override {
            const auto body = [](int error) {
                return [error] {
                    errno = error;
                    SetLastError(static_cast<DWORD>(error));
                    try {
                        throw error;
                    } catch (int) {
                        Scheduler::running()->point();
                        try {
                            throw;
                        } catch (int caught) {
                            exploration::require(caught == error, "the task catches another task's exception");
                        }
                    }
                    exploration::require(errno == error, "the task reads another task's errno");
                    exploration::require(GetLastError() == static_cast<DWORD>(error),
                                         "the task reads another task's last error");
                };
            };
            return {{"first", 1, body(1)}, {"second", 1, body(2)}};
        }
        void finish(const std::vector<Ending>&) override {}
    };
    const Result result = exploration::explore([] { return std::make_unique<Errors>(); }, {});
    EXPECT_FALSE(result.failure) << result.failure->text();
    EXPECT_TRUE(result.isExhaustive);
}

TEST(Scheduler, ReportsAnExceptionThatLeavesATask) {
    class Thrower final : public Scenario {
    public:
        std::vector<Plan> plans() override {
            return {{"thrower", 1, [] { throw 1; }}};
        }
        void finish(const std::vector<Ending>&) override {}
    };
    for (int round = 0; round < 3; ++round) {
        const Result result = exploration::explore([] { return std::make_unique<Thrower>(); }, {});
        ASSERT_TRUE(result.failure);
        EXPECT_EQ(result.failure->message, "an exception leaves the task");
    }
}

TEST(Scheduler, ReportsTasksThatNeverEnd) {
    class Endless final : public Scenario {
    public:
        std::vector<Plan> plans() override {
            return {{"endless", 1, [] {
                         for (;;) {
                             Scheduler::running()->sleep(1);
                         }
                     }}};
        }
        void finish(const std::vector<Ending>&) override {}
    };
    const Result result = exploration::explore([] { return std::make_unique<Endless>(); }, {.decisions = 100});
    ASSERT_TRUE(result.failure);
    EXPECT_EQ(result.failure->message, "the tasks never end");
}

/// A task that sleeps, and a task that works meanwhile.
class Sleeper final : public Scenario {
public:
    explicit Sleeper(std::multiset<std::string>& orders) : m_orders(orders) {}

    std::vector<Plan> plans() override {
        return {{"sleeper", 1,
                 [this] {
                     Scheduler::running()->sleep(10);
                     m_order += 's' + std::to_string(Scheduler::running()->now());
                 }},
                {"worker", 1, [this] {
                     m_order += 'w';
                     Scheduler::running()->point();
                     m_order += 'w';
                 }}};
    }
    void finish(const std::vector<Ending>&) override { m_orders.insert(m_order); }

private:
    std::multiset<std::string>& m_orders;
    std::string m_order;
};

TEST(Scheduler, WithoutPreemptionsASleepLastsUntilNoOtherTaskCanContinue) {
    std::multiset<std::string> orders;
    const auto factory = [&] { return std::make_unique<Sleeper>(orders); };
    exploration::explore(factory, {.preemptions = 0});
    EXPECT_EQ(std::set<std::string>(orders.begin(), orders.end()), std::set<std::string>{"wws10"});
    exploration::explore(factory, {.preemptions = 1});
    EXPECT_EQ(std::set<std::string>(orders.begin(), orders.end()), (std::set<std::string>{"wws10", "ws10w", "s10ww"}));
}

}  // namespace
