/// \file
/// Processes that write stress lines to one log, one after the other line by line, so that no line is given up.
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

/// How often each line was found.
using StressCounts = std::map<StressLineId, unsigned int>;

class LogWriters {
public:
    static constexpr unsigned int kThreads = 2;  ///< of each process
    static constexpr unsigned int kWithoutEnd = 0;

    LogWriters(const std::string& logPath, const TemporaryFolder& folder, long long limitBytes);

    /// Starts `count` processes that write `lines` lines in each of their threads.
    void start(unsigned int count, unsigned int lines);

    /// Waits until each has written some lines; false when one has not in time.
    [[nodiscard]] bool waitForProgress() const;

    /// Waits for their end; false when one fails.
    [[nodiscard]] bool finish() const;

    void kill();

    /// Each line once.
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

/// The stress line at the end of a line of the log; nothing when it is not whole.
std::optional<StressLineId> stressLineIn(std::string_view logLine);

/// Counts the stress lines; any other line is a failure of the test.
StressCounts countStressLines(const std::vector<std::string>& logLines);

/// The lines of a text without their line feeds.
std::vector<std::string> linesOf(std::string_view text);

}  // namespace test
