/// \file
/// The report of one worker, a small text file. The parent compares the log with the report.
#pragma once

#include <string>
#include <vector>

namespace shared_log {

/// The result of one worker for one text file.
struct CheckedFile {
    unsigned int lines = 0;
    std::vector<unsigned int> damagedLines;  ///< counted from 1
};

/// The number of records that a worker has written, by their prefix in the log.
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

/// The path of the report of worker `number`.
std::string reportPath(const std::string& folder, unsigned long number);

/// Returns false if the file cannot be written.
bool writeReport(const std::string& path, const Report& report);

/// Reads a report into `report`, which must be empty. Returns false if the file does not exist or is incomplete;
/// `report` then contains the part that could be read.
bool readReport(const std::string& path, Report& report);

}  // namespace shared_log
