/// \file
/// The cases of the sync family, one function per file. Results are nanoseconds per lock and unlock, per
/// creation, per round of two signals, or per line of the log.
///
/// A call that Wine's server answers takes much longer if the server runs on another processor. `./dev bench` runs the
/// program and the server on one processor.
#pragma once

#include "support/Frame.h"

namespace bench {

void criticalSections(Family& family);
void mutexes(Family& family);
void conditions(Family& family);
void logLines(Family& family);

}  // namespace bench
