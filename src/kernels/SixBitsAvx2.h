/// \file
/// The kernels of SixBits.h with AVX2, for processors that have it (Processor.h says so).
#pragma once

#include <cstddef>

#include "kernels/SixBits.h"
#include "kernels/WideUnit.h"

namespace vorel::kernels {

/// Encodes groups of three among `count` bytes while whole blocks can be read, and returns how many bytes that were;
/// four characters have been written for each three of them.
std::size_t encodeSixBitsAvx2(const unsigned char* bytes, std::size_t count, const char* alphabet, char* out) noexcept;
std::size_t encodeSixBitsAvx2(const unsigned char* bytes, std::size_t count, const char* alphabet,
                              WideUnit* out) noexcept;

/// Decodes blocks of 32 characters, `blocks` at most, up to the first that could not be read without reaching into the
/// page behind the end of the text, or that has a character without a value, when `strangers` stop it; returns how many
/// blocks. Behind the 24 bytes of the last one eight more are written. The text ends in a zero, and need not have a
/// whole block left.
std::size_t decodeSixBitsAvx2(const char* text, std::size_t blocks, const SixBitRows& rows, Strangers strangers,
                              unsigned char* out) noexcept;
std::size_t decodeSixBitsAvx2(const WideUnit* text, std::size_t blocks, const SixBitRows& rows, Strangers strangers,
                              unsigned char* out) noexcept;

}  // namespace vorel::kernels
