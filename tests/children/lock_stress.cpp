/// \file
/// Four threads that use a named mutex, named conditions, a critical section and its conditions, together with four
/// threads of another process.
///
///     run=<name> process=<0 or 1> seconds=<duration> report=<path> log=<path>
///
/// In each round a thread
/// - adds one to a number that both processes map, under the named mutex,
/// - in process 0, passes a turn to its partner in process 1 and gets it back, through named conditions; in process 1,
///   waits for this turn and passes it back,
/// - adds a token to a counter of its process, or waits without limit on a condition for a token and takes it,
/// - waits for the other threads of its process; the thread that arrives last wakes them by a broadcast.
///
/// Process 0 decides which round is the last.
///
/// When all threads have finished, the program writes the line "additions=<count>" to the report. If a thread makes no
/// progress for 20 seconds, the program writes to the report what each thread waits for. The exit code is then 3. It is
/// also 3 if a thread threw an exception, 1 if the report cannot be created, and 2 if the arguments are invalid or an
/// object cannot be created.

#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <vorel/vorelCore.h>

#include <windows.h>

#include "support/ChildArguments.h"
#include "support/Handle.h"
#include "support/StressStats.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr unsigned int kThreads = test::StressStats::kThreads;
constexpr std::chrono::seconds kProgressTimeout{20};

/// The progress of a thread, for the watchdog.
struct Activity {
    std::atomic<const char*> waitsFor{"the start"};
    std::atomic<unsigned long long> steps{0};
    std::atomic<bool> finished{false};
};

/// The named conditions of one thread and its partner.
struct Turn {
    explicit Turn(const std::wstring& name)
        : toSecond((name + L"_to_second").c_str()), toFirst((name + L"_to_first").c_str()) {}

    vorel::NamedCondition toSecond;
    vorel::NamedCondition toFirst;
};

class Stress {
public:
    explicit Stress(const test::ChildArguments& arguments)
        : m_isFirst(arguments.number("process") == 0),
          m_end(Clock::now() + std::chrono::seconds(arguments.number("seconds"))),
          m_stats(arguments.wide("run") + L"_stats"),
          m_mutex((arguments.wide("run") + L"_mutex").c_str(), false, false) {
        for (unsigned int thread = 0; thread != kThreads; ++thread) {
            m_turns.push_back(std::make_unique<Turn>(arguments.wide("run") + L"_turn" + std::to_wstring(thread)));
        }
    }

    /// Returns true if every thread completed without an exception. If a thread hangs, `report` lists what each thread
    /// waits for.
    bool run(std::FILE* report) {
        std::vector<std::thread> threads;
        for (unsigned int thread = 0; thread != kThreads; ++thread) {
            threads.emplace_back([this, thread] { runThread(thread); });
        }
        const bool finished = watch(report);
        for (std::thread& thread : threads) {
            finished ? thread.join() : thread.detach();
        }
        if (finished) {
            std::fprintf(report, "additions=%lld\n", m_additions.load());
        }
        return finished && !m_failed;
    }

private:
    void runThread(unsigned int thread) {
        try {
            for (long long round = 0; round <= m_stats->lastRound; ++round) {
                add(thread);
                passTurn(thread);
                putOrTakeToken(thread);
                meetOthers(thread, round);
            }
        } catch (...) {
            m_failed = true;
        }
        m_activities[thread].finished = true;
    }

    void enter(unsigned int thread, const char* waitsFor) {
        m_activities[thread].waitsFor = waitsFor;
        ++m_activities[thread].steps;
    }

    void add(unsigned int thread) {
        enter(thread, "the named mutex");
        const vorel::Guard held(m_mutex);
        const long long before = m_stats->number;
        if (before % 16 == 0) {
            vorel::Sleep(0);  // gives other threads a chance to race
        }
        m_stats->number = before + 1;
        ++m_additions;
    }

