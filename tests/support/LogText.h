/// \file
/// Reads a log file in binary mode and parses its lines, which have this form:
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
    std::optional<std::string> milliseconds;  ///< three digits; nullopt if the line has no milliseconds
    std::string computer;
    unsigned long processId = 0;
    unsigned long threadId = 0;
    std::string message;  ///< with its prefix, such as "WARN: "
};

/// The fields of `line`; nullopt if `line` does not have the form of a log line.
std::optional<LogLine> parseLogLine(std::string_view line);

/// All bytes of a file; nullopt if the file cannot be opened.
std::optional<std::string> readFileBytes(const std::string& path);

/// The lines of a log without their terminators; none if the file cannot be opened. Every line, including the last one,
/// must end in a carriage return and a line feed; otherwise the test fails.
std::vector<std::string> readLines(const std::string& path);

/// The parsed lines. A line that is not in the form of a log line fails the test and is omitted.
std::vector<LogLine> readLogLines(const std::string& path);

/// The messages of the lines that `readLogLines` returns, with their prefixes.
std::vector<std::string> readLogMessages(const std::string& path);

}  // namespace test
