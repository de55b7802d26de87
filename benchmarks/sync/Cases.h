/// \file
/// The cases of the sync family, a function for each file of them. Figures are nanoseconds for one lock and unlock, or
/// for one line of the log.
///
/// What involves the system's objects and files depends on where the system's own processes run: the ratios hold when
/// all of them share one processor, as `./dev bench` sees to.
#pragma once

#include "support/Frame.h"

namespace bench {

void criticalSections(Family& family);
void mutexes(Family& family);
void logLines(Family& family);

}  // namespace bench