    void passTurn(unsigned int thread) {
        enter(thread, "its partner in the other process");
        Turn& turn = *m_turns[thread];
        if (m_isFirst) {
            turn.toSecond.signal();
            turn.toFirst.wait(-1);
        } else {
            turn.toSecond.wait(-1);
            turn.toFirst.signal();
        }
    }

    /// A thread with an even number adds one token. A thread with an odd number takes one token.
    void putOrTakeToken(unsigned int thread) {
        enter(thread, "a token");
        const vorel::Guard held(m_lock);
        if (thread % 2 == 0) {
            ++m_tokens;
            m_tokenAvailable.signal();
            return;
        }
        while (m_tokens == 0) {
            m_tokenAvailable.wait(-1);
        }
        if (--m_tokens != 0) {
            m_tokenAvailable.signal();  // two signals may have woken only one waiter, so this wakes another
        }
    }

    void meetOthers(unsigned int thread, long long round) {
        enter(thread, "the other threads of its process");
        const vorel::Guard held(m_lock);
        if (++m_arrived == kThreads) {
            m_arrived = 0;
            m_meeting = round;
            if (m_isFirst && m_stats->lastRound == test::StressStats::kNoEnd && Clock::now() > m_end) {
                m_stats->lastRound = round + 1;  // process 1 reads it after the turns of the next round
            }
            m_allArrived.broadcast();
            return;
        }
        // A thread that has released the lock but does not wait yet may miss a broadcast, so the wait is repeated.
        while (m_meeting != round) {
            m_allArrived.wait(20);
        }
    }

    /// Waits for the threads. Returns false if a thread makes no progress for too long.
    bool watch(std::FILE* report) {
        std::array<unsigned long long, kThreads> steps{};
        std::array<Clock::time_point, kThreads> lastProgress{};
        lastProgress.fill(Clock::now());
        for (;;) {
            bool allFinished = true;
            for (unsigned int thread = 0; thread != kThreads; ++thread) {
                const Activity& activity = m_activities[thread];
                allFinished = allFinished && activity.finished;
                if (activity.finished || activity.steps != steps[thread]) {
                    steps[thread] = activity.steps;
                    lastProgress[thread] = Clock::now();
                } else if (Clock::now() - lastProgress[thread] > kProgressTimeout) {
                    reportThreads(report);
                    return false;
                }
            }
            if (allFinished) {
                return true;
            }
            vorel::Sleep(50);
        }
    }

    void reportThreads(std::FILE* report) const {
        for (unsigned int thread = 0; thread != kThreads; ++thread) {
            std::fprintf(report, "process %d, thread %u, step %llu: %s%s\n", m_isFirst ? 0 : 1, thread,
                         m_activities[thread].steps.load(), m_activities[thread].finished ? "finished" : "waits for ",
                         m_activities[thread].finished ? "" : m_activities[thread].waitsFor.load());
        }
    }

    const bool m_isFirst;
    const Clock::time_point m_end;
    test::SharedStressStats m_stats;
    vorel::AutoMutex m_mutex;
    std::vector<std::unique_ptr<Turn>> m_turns;

    vorel::ForcedCriticalSection m_lock;
    vorel::Condition m_tokenAvailable{m_lock};
    vorel::Condition m_allArrived{m_lock};
    long long m_tokens = 0;
    unsigned int m_arrived = 0;
    long long m_meeting = -1;

    std::array<Activity, kThreads> m_activities;
    std::atomic<long long> m_additions{0};
    std::atomic<bool> m_failed{false};
};

int stress(const test::ChildArguments& arguments) {
    vorel::Exception::SetErrorLogLocation(arguments.text("log").c_str(), -1);
    std::FILE* const report = std::fopen(arguments.text("report").c_str(), "w");
    if (!report) {
        return 1;
    }
    Stress threads(arguments);
    const bool completed = threads.run(report);
    (void)std::fclose(report);
    if (!completed) {
        std::_Exit(3);  // ends the process without waiting for threads that hang
    }
    return 0;
}

}  // namespace

int main(int argumentCount, char** arguments) {
    try {
        return stress({argumentCount, arguments});
    } catch (...) {
        return 2;
    }
}
