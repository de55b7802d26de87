/// \file
/// Converts the well-formed parts of UTF-8 and wide text with AVX2 (see Processor.h). Zeros and ill-formed parts are
/// left to the scalar codec (Utf8.h), so its rules apply everywhere.
#pragma once

#include <cstddef>

namespace vorel::algorithms {

/// Elements read and written. It fits into a register; one call converts at most 2^30 elements.
struct Progress {
    unsigned int read;
    unsigned int written;
};

/// Whether whole vectors may be stored past the written units.
enum class Overwrite { Allowed, Forbidden };

/// Decodes well-formed text from `bytes`, up to a zero, at most `left` bytes and `capacity` 16-bit units. If it returns
/// no progress, the scalar codec must continue. Reads may extend past the text, but not into another page.
Progress decodeUtf8Avx2(const unsigned char* bytes, std::size_t left, void* out, std::size_t capacity,
                        Overwrite overwrite) noexcept;

/// Encodes 16-bit units from `units`, up to a zero, at most `left` units and `capacity` bytes. Whole vectors may be
/// stored within the capacity. With `paired`, surrogates are read in pairs and an unpaired one stops the conversion;
/// otherwise each is a value.
Progress encodeUtf8Avx2(const void* units, std::size_t left, unsigned char* out, std::size_t capacity,
                        bool paired) noexcept;

}  // namespace vorel::algorithms
