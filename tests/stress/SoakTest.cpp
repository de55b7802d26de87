/// \file
/// Six processes use the log, a named mutex, named conditions and conversions together for 10 seconds, or for
/// VOREL_STRESS_SECONDS. Five of them are killed at random and started again. The first process runs all the time; its
/// memory and its number of handles must not grow.

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "support/ChildProcess.h"
#include "support/LogText.h"
#include "support/SoakStats.h"
#include "support/TemporaryLog.h"
#include "support/WideText.h"

namespace {

using Clock = std::chrono::steady_clock;
using test::SoakCounts;
using test::SoakStats;

constexpr unsigned int kSeed = 20261121;

std::chrono::seconds duration() {
    const char* const value = std::getenv("VOREL_STRESS_SECONDS");
    return std::chrono::seconds(value ? std::strtoll(value, nullptr, 10) : 10);
}

/// One process from its start until it exits or is killed.
struct Life {
    unsigned int process;
    bool killed = false;
    long long lines = 0;
    long long slowLines = 0;  ///< lines that took so long that the log may have dropped them
    // Lines found in the log:
    long long found = 0;
    long long next = 0;  ///< one more than the number of the last line found
};

/// The sums over all lives of one process.
struct Sum {
    long long lives = 0;
    long long lines = 0;
    long long additions = 0;
    long long wakeUps = 0;
    long long conversions = 0;
};

class Soak {
public:
    Soak() {
        for (unsigned int process = 0; process != SoakStats::kProcesses; ++process) {
            start(process);
        }
    }

    /// For `length`, kills and restarts a random process at random intervals, but never process 0. Then tells all
    /// processes to exit.
    void run(std::chrono::seconds length) {
        std::mt19937 random(kSeed);
        std::uniform_int_distribution<unsigned int> victims(1, SoakStats::kProcesses - 1);
        std::uniform_int_distribution<unsigned int> pausesMs(50, 900);
        const test::NamedEvent never(test::NamedEvent::uniqueName(L"never"));
        for (const Clock::time_point end = Clock::now() + length; Clock::now() < end;) {
            EXPECT_FALSE(never.wait(pausesMs(random)));
            const unsigned int victim = victims(random);
            m_processes[victim]->terminate();
            m_lives[m_current[victim]].killed = true;
            ++m_kills;
            close(victim);
            start(victim);
        }
        m_stats->atEnd = 1;
        for (unsigned int process = 0; process != SoakStats::kProcesses; ++process) {
            ASSERT_TRUE(m_processes[process]->wait()) << "process " << process << " hangs";
            EXPECT_EQ(m_processes[process]->exitCode(), 0u);
            close(process);
        }
    }

    /// Each line that a process has counted must be in the log, once and in order. Only slow lines may be missing. A
    /// killed process may have written one more line, or a part of one more line.
    void expectCompleteLog() {
        readLog();
        EXPECT_LE(m_torn, m_kills);
        EXPECT_LE(m_abandoned, m_kills);
        EXPECT_EQ(m_invalid, 0) << m_firstInvalid;
        for (std::size_t number = 0; number != m_lives.size(); ++number) {
            const Life& life = m_lives[number];
            SCOPED_TRACE("life " + std::to_string(number) + " of process " + std::to_string(life.process));
            EXPECT_LE(life.next, life.lines + (life.killed ? 1 : 0));
            EXPECT_GE(life.found + life.slowLines, life.lines);
            EXPECT_LE(life.found, life.next);
        }
    }

    void expectCorrectNumber() {
        long long additions = 0;
        for (const Sum& sum : m_sums) {
            additions += sum.additions;
        }
        // A process increments the common number, and then its own count of additions. If the process is killed between
        // the two increments, its count lacks this addition.
        EXPECT_GE(m_stats->number, additions);
        EXPECT_LE(m_stats->number, additions + m_kills);
    }

    /// Expects that the process that was never killed has grown by at most 1 MiB of memory and four handles, and that
    /// every process was woken and has converted texts.
    void expectNoGrowth() {
        const SoakCounts& survivor = m_stats->processes[0];
        ASSERT_NE(survivor.memoryKiBFirst, 0) << "the test was too short to measure the memory";
        EXPECT_LE(survivor.memoryKiB, survivor.memoryKiBFirst + 1024);
        EXPECT_LE(survivor.handles, survivor.handlesFirst + 4);
        for (const Sum& sum : m_sums) {
            EXPECT_GT(sum.wakeUps, 0);
            EXPECT_GT(sum.conversions, 0);
        }
    }

