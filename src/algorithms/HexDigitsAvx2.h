/// \file
/// The AVX2 version of the decoder in HexDigits.h (see Processor.h).
#pragma once

#include <cstddef>

#include "algorithms/WideUnit.h"

namespace vorel::algorithms {

/// Decodes at most `blocks` blocks of 32 digits. Stops at the first block with another character. Returns the number of
/// blocks decoded.
std::size_t decodeHexAvx2(const char* text, std::size_t blocks, unsigned char* out) noexcept;
std::size_t decodeHexAvx2(const WideUnit* text, std::size_t blocks, unsigned char* out) noexcept;

}  // namespace vorel::algorithms
