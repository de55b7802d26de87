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

/// Encodes whole blocks of `count` bytes while a second one stands behind them. Behind what counts, a block more is
/// written.
UrlProgress encodeUrlAvx2(const char* text, std::size_t count, const UrlTable& table, char* out) noexcept;

/// What may be written behind the text.
inline constexpr std::size_t kUrlOverhang = 32;

}  // namespace vorel::kernels
