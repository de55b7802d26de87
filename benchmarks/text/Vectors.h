/// \file
/// Short names for vector instructions. Only sources that are compiled for AVX2 may include this file.
#pragma once

#include <array>
#include <cstdint>

#include <immintrin.h>

namespace bench {

using Row = std::array<std::uint8_t, 16>;

inline __m128i load(const void* from) {
    return _mm_loadu_si128(static_cast<const __m128i*>(from));
}

inline __m256i load32(const void* from) {
    return _mm256_loadu_si256(static_cast<const __m256i*>(from));
}

inline void store(void* to, __m128i value) {
    _mm_storeu_si128(static_cast<__m128i*>(to), value);
}

inline void store32(void* to, __m256i value) {
    _mm256_storeu_si256(static_cast<__m256i*>(to), value);
}

inline __m128i shuffled(__m128i value, const Row& row) {
    return _mm_shuffle_epi8(value, load(row.data()));
}

inline std::uint32_t maskOf(__m256i bytes) {
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(bytes));
}

inline __m256i everyByte(int value) {
    return _mm256_set1_epi8(static_cast<char>(value));
}

inline __m256i everyUnit(int value) {
    return _mm256_set1_epi16(static_cast<short>(value));
}

}  // namespace bench
