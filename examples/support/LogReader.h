/// \file
/// Reads an error log line by line. Accepts only lines with milliseconds and one of the prefixes of errors, warnings
/// and debug lines:
///
///     [Mon Nov 16 01:43:08 2026].045 host7.4312.9876: WARN: README.md: 2 of 90 lines are damaged
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace examples {

enum class Kind { Error, Warning, Debug };

struct Record {
    std::string time;      ///< as written in the log, with milliseconds
    long long timeMs = 0;  ///< the same time in milliseconds, to compute differences of times
    unsigned long processId = 0;
    unsigned long threadId = 0;
    Kind kind = Kind::Error;
    std::string message;  ///< UTF-8, without the prefix
};

struct Log {
    std::vector<Record> records;  ///< in the order of writing: first the backup, then the log
    /// Lines that are torn or have another format, and a message for each file whose last line does not end in CR LF.
    std::vector<std::string> unreadable;
    bool hasBackup = false;
};

/// Parses one line; nullopt if it does not match the format.
std::optional<Record> parseLine(std::string_view line);

/// Reads the backup, if it exists, and then the log. A log that cannot be opened counts as empty.
Log readLog(const std::string& path);

}  // namespace examples
