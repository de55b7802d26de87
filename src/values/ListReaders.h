/// \file
/// List readers that throw if the array cannot grow, unlike the exported functions. They append the values, and return
/// whether the whole text was read. A null text is an empty list.
#pragma once

#include "vorel/core/Array.h"

namespace vorel::values {

/// \throws MemoryException, like the other functions below.
bool readIntegers(const wchar_t* text, Array<int>& values);
bool readIntegers(const wchar_t* text, Array<unsigned int>& values);
bool readDoubles(const wchar_t* text, Array<double>& values);
bool readBooleans(const wchar_t* text, Array<bool>& values);

}  // namespace vorel::values
