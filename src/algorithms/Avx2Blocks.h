/// \file
/// Loads characters of either width as bytes. Only for sources compiled for AVX2.
#pragma once

#include <immintrin.h>

#include "algorithms/WideUnit.h"

namespace vorel::algorithms {

/// Thirty-two characters as bytes. Units above 255 become 0 or 255.
static inline __m256i loadBytes(const char* text) noexcept {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(text));
}

static inline __m256i loadBytes(const WideUnit* text) noexcept {
    const auto* const units = reinterpret_cast<const __m256i*>(text);
    const __m256i packed = _mm256_packus_epi16(_mm256_loadu_si256(units), _mm256_loadu_si256(units + 1));
    return _mm256_permute4x64_epi64(packed, 0xD8);
}

}  // namespace vorel::algorithms
