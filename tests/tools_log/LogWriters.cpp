#include "tools_log/LogWriters.h"

#include <algorithm>

#include <gtest/gtest.h>

namespace test {

LogWriters::LogWriters(const std::string& logPath, const TemporaryFolder& folder, long long limitBytes)
    : m_logPath(logPath.begin(), logPath.end()), m_folder(folder.widePath()), m_limitBytes(limitBytes) {}

void LogWriters::start(unsigned int count, unsigned int lines) {
    m_lines = lines;
    for (unsigned int number = 0; number != count; ++number) {
        Writer writer;
        writer.process = std::make_unique<ChildProcess>(
            L"log_writer",
            std::vector<std::wstring>{L"log=" + m_logPath, L"limit=" + std::to_wstring(m_limitBytes),
                                      L"writer=" + std::to_wstring(number), L"threads=" + std::to_wstring(kThreads),
                                      L"lines=" + std::to_wstring(lines), L"start=" + m_start.name(), L"turn=" + m_turn,
                                      L"progress=" + writer.progress.name(),
                                      L"result=" + m_folder + L"\\result-" + std::to_wstring(number) + L".txt"});
        m_writers.push_back(std::move(writer));
    }
    m_start.set();
}

bool LogWriters::waitForProgress() const {
    return std::all_of(m_writers.begin(), m_writers.end(), [](const Writer& writer) { return writer.progress.wait(); });
}

bool LogWriters::finish() const {
    return std::all_of(m_writers.begin(), m_writers.end(), [](const Writer& writer) {
        return writer.process->wait() && writer.process->exitCode() == DWORD{0};
    });
}

void LogWriters::kill() {
    for (const Writer& writer : m_writers) {
        writer.process->terminate();
    }
}

StressCounts LogWriters::expectedCounts() const {
    StressCounts counts;
    for (unsigned int writer = 0; writer != m_writers.size(); ++writer) {
        for (unsigned int thread = 0; thread != kThreads; ++thread) {
            for (unsigned int line = 0; line != m_lines; ++line) {
                counts[{writer, thread, line}] = 1;
            }
        }
    }
    return counts;
}

std::vector<DWORD> LogWriters::processIds() const {
    std::vector<DWORD> ids;
    for (const Writer& writer : m_writers) {
        ids.push_back(writer.process->processId());
    }
    return ids;
}

std::optional<StressLineId> stressLineIn(std::string_view logLine) {
    constexpr std::string_view kPrefix = ": WARN: ";
    const std::size_t at = logLine.find(kPrefix);
    return at == std::string_view::npos ? std::nullopt : readStressLine(logLine.substr(at + kPrefix.size()));
}

StressCounts countStressLines(const std::vector<std::string>& logLines) {
    StressCounts counts;
    for (const std::string& line : logLines) {
        if (const auto id = stressLineIn(line)) {
            ++counts[*id];
        } else {
            ADD_FAILURE() << "not a stress line: " << line.substr(0, 200);
        }
    }
    return counts;
}

std::vector<std::string> linesOf(std::string_view text) {
    std::vector<std::string> lines;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        lines.emplace_back(text.substr(0, end));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    return lines;
}

}  // namespace test
