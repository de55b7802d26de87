/// \file
/// The well-formed stretches of UTF-8 and wide text with AVX2, for processors that have it (Processor.h says so). What
/// is not well-formed, and every zero, is left to the plain codec (Utf8.h): so its rules hold everywhere.
#pragma once

#include <cstddef>

namespace vorel::kernels {

/// How far a stretch went. It fits into a register; one of a gigabyte goes no further.
struct Stretch {
    unsigned int read;
    unsigned int written;
};

/// The room behind what is written: whole vectors may be stored into it, or nothing.
enum class Tail { Free, Untouched };

/// Decodes what is well-formed from `bytes` on, up to a zero, of `left` bytes at most, while `out` has room for `room`
/// 16-bit units. Where nothing is done, the plain codec has to go on. Blocks are read that may reach beyond the text,
/// but not into another page.
Stretch decodeUtf8Avx2(const unsigned char* bytes, std::size_t left, void* out, std::size_t room, Tail tail) noexcept;

/// Encodes 16-bit units from `units` on, up to a zero, of `left` at most, while `out` has room for `room` bytes, into
/// which whole vectors may be stored. With `paired`, surrogates are taken in pairs, and one that stands alone is left;
/// otherwise each is taken for itself.
Stretch encodeUtf8Avx2(const void* units, std::size_t left, unsigned char* out, std::size_t room, bool paired) noexcept;

}  // namespace vorel::kernels
