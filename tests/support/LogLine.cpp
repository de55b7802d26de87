#include "support/LogLine.h"

#include <regex>

#include <gtest/gtest.h>

namespace test {

LogLine parseLogLine(const std::string& line) {
    static const std::regex s_head(
        R"(^\[((?:Mon|Tue|Wed|Thu|Fri|Sat|Sun) (?:Jan|Feb|Mar|Apr|May|Jun|Jul|Aug|Sep|Oct|Nov|Dec) )"
        R"([ 0-3][0-9] [0-2][0-9]:[0-5][0-9]:[0-6][0-9] [0-9]{4})\](?:\.([0-9]{3}))? )"
        R"(([^.: A-Z]*)\.([0-9]+)\.([0-9]+): )");
    LogLine result;
    std::smatch match;
    if (!std::regex_search(line, match, s_head)) {
        return result;
    }
    result.valid = true;
    result.time = match[1];
    result.milliseconds = match[2].matched ? std::stoi(match[2]) : -1;
    result.computer = match[3];
    result.process = std::stoul(match[4]);
    result.thread = std::stoul(match[5]);
    result.text = match.suffix();
    return result;
}

std::vector<std::string> logLines(const std::string& content) {
    std::vector<std::string> lines;
    std::size_t start = 0;
    while (start < content.size()) {
        const std::size_t end = content.find('\n', start);
        if (end == std::string::npos || end == start || content[end - 1] != '\r') {
            ADD_FAILURE() << "a line of the log does not end in CR LF: " << content.substr(start, 200);
            break;
        }
        lines.push_back(content.substr(start, end - 1 - start));
        start = end + 1;
    }
    return lines;
}

}  // namespace test
