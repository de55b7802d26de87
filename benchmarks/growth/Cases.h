/// \file
/// The cases of the growth family. `strings`, `lists`, `maps` and `logWriters` are in separate files.
#pragma once

#include "Growth.h"

namespace bench {

inline constexpr std::size_t kHundredMillion = 100000000;

/// The maximum number of elements in cases that allocate each element separately. More elements would need too much
/// time and memory.
inline constexpr std::size_t kTenMillion = 10000000;

void strings(Growth& growth);
void lists(Growth& growth);
void maps(Growth& growth);

/// Measures the time of a line that one of several processes writes to a common file: the error log, or the file of the
/// peer. Returns whether all these files contain all lines.
[[nodiscard]] bool logWriters(Growth& growth);

/// The work of a process that `logWriters` starts. `arguments` has the kind of the writer, the path of the file, the
/// names of the event and the semaphore, and the id of the process that started the writer. Returns the exit code.
[[nodiscard]] int writeLines(char** arguments);

}  // namespace bench
