/// \file
/// The AVX2 versions of the encoder over the tables of UrlEscapes.h (see Processor.h).
#pragma once

#include <cstddef>

#include "algorithms/UrlEscapes.h"

namespace vorel::algorithms {

/// The number of bytes read, and of characters written or counted.
struct UrlProgress {
    std::size_t read;
    std::size_t written;
};

/// Counts the encoded characters of the whole blocks among `count` bytes.
UrlProgress measureUrlAvx2(const char* text, std::size_t count, const UrlTable& table) noexcept;

/// Bytes that may be written past the encoded text.
inline constexpr std::size_t kUrlOverhang = 32;

/// Encodes whole blocks of `count` bytes while another block follows, and while the encoded block and `kUrlOverhang`
/// bytes fit into the rest of `capacity`. Never writes more than `capacity` bytes, even if another thread changes the
/// text during the call.
UrlProgress encodeUrlAvx2(const char* text, std::size_t count, const UrlTable& table, char* out,
                          std::size_t capacity) noexcept;

}  // namespace vorel::algorithms
