#include "support/LogText.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <memory>

#include <gtest/gtest.h>

namespace test {

namespace {

bool isDigits(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

bool readNumber(std::string_view text, unsigned long& number) {
    return isDigits(text) && std::from_chars(text.data(), text.data() + text.size(), number).ec == std::errc();
}

/// Removes `expected` from the start of `text`. Returns false if `text` does not start with it.
bool skip(std::string_view& text, std::string_view expected) {
    if (text.substr(0, expected.size()) != expected) {
        return false;
    }
    text.remove_prefix(expected.size());
    return true;
}

/// Removes the last field of `text` and the period before it, and returns the field. If `text` has no period, changes
/// nothing and returns an empty field.
std::string_view consumeLastField(std::string_view& text) {
    const std::size_t point = text.rfind('.');
    if (point == std::string_view::npos) {
        return {};
    }
    const std::string_view field = text.substr(point + 1);
    text = text.substr(0, point);
    return field;
}

}  // namespace

std::optional<LogLine> parseLogLine(std::string_view line) {
    constexpr std::size_t kTimeLength = 24;
    constexpr std::size_t kMillisecondDigits = 3;
    LogLine fields;
    if (!skip(line, "[") || line.size() < kTimeLength) {
        return std::nullopt;
    }
    fields.time = line.substr(0, kTimeLength);
    line.remove_prefix(kTimeLength);
    if (!skip(line, "]")) {
        return std::nullopt;
    }
    if (skip(line, ".")) {
        fields.milliseconds = line.substr(0, kMillisecondDigits);
        if (fields.milliseconds->size() != kMillisecondDigits || !isDigits(*fields.milliseconds)) {
            return std::nullopt;
        }
        line.remove_prefix(kMillisecondDigits);
    }
    const std::size_t colon = line.find(": ");
    if (!skip(line, " ") || colon == std::string_view::npos) {
        return std::nullopt;
    }
    std::string_view origin = line.substr(0, colon - 1);
    if (!readNumber(consumeLastField(origin), fields.threadId) ||
        !readNumber(consumeLastField(origin), fields.processId)) {
        return std::nullopt;
    }
    fields.computer = origin;
    fields.message = line.substr(colon + 1);
    return fields;
}

std::optional<std::string> readFileBytes(const std::string& path) {
    // File streams of this toolchain's C++ library do not work with the UCRT.
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
    if (!file) {
        return std::nullopt;
    }
    std::string bytes;
    char block[4096];
    while (const std::size_t count = std::fread(block, 1, sizeof block, file.get())) {
        bytes.append(block, count);
    }
    return bytes;
}

std::vector<std::string> readLines(const std::string& path) {
    constexpr std::string_view kEnd = "\r\n";
    const std::string bytes = readFileBytes(path).value_or("");
    std::string_view rest = bytes;
    std::vector<std::string> lines;
    while (!rest.empty()) {
        const std::size_t end = rest.find(kEnd);
        if (end == std::string_view::npos) {
            ADD_FAILURE() << path << ": the last line does not end in CR LF: " << rest;
            break;
        }
        const std::string_view line = rest.substr(0, end);
        if (line.find_first_of(kEnd) != std::string_view::npos) {
            ADD_FAILURE() << path << ": CR or LF within a line: " << line;
        }
        lines.emplace_back(line);
        rest.remove_prefix(end + kEnd.size());
    }
    return lines;
}

std::vector<LogLine> readLogLines(const std::string& path) {
    std::vector<LogLine> result;
    for (const std::string& line : readLines(path)) {
        if (std::optional<LogLine> fields = parseLogLine(line)) {
            result.push_back(*std::move(fields));
        } else {
            ADD_FAILURE() << path << ": a line does not have the format of the log: " << line;
        }
    }
    return result;
}

std::vector<std::string> readLogMessages(const std::string& path) {
    std::vector<std::string> messages;
    for (LogLine& line : readLogLines(path)) {
        messages.push_back(std::move(line.message));
    }
    return messages;
}

}  // namespace test
