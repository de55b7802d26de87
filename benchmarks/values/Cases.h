/// \file
/// The cases of the values family. Results are nanoseconds per number, field or text.
#pragma once

#include "support/Frame.h"

namespace bench {

void parseIntegers(Family& family);
void parseDoubles(Family& family);
void formatDoubles(Family& family);
void formatIntegers(Family& family);
void splitAndJoin(Family& family);
void compareTexts(Family& family);

}  // namespace bench
