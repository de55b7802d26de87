/// \file
/// The well-formed stretches of UTF-8 and wide text with AVX2, for processors that have it (Processor.h says so). What
/// is not well-formed, and every zero, is left to the plain codec (Utf8.h): so its rules hold everywhere.
#pragma once

#include <cstddef>

namespace vorel::kernels {

/// How far a stretch went.
struct Stretch {
    std::size_t read;
    std::size_t written;
};

/// Decodes whole blocks from `bytes` on, of `left` bytes at most, while `out` has room for `room` 16-bit units. Where
/// nothing is done, the plain codec has to go on.
Stretch decodeUtf8Avx2(const unsigned char* bytes, std::size_t left, void* out, std::size_t room) noexcept;

/// Encodes whole blocks of 16-bit units from `units` on, of `left` at most, while `out` has room for `room` bytes. With
/// `paired`, surrogates are taken in pairs, and otherwise each for itself.
Stretch encodeUtf8Avx2(const void* units, std::size_t left, unsigned char* out, std::size_t room, bool paired) noexcept;

}  // namespace vorel::kernels
