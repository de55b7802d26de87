/// \file
/// Reading lines of the error log: "[time] computer.process.thread: text", with ".mmm" behind the bracket or without.
#pragma once

#include <string>
#include <vector>

namespace test {

struct LogLine {
    bool valid = false;
    std::string time;
    int milliseconds = -1;  ///< -1 for a line without
    std::string computer;
    unsigned long process = 0;
    unsigned long thread = 0;
    std::string text;  ///< prefix and message
};

/// Takes a line apart, without its line end. `valid` is false for anything that is not a whole line of the log.
LogLine parseLogLine(const std::string& line);

/// The lines of a log file's content, each without its carriage return and line feed. A test fails when the content
/// does not end in these two, or when a line feed stands alone.
std::vector<std::string> logLines(const std::string& content);

}  // namespace test
