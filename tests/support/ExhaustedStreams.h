/// \file
/// Uses up all streams of the runtime. While the object exists, no stream can be opened, not even for the null device.
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
