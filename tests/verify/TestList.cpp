#include "verify/TestList.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string_view>

namespace verify {

namespace {

constexpr unsigned int kMsPerSecond = 1000;

/// Parses a line with the fields name, program, "gtest" or "plain", "alone" or "parallel", limit in seconds, arguments.
Test parseLine(const std::string& line) {
    std::vector<std::string> fields;
    for (std::size_t begin = 0; begin <= line.size();) {
        const std::size_t end = std::min(line.find('\t', begin), line.size());
        fields.push_back(line.substr(begin, end - begin));
        begin = end + 1;
    }
    constexpr std::size_t kFields = 6;
    if (fields.size() != kFields) {
        throw std::runtime_error("tests.txt has a damaged line: " + line);
    }
    return {.name = fields[0],
            .program = fields[1],
            .isGoogleTest = fields[2] == "gtest",
            .runsAlone = fields[3] == "alone",
            .limitMs = static_cast<unsigned int>(std::stoul(fields[4])) * kMsPerSecond,
            .arguments = fields[5]};
}

}  // namespace

std::string readBytes(const std::filesystem::path& path) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(_wfopen(path.c_str(), L"rb"), &std::fclose);
    if (!file) {
        throw std::runtime_error("cannot read a file of the archive or of a test");
    }
    std::string bytes;
    std::array<char, 4096> block{};
    while (const std::size_t count = std::fread(block.data(), 1, block.size(), file.get())) {
        bytes.append(block.data(), count);
    }
    return bytes;
}

std::vector<Test> readTestList(const std::filesystem::path& path, const std::vector<std::string>& suites) {
    const std::string bytes = readBytes(path);
    std::vector<Test> tests;
    for (std::size_t begin = 0; begin < bytes.size();) {
        const std::size_t end = std::min(bytes.find('\n', begin), bytes.size());
        Test test = parseLine(bytes.substr(begin, end - begin));
        if (suites.empty() || std::find(suites.begin(), suites.end(), test.suite()) != suites.end()) {
            tests.push_back(std::move(test));
        }
        begin = end + 1;
    }
    for (const std::string& suite : suites) {
        if (std::none_of(tests.begin(), tests.end(), [&](const Test& test) { return test.suite() == suite; })) {
            throw std::runtime_error("the archive has no suite " + suite);
        }
    }
    return tests;
}

}  // namespace verify
