#include "Summary.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <optional>
#include <sstream>
#include <string_view>
#include <utility>

#include "support/Files.h"

namespace shared_log {

namespace {

using Complaints = std::vector<std::string>;

/// The messages of one exception, from the point of failure to the handler that caught it.
using Trail = std::vector<std::string>;

/// The damaged lines that a file declares in its first line, "Damaged lines: 6 7 8". Returns nullopt if the file does
/// not begin with such a declaration.
std::optional<std::vector<unsigned int>> declaredDamage(const std::string& path) {
    constexpr std::string_view kDeclaration = "Damaged lines:";
    const std::string content = examples::readFile(path).value_or("");
    if (!content.starts_with(kDeclaration)) {
        return std::nullopt;
    }
    std::istringstream fields(content.substr(kDeclaration.size(), content.find('\n') - kDeclaration.size()));
    std::vector<unsigned int> lines;
    for (unsigned int line = 0; fields >> line;) {
        lines.push_back(line);
    }
    return lines;
}

std::string listOf(const std::vector<unsigned int>& lines) {
    std::string list = lines.empty() ? "none" : "";
    for (const unsigned int line : lines) {
        list += (list.empty() ? "" : ", ") + std::to_string(line);
    }
    return list;
}

void printFiles(const Run& run, Complaints& complaints) {
    std::puts("Damaged lines");
    for (std::size_t index = 0; index != run.files.size(); ++index) {
        const std::string& name = run.files[index];
        const CheckedFile& first = run.workers.front().files[index];
        const auto declared = declaredDamage(name);
        std::printf("  %s (%u lines): %s%s\n", name.c_str(), first.lines, listOf(first.damagedLines).c_str(),
                    declared ? ", as declared" : "");
        const std::vector<unsigned int>& expected = declared ? *declared : first.damagedLines;
        for (std::size_t worker = 0; worker != run.workers.size(); ++worker) {
            const std::vector<unsigned int>& found = run.workers[worker].files[index].damagedLines;
            if (found != expected) {
                complaints.push_back("worker " + std::to_string(worker + 1) + " found damaged lines in " + name + ": " +
                                     listOf(found) + "; expected: " + listOf(expected));
            }
        }
    }
}

std::map<unsigned long, RecordCounts> countByProcess(const examples::Log& log) {
    std::map<unsigned long, RecordCounts> counts;
    for (const examples::Record& record : log.records) {
        RecordCounts& own = counts[record.processId];
        switch (record.kind) {
        case examples::Kind::Error: ++own.errors; break;
        case examples::Kind::Warning: ++own.warnings; break;
        case examples::Kind::Debug: ++own.debugs; break;
        }
    }
    return counts;
}

std::size_t reportedRecords(const Run& run) {
    std::size_t count = 0;
    for (const Report& worker : run.workers) {
        count += worker.records.all();
    }
    return count;
}

void printRow(const char* name, const RecordCounts& counts, unsigned int reported) {
    std::printf("  %-18s %12u %6u %7u %7u %9u\n", name, counts.errors, counts.warnings, counts.debugs, counts.all(),
                reported);
}

void printRecords(const Run& run, const examples::Log& log, Complaints& complaints) {
    std::printf("\n%-20s %12s %6s %7s %7s %9s\n", "Records", "Vorel Error:", "WARN:", "DEBUG:", "total", "reported");
    std::map<unsigned long, RecordCounts> found = countByProcess(log);
    RecordCounts total;
    for (const Report& worker : run.workers) {
        const RecordCounts counts = found[worker.processId];
        const std::string name = "process " + std::to_string(worker.processId);
        printRow(name.c_str(), counts, worker.records.all());
        total.errors += counts.errors;
        total.warnings += counts.warnings;
        total.debugs += counts.debugs;
        // If there is a backup, the oldest records may be lost, so the log may have fewer records than the report, but
        // not more.
        if (log.hasBackup ? counts.all() > worker.records.all() : counts != worker.records) {
            complaints.push_back(name + ": the records in the log differ from its report");
        }
        found.erase(worker.processId);
    }
    printRow("all", total, static_cast<unsigned int>(reportedRecords(run)));
    for (const auto& unknown : found) {
        complaints.push_back("process " + std::to_string(unknown.first) + " is not a worker");
    }
}

/// The trail of the exception with the most messages. The records of a thread are in the order of writing. A record
/// that ends with `kHandled` is the last record of its trail.
Trail longestTrail(const examples::Log& log) {
    constexpr std::string_view kHandled = ": Vorel exception caught";
    Trail longest;
    std::map<std::pair<unsigned long, unsigned long>, Trail> growing;
    for (const examples::Record& record : log.records) {
        if (record.kind != examples::Kind::Error) {
            continue;
        }
        Trail& trail = growing[{record.processId, record.threadId}];
        trail.push_back(record.message);
        if (record.message.ends_with(kHandled)) {
            if (trail.size() > longest.size()) {
                longest = trail;
            }
            trail.clear();
        }
    }
    return longest;
}

void printTrail(const Trail& trail) {
    constexpr int kStep = 2;
    std::printf("\nLongest trail: %u records\n", static_cast<unsigned int>(trail.size()));
    int indent = 0;
    for (const std::string& message : trail) {
        indent += kStep;
        std::printf("%*s%s\n", indent, "", message.c_str());
    }
}

void printTimes(const examples::Log& log) {
    if (log.records.empty()) {
        return;
    }
    const auto [first, last] =
        std::minmax_element(log.records.begin(), log.records.end(),
                            [](const examples::Record& a, const examples::Record& b) { return a.timeMs < b.timeMs; });
    std::printf("\nTime span: %s to %s: %lld ms\n", first->time.c_str(), last->time.c_str(),
                last->timeMs - first->timeMs);
    unsigned int turns = 1;
    for (std::size_t index = 1; index < log.records.size(); ++index) {
        turns += log.records[index].processId != log.records[index - 1].processId ? 1U : 0U;
    }
    std::printf("Turns:     %u runs of records by the same process\n", turns);
}

void printLines(const Run& run, const examples::Log& log, Complaints& complaints) {
    std::printf("Lines:     %zu checked, %zu torn\n", log.records.size() + log.unreadable.size(),
                log.unreadable.size());
    std::printf("Log:       %s%s\n", run.logPath.c_str(), log.hasBackup ? " and its backup" : "");
    for (const std::string& line : log.unreadable) {
        complaints.push_back("torn: " + line);
    }
}

}  // namespace

bool printSummary(const Run& run, const examples::Log& log) {
    Complaints complaints;
    printFiles(run, complaints);
    printRecords(run, log, complaints);
    printTrail(longestTrail(log));
    printTimes(log);
    printLines(run, log, complaints);
    for (const std::string& complaint : complaints) {
        std::printf("Error:     %s\n", complaint.c_str());
    }
    if (complaints.empty()) {
        const std::size_t gone = reportedRecords(run) - log.records.size();
        std::printf("Result:    all records are complete, %s\n",
                    gone == 0 ? "none is missing" : "the oldest were lost with an earlier backup");
    }
    return complaints.empty();
}

}  // namespace shared_log
