/// \file
/// List readers that, unlike the exported ones, throw if the array cannot grow. Values are appended; null is an empty
/// list. Returns whether the whole text was read.
#pragma once

#include "vorel/core/Array.h"

namespace vorel::values {

/// \throws MemoryException, as do all of these functions.
bool readIntegers(const wchar_t* text, Array<int>& values);
bool readIntegers(const wchar_t* text, Array<unsigned int>& values);
bool readDoubles(const wchar_t* text, Array<double>& values);
bool readBooleans(const wchar_t* text, Array<bool>& values);

}  // namespace vorel::values
