/// \file
/// The length of a text of either width, in blocks of 128 bytes where the processor has AVX2 (see Processor.h). For
/// short narrow text, `textLength` in PageReads.h is faster.
#pragma once

#include <cstddef>
#include <string>

#include "algorithms/Processor.h"
#include "algorithms/SimdBlocks.h"

namespace vorel::algorithms {

/// With AVX2: the number of units before the terminator. Reads nothing outside the pages of the text.
std::size_t countUnitsAvx2(const char* text) noexcept;
std::size_t countUnitsAvx2(const WideUnit* text) noexcept;

/// The number of units before the terminator.
template <class T>
std::size_t countUnits(const T* text) noexcept {
    return Processor::usesAvx2() ? countUnitsAvx2(text) : std::char_traits<T>::length(text);
}

}  // namespace vorel::algorithms
