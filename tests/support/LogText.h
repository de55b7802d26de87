/// \file
/// What stands in a log file, read byte by byte and taken apart.
///
///     [Mon Nov 16 01:43:08 2026].045 host7.4312.9876: WARN: text
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace test {

/// The fields of one line.
struct LogLine {
    std::string time;                         ///< 24 characters
    std::optional<std::string> milliseconds;  ///< three digits
    std::string computer;
    unsigned long processId = 0;
    unsigned long threadId = 0;
    std::string message;  ///< the prefix, and what follows
};

/// The fields of `line`, or nothing when it has not the form of a line.
std::optional<LogLine> parseLogLine(std::string_view line);

/// All bytes of a file; nothing when it is not there.
std::optional<std::string> readFileBytes(const std::string& path);

/// The lines of a log without their ends; none when there is no file. A text that does not end each line, the last one
/// too, in a carriage return and a line feed is a failure of the test.
std::vector<std::string> readLines(const std::string& path);

/// The same, taken apart. A line of another form is a failure of the test, and left out.
std::vector<LogLine> readLogLines(const std::string& path);

/// Prefix and message of every line.
std::vector<std::string> readLogMessages(const std::string& path);

}  // namespace test
