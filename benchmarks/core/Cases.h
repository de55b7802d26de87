/// \file
/// The cases of the core family. Results are nanoseconds per unit, call or element. "Fresh" cases begin with an object
/// without memory in each pass and release it at the end; "reused" cases keep the memory.
#pragma once

#include "support/Frame.h"

namespace bench {

void appendToStrings(Family& family);
void readAndMoveStrings(Family& family);
void formatTexts(Family& family);
void fillArrays(Family& family);
void splitTexts(Family& family);
void findInMaps(Family& family);
void insertIntoMaps(Family& family);

}  // namespace bench
