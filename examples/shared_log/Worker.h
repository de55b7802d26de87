/// \file
/// The work of one process: it converts every line of its files to wide text and back. If a line cannot be converted,
/// or differs afterwards, an exception passes through three functions. Each function writes a record to the log:
///
///     convertAndCompare   rethrowClass      "Line::convertAndCompare: Vorel exception rethrown"
///     checkLine           rethrowGeneric    "README.md, line 12: Vorel exception rethrown"
///     checkFile           catchClass        "Worker::checkFile: Vorel exception caught"
#pragma once

#include <string>
#include <vector>

#include "Report.h"

namespace shared_log {

class Worker {
public:
    /// Checks `files`, logs to the current error log, and returns the report.
    Report run(const std::vector<std::string>& files);

private:
    void checkFile(const std::string& path);

    Report m_report;
};

}  // namespace shared_log
