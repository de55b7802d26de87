/// \file
/// The results of a log writer (children/log_writer.cpp): one result for each of its threads. The writer passes the
/// results to the test in a small file.
#pragma once

#include <chrono>
#include <cstdio>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace test {

/// If the log file stays locked, the log drops a line after 30 sleeps of 1395 ms in total. Each sleep may be too short
/// by one tick of the system clock (15.6 ms), so the sleeps take at least 927 ms. So a call that took less
/// than `kMinDropTime` did not drop its line because of a locked file.
inline constexpr std::chrono::milliseconds kMinDropTime{900};

struct ThreadResult {
    unsigned long threadId = 0;
    std::vector<unsigned int> slowLines;  ///< numbers of the lines whose call took kMinDropTime or longer
};

/// Writes one row for each thread: its id and the numbers of its slow lines.
inline bool writeResult(const std::string& path, const std::vector<ThreadResult>& threads) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "wb"), std::fclose);
    if (!file) {
        return false;
    }
    for (const ThreadResult& thread : threads) {
        (void)std::fprintf(file.get(), "%lu", thread.threadId);
        for (const unsigned int line : thread.slowLines) {
            (void)std::fprintf(file.get(), " %u", line);
        }
        (void)std::fputc('\n', file.get());
    }
    return std::fflush(file.get()) == 0;
}

/// Parses the output of `writeResult`.
inline std::vector<ThreadResult> parseResult(const std::string& text) {
    std::vector<ThreadResult> threads;
    std::istringstream rows(text);
    for (std::string row; std::getline(rows, row);) {
        std::istringstream fields(row);
        ThreadResult& thread = threads.emplace_back();
        fields >> thread.threadId;
        for (unsigned int line = 0; fields >> line;) {
            thread.slowLines.push_back(line);
        }
    }
    return threads;
}

}  // namespace test
