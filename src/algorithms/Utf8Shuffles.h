/// \file
/// Helpers of both directions of the AVX2 codec. Only for sources compiled for AVX2; all functions are static.
#pragma once

#include <cstddef>
#include <cstdint>

#include <immintrin.h>

#include "algorithms/Pages.h"
#include "algorithms/PartialStore.h"
#include "algorithms/Utf8Avx2.h"

namespace vorel::algorithms {

inline constexpr Progress kNoProgress{0, 0};
inline constexpr unsigned int kMaxProgress = 1u << 30;

/// Shuffles for a mask of eight elements or bytes: the kept ones move to the front.
struct Shuffles {
    unsigned char order[256][16];
};

static inline __m128i shuffled(__m128i elements, const Shuffles& shuffles, unsigned int mask) noexcept {
    return _mm_shuffle_epi8(elements, _mm_loadu_si128(reinterpret_cast<const __m128i*>(shuffles.order[mask])));
}

static inline __m128i load(const void* position) noexcept {
    return _mm_loadu_si128(static_cast<const __m128i*>(position));
}

/// The number of set bits.
static inline unsigned int bits(unsigned int mask) noexcept {
    return static_cast<unsigned int>(_mm_popcnt_u32(mask));
}

static inline unsigned int maskOf(__m128i bytes) noexcept {
    return static_cast<unsigned int>(_mm_movemask_epi8(bytes));
}

/// The position of the lowest set bit of `mask`, 32 if none is set.
static inline unsigned int lowestBit(unsigned int mask) noexcept {
    return bits((mask & (0 - mask)) - 1);
}

/// A mask of the lower `count` bits, fewer than 32.
static inline unsigned int lowBits(unsigned int count) noexcept {
    return (1u << (count & 31)) - 1;
}

/// The bits from `position` on, which is below 32.
static inline unsigned int bitsFrom(unsigned int mask, unsigned int position) noexcept {
    return mask >> (position & 31);
}

static inline unsigned int atMost(unsigned int count, std::size_t limit) noexcept {
    return count < limit ? count : static_cast<unsigned int>(limit);
}

}  // namespace vorel::algorithms
