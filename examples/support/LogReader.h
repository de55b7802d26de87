/// \file
/// Reads an error log back, line by line, and takes nothing that is not exactly in the log's format:
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
    std::string time;      ///< as it stands in the log, with milliseconds
    long long timeMs = 0;  ///< the same, for differences
    unsigned long processId = 0;
    unsigned long threadId = 0;
    Kind kind = Kind::Error;
    std::string message;  ///< UTF-8, without the prefix
};

struct Log {
    std::vector<Record> records;          ///< in the order of the file
    std::vector<std::string> unreadable;  ///< lines that are torn, or none of ours
    bool hasBackup = false;
};

/// Takes one line apart; nothing for a line that is not whole.
std::optional<Record> parseLine(std::string_view line);

/// Reads the backup, if there is one, and then the log.
Log readLog(const std::string& path);

}  // namespace examples
