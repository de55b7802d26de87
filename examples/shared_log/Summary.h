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

/// Prints the tables, the longest trail, the time span and all errors. Returns true if it found no error: no line is
/// torn, no record is missing or unexpected, and the damaged lines found are those that the files declare.
bool printSummary(const Run& run, const examples::Log& log);

}  // namespace shared_log
