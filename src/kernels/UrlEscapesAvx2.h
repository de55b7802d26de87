/// \file
/// The tables of UrlEscapes.h over many bytes with AVX2, for processors that have it (Processor.h says so).
#pragma once

#include <cstddef>

#include "kernels/UrlEscapes.h"

namespace vorel::kernels {

/// What was done with a text: how much of it, and what that comes to.
struct UrlProgress {
    std::size_t read;
    std::size_t written;
};

/// Counts the characters that whole blocks of `count` bytes become.
UrlProgress measureUrlAvx2(const char* text, std::size_t count, const UrlTable& table) noexcept;

/// Bytes that may be written after the encoded text.
inline constexpr std::size_t kUrlOverhang = 32;

/// Encodes whole blocks of `count` bytes while another block follows them, and while the encoded block and
/// `kUrlOverhang` fit into what is left of `room`. Never writes more than `room` bytes, even if another thread changes
/// the text during the call.
UrlProgress encodeUrlAvx2(const char* text, std::size_t count, const UrlTable& table, char* out,
                          std::size_t room) noexcept;

}  // namespace vorel::kernels
