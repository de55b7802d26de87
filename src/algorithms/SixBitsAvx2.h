/// \file
/// The AVX2 versions of the algorithms in SixBits.h (see Processor.h).
#pragma once

#include <cstddef>

#include "algorithms/SixBits.h"
#include "algorithms/WideUnit.h"

namespace vorel::algorithms {

/// Encodes groups of three among `count` bytes while whole blocks can be read. Returns the number of bytes encoded;
/// four characters are written for each three of them.
std::size_t encodeSixBitsAvx2(const unsigned char* bytes, std::size_t count, const char* alphabet, char* out) noexcept;
std::size_t encodeSixBitsAvx2(const unsigned char* bytes, std::size_t count, const char* alphabet,
                              WideUnit* out) noexcept;

/// Decodes at most `blocks` blocks of 32 characters. Stops at the first block that cannot be read without touching the
/// page after the end of the text, and, with `InvalidCharacters::Stop`, at a block with an invalid character. Returns
/// the number of blocks decoded. Eight more bytes are written after the 24 bytes of the last block. The text ends with
/// a zero and may be shorter than a block.
std::size_t decodeSixBitsAvx2(const char* text, std::size_t blocks, const SixBitRows& rows, InvalidCharacters rule,
                              unsigned char* out) noexcept;
std::size_t decodeSixBitsAvx2(const WideUnit* text, std::size_t blocks, const SixBitRows& rows, InvalidCharacters rule,
                              unsigned char* out) noexcept;

}  // namespace vorel::algorithms