    void printStatistics() {
        std::printf("process  lives     lines  additions  wake-ups  conversions\n");
        for (std::size_t process = 0; process != m_sums.size(); ++process) {
            const Sum& sum = m_sums[process];
            std::printf("%7zu %6lld %9lld %10lld %9lld %12lld\n", process, sum.lives, sum.lines, sum.additions,
                        sum.wakeUps, sum.conversions);
        }
        const SoakCounts& survivor = m_stats->processes[0];
        std::printf("killed: %lld; partial lines: %lld; abandoned mutexes: %lld\n", m_kills, m_torn, m_abandoned);
        std::printf("process 0, first and last sample: %lld and %lld KiB, handle index %lld and %lld\n",
                    static_cast<long long>(survivor.memoryKiBFirst), static_cast<long long>(survivor.memoryKiB),
                    static_cast<long long>(survivor.handlesFirst), static_cast<long long>(survivor.handles));
    }

private:
    void start(unsigned int process) {
        m_current[process] = m_lives.size();
        m_processes[process] = std::make_unique<test::ChildProcess>(
            L"soak_worker", std::vector<std::wstring>{L"run=" + m_run, L"process=" + std::to_wstring(process),
                                                      L"life=" + std::to_wstring(m_lives.size()),
                                                      L"log=" + test::widened(m_log.path())});
        m_lives.push_back({process});
    }

    /// Adds the counts of `process`, which has ended, to the sums.
    void close(unsigned int process) {
        SoakCounts& counts = m_stats->processes[process];
        Life& life = m_lives[m_current[process]];
        life.lines = counts.lines;
        life.slowLines = counts.slowLines;
        Sum& sum = m_sums[process];
        ++sum.lives;
        sum.lines += counts.lines;
        sum.additions += counts.additions;
        sum.wakeUps += counts.wakeUps;
        sum.conversions += counts.conversions;
        if (process != 0) {
            for (volatile long long* const count :
                 {&counts.lines, &counts.slowLines, &counts.additions, &counts.wakeUps, &counts.conversions}) {
                *count = 0;
            }
        }
    }

    void readLog() {
        constexpr std::string_view kEnd = "\r\n";
        const std::string bytes = test::readFileBytes(m_log.path()).value_or("");
        for (std::string_view rest = bytes; !rest.empty();) {
            const std::size_t length = rest.find(kEnd);
            readLine(rest.substr(0, length));
            rest.remove_prefix(length == std::string_view::npos ? rest.size() : length + kEnd.size());
        }
    }

    /// Parses a line, which may follow a partial line of a process that was killed while it wrote.
    void readLine(std::string_view line) {
        const std::size_t last = line.rfind('[');
        if (!parseLine(line)) {
            ++m_torn;
            if (last != 0 && last != std::string_view::npos && !parseLine(line.substr(last))) {
                ++m_invalid;
                m_firstInvalid = m_firstInvalid.empty() ? std::string(line) : m_firstInvalid;
            }
        }
    }

    bool parseLine(std::string_view line) {
        constexpr std::string_view kPrefix = "WARN: ";
        const std::optional<test::LogLine> fields = test::parseLogLine(line);
        if (!fields || !fields->message.starts_with(kPrefix)) {
            return false;
        }
        const std::string_view message = std::string_view(fields->message).substr(kPrefix.size());
        if (message.starts_with("AutoMutex::lock: WAIT_ABANDONED: ")) {
            ++m_abandoned;
            return true;
        }
        const std::optional<test::StressLineId> id = test::readStressLine(message);
        if (!id || id->thread >= m_lives.size() || m_lives[id->thread].process != id->writer) {
            return false;
        }
        Life& life = m_lives[id->thread];
        EXPECT_GE(id->number, life.next) << "line is repeated or out of order: " << message;
        life.next = id->number + 1LL;
        ++life.found;
        return true;
    }

    const test::TemporaryLog m_log;
    const std::wstring m_run = test::NamedEvent::uniqueName(L"soak");
    test::SharedSoakStats m_stats{m_run + L"_stats"};
    std::array<std::unique_ptr<test::ChildProcess>, SoakStats::kProcesses> m_processes;
    std::array<std::size_t, SoakStats::kProcesses> m_current{};  ///< the index of each process's current life
    std::array<Sum, SoakStats::kProcesses> m_sums{};
    std::vector<Life> m_lives;
    long long m_kills = 0;
    long long m_torn = 0;       ///< lines of the log that begin with a partial line
    long long m_abandoned = 0;  ///< warnings about an abandoned mutex
    /// Lines that contain a '[' after their first unit, but can be parsed neither from their start nor from their last
    /// '['.
    long long m_invalid = 0;
    std::string m_firstInvalid;
};

TEST(SoakTest, NothingIsLostAndMemoryDoesNotGrowWhileProcessesAreKilled) {
    Soak soak;
    soak.run(duration());
    soak.printStatistics();
    if (HasFatalFailure()) {
        return;
    }
    soak.expectCompleteLog();
    soak.expectCorrectNumber();
    soak.expectNoGrowth();
}

}  // namespace
