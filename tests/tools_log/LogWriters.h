/// \file
/// Processes that write stress lines (support/StressLine.h) to one log. They take turns line by line, so no line is
/// lost to contention.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/ChildProcess.h"
#include "support/NamedEvent.h"
#include "support/StressLine.h"
#include "support/TemporaryLog.h"

namespace test {

/// The number of occurrences of each line.
using StressCounts = std::map<StressLineId, unsigned int>;

class LogWriters {
public:
    static constexpr unsigned int kThreads = 2;     ///< the threads of each process
    static constexpr unsigned int kWithoutEnd = 0;  ///< a value of `lines` for start(): write until kill() is called

    LogWriters(const std::string& logPath, const TemporaryFolder& folder, long long limitBytes);

    /// Starts `count` processes; each of their threads writes `lines` lines.
    void start(unsigned int count, unsigned int lines);

    /// Waits until each thread of each process has written ten lines. Returns false on timeout.
    [[nodiscard]] bool waitForProgress() const;

    /// Waits until all processes end. Returns false at the first process that fails or does not end in time.
    [[nodiscard]] bool finish() const;

    void kill();

    /// The counts for a log that contains each line once.
    [[nodiscard]] StressCounts expectedCounts() const;
    [[nodiscard]] std::vector<DWORD> processIds() const;

private:
    struct Writer {
        NamedEvent progress{NamedEvent::uniqueName(L"progress")};
        std::unique_ptr<ChildProcess> process;
    };

    std::wstring m_logPath;
    std::wstring m_folder;
    long long m_limitBytes;
    NamedEvent m_start{NamedEvent::uniqueName(L"start")};
    std::wstring m_turn = NamedEvent::uniqueName(L"turn");
    unsigned int m_lines = 0;
    std::vector<Writer> m_writers;
};

/// The stress line in a line of the log, or nullopt if the line does not contain a complete stress line.
std::optional<StressLineId> stressLineIn(std::string_view logLine);

/// Counts the occurrences of each stress line. The test fails if a line does not contain a complete stress line.
StressCounts countStressLines(const std::vector<std::string>& logLines);

/// Splits a text into lines. The lines do not include the line feeds.
std::vector<std::string> linesOf(std::string_view text);

}  // namespace test
