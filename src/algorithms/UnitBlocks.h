/// \file
/// Copies UTF-16 units, eight at a time. SSE2 is part of every 64-bit x86 processor, so no dispatch is needed.
#pragma once

#include <cstddef>
#include <cstdint>

#include <emmintrin.h>

#include "algorithms/WideUnit.h"

namespace vorel::algorithms {

/// Units per block.
inline constexpr std::size_t kUnitBlock = 8;

/// Copies `count` units in whole blocks. Returns whether one of them is `a` or `b`. Source and target need capacity for
/// whole blocks; units copied past `count` are unspecified.
inline bool copyAndFind(const WideUnit* from, std::size_t count, WideUnit a, WideUnit b, WideUnit* to) noexcept {
    const __m128i first = _mm_set1_epi16(static_cast<short>(a));
    const __m128i second = _mm_set1_epi16(static_cast<short>(b));
    __m128i found = _mm_setzero_si128();
    std::size_t done = 0;
    for (; done + kUnitBlock < count; done += kUnitBlock) {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + done));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to + done), block);
        found = _mm_or_si128(found, _mm_or_si128(_mm_cmpeq_epi16(block, first), _mm_cmpeq_epi16(block, second)));
    }
    if (done == count) {
        return false;
    }
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + done));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to + done), block);
    const __m128i last = _mm_or_si128(_mm_cmpeq_epi16(block, first), _mm_cmpeq_epi16(block, second));
    const auto counted = static_cast<unsigned int>(2 * (count - done));  // two bits for each unit
    const std::uint32_t lastMask = static_cast<std::uint32_t>(_mm_movemask_epi8(last)) & ((1u << counted) - 1);
    return (static_cast<std::uint32_t>(_mm_movemask_epi8(found)) | lastMask) != 0;
}

}  // namespace vorel::algorithms
