/// \file
/// A runtime without a free stream: while one of these lives, no file can be opened, the null device among them.
#pragma once

#include <cstdio>
#include <vector>

namespace test {

class ExhaustedStreams {
public:
    ExhaustedStreams() {
        while (std::FILE* const stream = std::fopen("nul", "rb")) {
            m_streams.push_back(stream);
        }
    }

    ~ExhaustedStreams() {
        for (std::FILE* const stream : m_streams) {
            std::fclose(stream);
        }
    }

    ExhaustedStreams(const ExhaustedStreams&) = delete;
    ExhaustedStreams& operator=(const ExhaustedStreams&) = delete;

private:
    std::vector<std::FILE*> m_streams;
};

}  // namespace test
