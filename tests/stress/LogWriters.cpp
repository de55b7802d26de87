#include "stress/LogWriters.h"

#include <algorithm>
#include <cctype>

#include <gtest/gtest.h>

#include "support/LogText.h"
#include "support/WideText.h"

namespace test {

namespace {

/// Whether a text has the form of a time in the log, such as "Mon Nov 16 01:43:08 2026".
bool isTimeText(std::string_view time) {
    constexpr std::string_view kForm = "Aaa Aaa 99 99:99:99 9999";
    constexpr std::string_view kNames = "SunMonTueWedThuFriSat JanFebMarAprMayJunJulAugSepOctNovDec";
    const auto fits = [](char form, char unit) {
        const bool digit = std::isdigit(static_cast<unsigned char>(unit)) != 0;
        return form == '9' ? digit : form == unit || std::isalpha(static_cast<unsigned char>(form)) != 0;
    };
    return std::equal(kForm.begin(), kForm.end(), time.begin(), time.end(),
                      [&](char form, char unit) { return fits(form, unit) || (form == '9' && unit == ' '); }) &&
           kNames.find(time.substr(0, 3)) < kNames.find(' ') && kNames.find(time.substr(4, 3)) > kNames.find(' ');
}

/// Describes the defect of `line`. Returns an empty text for a complete stress line of one of the writers.
std::string defectOf(std::string_view line, const LogWriters& writers, StressLineId& id) {
    constexpr std::string_view kPrefix = "WARN: ";
    const std::optional<LogLine> fields = parseLogLine(line);
    if (!fields || fields->milliseconds || !isTimeText(fields->time)) {
        return "not in the form of a log line";
    }
    const std::string_view message = fields->message;
    const std::optional<StressLineId> found =
        message.starts_with(kPrefix) ? readStressLine(message.substr(kPrefix.size())) : std::nullopt;
    if (!found) {
        return "incomplete";
    }
    id = *found;
    if (id.writer >= writers.all().size() || id.thread >= kThreadsPerWriter) {
        return "from an unknown writer";
    }
    const LogWriter& writer = writers.all()[id.writer];
    if (fields->processId != writer.process->processId()) {
        return "marked with the id of another process";
    }
    if (!writer.threads.empty() && fields->threadId != writer.threads[id.thread].threadId) {
        return "marked with the id of another thread";
    }
    return {};
}

}  // namespace

void LogWriters::add(unsigned int count, unsigned int linesPerThread) {
    for (; count != 0; --count) {
        LogWriter writer;
        writer.number = static_cast<unsigned int>(m_writers.size());
        writer.lines = linesPerThread;
        writer.resultPath = m_log.folder().file("result-" + std::to_string(writer.number) + ".txt");
        writer.process = std::make_unique<ChildProcess>(
            L"log_writer",
            std::vector<std::wstring>{
                L"log=" + test::widened(m_log.path()), L"limit=" + std::to_wstring(m_limitBytes),
                L"writer=" + std::to_wstring(writer.number), L"threads=" + std::to_wstring(kThreadsPerWriter),
                L"lines=" + std::to_wstring(linesPerThread), L"start=" + m_start.name(), L"turn=" + m_turn,
                L"progress=" + writer.progress.name(), L"result=" + test::widened(writer.resultPath)});
        m_writers.push_back(std::move(writer));
    }
}

bool LogWriters::waitForProgress() const {
    return std::all_of(m_writers.begin(), m_writers.end(),
                       [](const LogWriter& writer) { return writer.progress.wait(); });
}

bool LogWriters::finish() {
    constexpr DWORD kLimitMs = 120000;
    return std::all_of(m_writers.begin(), m_writers.end(), [](LogWriter& writer) {
        if (writer.lines == kEndless) {
            return true;
        }
        if (!writer.process->wait(kLimitMs) || writer.process->exitCode() != DWORD{0}) {
            return false;
        }
        writer.threads = parseResult(readFileBytes(writer.resultPath).value_or(""));
        return writer.threads.size() == kThreadsPerWriter;
    });
}

std::size_t LogWriters::slowLines() const {
    std::size_t count = 0;
    for (const LogWriter& writer : m_writers) {
        for (const ThreadResult& thread : writer.threads) {
            count += thread.slowLines.size();
        }
    }
    return count;
}

bool isCompleteLine(std::string_view line, const LogWriters& writers, StressLineId& id) {
    return defectOf(line, writers, id).empty();
}

std::vector<StressLineId> readStressLog(const std::string& path, const LogWriters& writers) {
    constexpr std::size_t kMaxShownBytes = 200;
    std::vector<StressLineId> found;
    for (const std::string& line : readLines(path)) {
        StressLineId id;
        const std::string defect = defectOf(line, writers, id);
        if (defect.empty()) {
            found.push_back(id);
        } else {
            ADD_FAILURE() << path << ": a line is " << defect << ": " << line.substr(0, kMaxShownBytes);
        }
    }
    return found;
}

void expectAllLines(const LogWriters& writers, const std::vector<StressLineId>& found) {
    std::map<StressLineId, unsigned int> times;
    for (const StressLineId& id : found) {
        ++times[id];
    }
    for (const LogWriter& writer : writers.all()) {
        for (unsigned int thread = 0; thread != writer.threads.size(); ++thread) {
            const std::vector<unsigned int>& slow = writer.threads[thread].slowLines;
            for (unsigned int number = 0; number != writer.lines; ++number) {
                const unsigned int count = times[{writer.number, thread, number}];
                const bool mayBeMissing = std::find(slow.begin(), slow.end(), number) != slow.end();
                EXPECT_TRUE(count == 1 || (count == 0 && mayBeMissing))
                    << "writer " << writer.number << ", thread " << thread << ", line " << number << " was found "
                    << count << " times";
            }
        }
    }
}

}  // namespace test
