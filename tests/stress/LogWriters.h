/// \file
/// Processes that write stress lines to one log at the same time, and what they wrote, read back.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "stress/WriterResult.h"
#include "support/ChildProcess.h"
#include "support/NamedEvent.h"
#include "support/StressLine.h"
#include "support/TemporaryLog.h"

namespace test {

inline constexpr unsigned int kWriters = 6;
inline constexpr unsigned int kThreadsPerWriter = 4;
inline constexpr unsigned int kWithoutEnd = 0;

/// One process that writes.
struct LogWriter {
    unsigned int number = 0;
    unsigned int lines = 0;  ///< of each thread
    NamedEvent progress{NamedEvent::uniqueName(L"progress")};
    std::string resultPath;
    std::unique_ptr<ChildProcess> process;
    std::vector<ThreadResult> threads;  ///< known at its end
};

class LogWriters {
public:
    /// `limitBytes` is the size limit that the writers give their log.
    LogWriters(const TemporaryLog& log, long long limitBytes) : m_log(log), m_limitBytes(limitBytes) {}

    /// From here on the writers hold one mutex for each line: at no time do two of them want the log.
    void takeTurns() { m_turn = NamedEvent::uniqueName(L"turn"); }

    /// Starts `count` processes, which wait until they are let go.
    void add(unsigned int count, unsigned int linesPerThread);

    /// Lets all go that have been added.
    void go() const { m_start.set(); }

    /// Waits until each writer has written some lines; false when one has not in time.
    [[nodiscard]] bool waitForProgress() const;

    /// Waits for the end of those that have one and collects their results; false when one fails or has no result.
    [[nodiscard]] bool finish();

    [[nodiscard]] const std::vector<LogWriter>& all() const { return m_writers; }
    [[nodiscard]] std::vector<LogWriter>& all() { return m_writers; }

    /// Lines that took so long that they may have been given up.
    [[nodiscard]] std::size_t slowLines() const;

private:
    const TemporaryLog& m_log;
    long long m_limitBytes;
    NamedEvent m_start{NamedEvent::uniqueName(L"start")};
    std::wstring m_turn;
    std::vector<LogWriter> m_writers;
};

/// The line of a log that holds a whole stress line, from one of the threads that can have written it. A failure of the
/// test says why another is none.
bool isWholeLine(std::string_view line, const LogWriters& writers, StressLineId& id);

/// The stress lines of a log, in the order of the file. Anything else in it is a failure of the test.
std::vector<StressLineId> readStressLog(const std::string& path, const LogWriters& writers);

/// Expects each line of the writers that came to their end exactly once in `found`; one that the log may have given up
/// (see kShortestDrop) at most once.
void expectAllLines(const LogWriters& writers, const std::vector<StressLineId>& found);

}  // namespace test
