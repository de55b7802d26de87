/// \file
/// What one worker has done, told to the parent in a small text file: so that the parent can hold the log against it.
#pragma once

#include <string>
#include <vector>

namespace shared_log {

/// One text file as one worker found it.
struct CheckedFile {
    unsigned int lines = 0;
    std::vector<unsigned int> damagedLines;  ///< counted from 1
};

/// Records that a worker has written, by the prefix that they have in the log.
struct RecordCounts {
    unsigned int errors = 0;
    unsigned int warnings = 0;
    unsigned int debugs = 0;

    [[nodiscard]] unsigned int all() const noexcept { return errors + warnings + debugs; }
    bool operator==(const RecordCounts&) const = default;
};

struct Report {
    unsigned long processId = 0;
    RecordCounts records;
    std::vector<CheckedFile> files;  ///< in the order of the command line
};

/// Where worker `number` leaves its report.
std::string reportPath(const std::string& folder, unsigned long number);

bool writeReport(const std::string& path, const Report& report);

/// False when the file is not there, or not a whole report.
bool readReport(const std::string& path, Report& report);

}  // namespace shared_log
