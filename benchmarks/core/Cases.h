/// \file
/// The cases of the core family. Results are nanoseconds per unit, call or element. In a "fresh" case, each pass
/// creates a new object and destroys it at the end; in a "fresh" format case, each call does so. In a "reused" case,
/// all passes use the memory of one object.
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
