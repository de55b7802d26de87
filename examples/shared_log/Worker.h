/// \file
/// The work of one process: every line of its files goes to wide text and back, and must come out as it went in. A line
/// that does not rises as an exception through three layers, each of which adds its record:
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
    /// Checks `files`, logs to the current error log, and tells what it did.
    Report run(const std::vector<std::string>& files);

private:
    void checkFile(const std::string& path);

    Report m_report;
};

}  // namespace shared_log
