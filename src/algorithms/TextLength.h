/// \file
/// The length of a zero-terminated text. The runtime's function is slow for short texts.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#include <emmintrin.h>

#include "algorithms/Pages.h"

namespace vorel::algorithms {

/// The number of bytes before the terminator. Reads may extend past it, but never into another page.
inline std::size_t textLength(const char* text) noexcept {
    constexpr std::uintptr_t kBlock = 16;
    const char* cursor = text;
    for (;;) {
        if (!isInPage(cursor, kBlock)) {
            if (*cursor == 0) {
                return static_cast<std::size_t>(cursor - text);
            }
            ++cursor;
            continue;
        }
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(cursor));
        const auto zeros = static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(block, _mm_setzero_si128())));
        if (zeros != 0) {
            return static_cast<std::size_t>(cursor - text) + static_cast<std::size_t>(std::countr_zero(zeros));
        }
        cursor += kBlock;
    }
}

}  // namespace vorel::algorithms
