/// \file
/// The cases of the exceptions family, one function per file. Results are nanoseconds per exception or per call.
#pragma once

#include "support/Frame.h"

namespace bench {

void messages(Family& family);
void debugTargets(Family& family);

}  // namespace bench
