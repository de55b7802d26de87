/// \file
/// What a person wants to see of a run, and whether the log holds what the workers say that they wrote.
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

/// Prints the tables, the longest trail and the time span, and then every complaint. Returns whether there was none: no
/// line torn, no record missing or too many, and exactly the damaged lines found that a file declares.
bool printSummary(const Run& run, const examples::Log& log);

}  // namespace shared_log
