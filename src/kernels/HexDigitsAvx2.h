/// \file
/// The decoder of HexDigits.h with AVX2, for processors that have it (Processor.h says so).
#pragma once

#include <cstddef>

#include "kernels/WideUnit.h"

namespace vorel::kernels {

/// Decodes pairs of digits in blocks of 32, `blocks` at most, up to the first that has another character; returns how
/// many blocks.
std::size_t decodeHexAvx2(const char* text, std::size_t blocks, unsigned char* out) noexcept;
std::size_t decodeHexAvx2(const WideUnit* text, std::size_t blocks, unsigned char* out) noexcept;

}  // namespace vorel::kernels
