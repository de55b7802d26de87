/// \file
/// Starts processes that write stress lines to one log at the same time, and reads the lines back.
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
/// The value of `LogWriter::lines` for a writer that writes until it is terminated.
inline constexpr unsigned int kEndless = 0;

/// One writing process.
struct LogWriter {
    unsigned int number = 0;
    unsigned int lines = 0;  ///< per thread
    NamedEvent progress{NamedEvent::uniqueName(L"progress")};
    std::string resultPath;
    std::unique_ptr<ChildProcess> process;
    std::vector<ThreadResult> threads;  ///< filled in by `LogWriters::finish`
};

class LogWriters {
public:
    /// `limitBytes` is the size limit that the writers set for the log.
    LogWriters(const TemporaryLog& log, long long limitBytes) : m_log(log), m_limitBytes(limitBytes) {}

    /// Writers that are added after this call lock a common mutex for each line, so they never compete for the log.
    void takeTurns() { m_turn = NamedEvent::uniqueName(L"turn"); }

    /// Starts `count` processes, which wait for `go`.
    void add(unsigned int count, unsigned int linesPerThread);

    /// Signals all added processes to start writing.
    void go() const { m_start.set(); }

    /// Waits until each thread of each writer has written some lines. Returns false if the wait for one writer
    /// exceeds `kGenerousMs`.
    [[nodiscard]] bool waitForProgress() const;

    /// Waits for the writers whose `lines` is not `kEndless`, and collects their results. Returns false if one of these
    /// writers fails, has no result, or runs for two more minutes.
    [[nodiscard]] bool finish();

    [[nodiscard]] const std::vector<LogWriter>& all() const { return m_writers; }
    [[nodiscard]] std::vector<LogWriter>& all() { return m_writers; }

    /// The number of lines that took so long that the log may have dropped them.
    [[nodiscard]] std::size_t slowLines() const;

private:
    const TemporaryLog& m_log;
    long long m_limitBytes;
    NamedEvent m_start{NamedEvent::uniqueName(L"start")};
    std::wstring m_turn;
    std::vector<LogWriter> m_writers;
};

/// Whether `line` is a log line with a complete stress line from one of the writers. Stores the id of the stress line
/// in `id`.
bool isCompleteLine(std::string_view line, const LogWriters& writers, StressLineId& id);

/// The stress lines of a log, in the order of the file. Any other line fails the test.
std::vector<StressLineId> readStressLog(const std::string& path, const LogWriters& writers);

/// Expects each line of the finished writers exactly once in `found`, or at most once if the log may have dropped it
/// (see kMinDropTime).
void expectAllLines(const LogWriters& writers, const std::vector<StressLineId>& found);

}  // namespace test
