/// \file
/// Finds the length of a text of either width. If the processor has AVX2 (see Processor.h), the text is searched in
/// blocks of 128 bytes. For short text, `textLength` in PageReads.h is faster.
#pragma once

#include <cstddef>

#include "algorithms/PageReads.h"
#include "algorithms/Processor.h"
#include "algorithms/SimdBlocks.h"

namespace vorel::algorithms {

/// With AVX2: the number of units before the terminator. Reads nothing outside the pages of the text.
std::size_t countUnitsAvx2(const char* text) noexcept;
std::size_t countUnitsAvx2(const WideUnit* text) noexcept;

/// The number of units before the terminator.
template <class T>
std::size_t countUnits(const T* text) noexcept {
    return Processor::usesAvx2() ? countUnitsAvx2(text) : textLength(text);
}

}  // namespace vorel::algorithms
