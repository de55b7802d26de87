/// \file
/// The summary of a run, and the check that the log matches the reports of the workers.
#pragma once

#include <string>
#include <vector>

#include "Report.h"
#include "support/LogReader.h"

namespace shared_log {

struct Run {
    std::string logPath;
    std::vector<std::string> files;
    std::vector<Report> workers;
};

/// Prints the tables, the longest trail, the time span and all errors. Returns whether all of the following conditions
/// are true:
///
/// - No line is torn.
/// - Each worker has as many records in the log as in its report. If the log has a backup, records may be missing.
/// - All records are records of workers.
/// - If a file begins with a list of its damaged lines, each worker found exactly these lines. In a file without such a
///   list, all workers found the same damaged lines.
bool printSummary(const Run& run, const examples::Log& log);

}  // namespace shared_log
