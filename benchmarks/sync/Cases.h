/// \file
/// The cases of the sync family, one function per file. Results are nanoseconds per lock and unlock, or per line of the
/// log.
///
/// The results for system objects and files depend on the processor that the system's own processes run on. The ratios
/// are valid if these processes share one processor with the benchmark, as under `./dev bench`.
#pragma once

#include "support/Frame.h"

namespace bench {

void criticalSections(Family& family);
void mutexes(Family& family);
void logLines(Family& family);

}  // namespace bench
