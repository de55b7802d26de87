/// \file
/// What the processes of the soak test share, and the lines that they write.
#pragma once

#include <string>

#include "support/SharedFigures.h"
#include "support/StressLine.h"

namespace test {

/// What one process has done, since it was started the last time. Each is counted when it is done.
struct SoakCounts {
    volatile long long lines;        ///< of the log
    volatile long long slowLines;    ///< that took so long that they may have been given up
    volatile long long additions;    ///< to the common number
    volatile long long wakeUps;      ///< by another process
    volatile long long conversions;  ///< there and back, without a difference
    volatile long long memoryKiB;    ///< of the process alone; 0 before it has warmed up
    volatile long long handles;      ///< the place of a handle that is opened now: it moves on when one leaks
    volatile long long memoryKiBFirst;
    volatile long long handlesFirst;
};

struct SoakFigures {
    static constexpr unsigned int kProcesses = 6;

    volatile long long number;  ///< changed under the named mutex
    volatile long long atEnd;   ///< not 0: come to an end
    SoakCounts processes[kProcesses];
};

using SharedSoakFigures = SharedFigures<SoakFigures>;

/// A short line that shows by itself whether it is whole. `readStressLine` takes it apart: the writer is the process,
/// the thread its life, counted over all processes.
inline std::wstring soakLine(const StressLineId& id) {
    std::string text = std::to_string(id.writer) + '.' + std::to_string(id.thread) + '.' + std::to_string(id.number) +
                       ' ' + std::string(id.number % 100, '-') + ' ';
    text += checksum(text);
    return {text.begin(), text.end()};
}

}  // namespace test
