/// \file
/// The readers of lists without the promise of the exported ones: when the array cannot grow, they say so. A list is
/// added to what the array holds; null is an empty one. The answer is whether the whole text was read.
#pragma once

#include "vorel/core/Array.h"

namespace vorel::values {

/// \throws MemoryException, as all of them.
bool readIntegers(const wchar_t* text, Array<int>& values);
bool readIntegers(const wchar_t* text, Array<unsigned int>& values);
bool readDoubles(const wchar_t* text, Array<double>& values);
bool readBooleans(const wchar_t* text, Array<bool>& values);

}  // namespace vorel::values
