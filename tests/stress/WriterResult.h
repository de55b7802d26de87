/// \file
/// What a log writer (children/log_writer.cpp) tells about its threads, through a small file.
#pragma once

#include <chrono>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace test {

/// The log gives a line up after 30 sleeps of 1395 ms in all. A sleep may end up to one tick of the system's clock
/// (15.6 ms) early: a call that took less than this has not given up.
inline constexpr std::chrono::milliseconds kShortestDrop{900};

struct ThreadResult {
    unsigned long threadId = 0;
    std::vector<unsigned int> slowLines;  ///< numbers of the lines whose call took kShortestDrop or longer
};

using ResultFile = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

/// One row for each thread: its id, the count of its slow lines, and their numbers.
inline bool writeResult(const std::string& path, const std::vector<ThreadResult>& threads) {
    const ResultFile file(std::fopen(path.c_str(), "w"), std::fclose);
    if (!file) {
        return false;
    }
    for (const ThreadResult& thread : threads) {
        (void)std::fprintf(file.get(), "%lu %zu", thread.threadId, thread.slowLines.size());
        for (const unsigned int line : thread.slowLines) {
            (void)std::fprintf(file.get(), " %u", line);
        }
        (void)std::fputc('\n', file.get());
    }
    return std::fflush(file.get()) == 0;
}

/// Empty when there is no file.
inline std::vector<ThreadResult> readResult(const std::string& path) {
    std::vector<ThreadResult> threads;
    const ResultFile file(std::fopen(path.c_str(), "r"), std::fclose);
    ThreadResult thread;
    std::size_t slowLines = 0;
    while (file && std::fscanf(file.get(), "%lu %zu", &thread.threadId, &slowLines) == 2) {
        thread.slowLines.assign(slowLines, 0);
        for (unsigned int& line : thread.slowLines) {
            (void)std::fscanf(file.get(), "%u", &line);
        }
        threads.push_back(thread);
    }
    return threads;
}

}  // namespace test
