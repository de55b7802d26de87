/// \file
/// The statistics that the processes of the soak test share, and the lines that they write.
#pragma once

#include <string>

#include "support/SharedStats.h"
#include "support/StressLine.h"
#include "support/WideText.h"

namespace test {

/// The completed operations of one process since its last start, and its memory and handles. The test checks the memory
/// and the handles of process 0 only, which is never restarted. When another process is restarted, the values of its
/// memory and handles are not reset.
struct SoakCounts {
    volatile long long lines;           ///< lines passed to the log
    volatile long long slowLines;       ///< lines that took so long that the log may have dropped them
    volatile long long additions;       ///< additions to `SoakStats::number`
    volatile long long wakeUps;         ///< wake-ups by another process
    volatile long long conversions;     ///< round trips with the original text as the result
    volatile long long memoryKiB;       ///< private memory of the process; 0 before the first sample
    volatile long long handles;         ///< the index of a newly opened handle; it grows if handles leak
    volatile long long memoryKiBFirst;  ///< the first value of `memoryKiB` after the warm-up
    volatile long long handlesFirst;    ///< the value of `handles` at the same time
};

struct SoakStats {
    static constexpr unsigned int kProcesses = 6;

    volatile long long number;  ///< changed under the named mutex
    volatile long long atEnd;   ///< if not 0, the processes must exit
    SoakCounts processes[kProcesses];
};

using SharedSoakStats = SharedStats<SoakStats>;

/// A short line with a checksum. `readStressLine` parses the line. `id.writer` is the number of the process.
/// `id.thread` is the number of the start of the process, because killed processes are started again. Starts are
/// counted over all processes.
inline std::wstring soakLine(const StressLineId& id) {
    std::string text = std::to_string(id.writer) + '.' + std::to_string(id.thread) + '.' + std::to_string(id.number) +
                       ' ' + std::string(id.number % 100, '-') + ' ';
    text += checksum(text);
    return widened(text);
}

}  // namespace test
