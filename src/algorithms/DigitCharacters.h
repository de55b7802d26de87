/// \file
/// Formats sixteen decimal digits in one register and stores them as text of either width.
#pragma once

#include <cstdint>

#include <emmintrin.h>

#include "algorithms/WideUnit.h"

namespace vorel::algorithms {

/// A number below 10^8 as two groups of four digits, the upper group in the lower half.
constexpr std::uint64_t groupsOfFour(std::uint64_t number) noexcept {
    return number / 10000 | number % 10000 << 32;
}

/// The sixteen digits of a number below 10^16, with leading zeros.
inline __m128i sixteenDigits(std::uint64_t number) noexcept {
    constexpr std::uint64_t kHalf = 100000000;
    const auto upper = static_cast<std::int64_t>(groupsOfFour(number / kHalf));
    const auto lower = static_cast<std::int64_t>(groupsOfFour(number % kHalf));
    const __m128i fours = _mm_set_epi64x(lower, upper);
    // Division by multiplication (Granlund and Montgomery, "Division by Invariant Integers using Multiplication"): x *
    // 5243 / 2^19 is x / 100 below 10,000, and x * 6554 / 2^16 is x / 10 below 100.
    const __m128i hundreds = _mm_srli_epi16(_mm_mulhi_epu16(fours, _mm_set1_epi32(5243)), 3);
    const __m128i belowHundred = _mm_sub_epi16(fours, _mm_mullo_epi16(hundreds, _mm_set1_epi32(100)));
    const __m128i twos = _mm_or_si128(hundreds, _mm_slli_epi32(belowHundred, 16));
    const __m128i tens = _mm_mulhi_epu16(twos, _mm_set1_epi16(6554));
    const __m128i ones = _mm_sub_epi16(twos, _mm_mullo_epi16(tens, _mm_set1_epi16(10)));
    return _mm_add_epi8(_mm_or_si128(tens, _mm_slli_epi16(ones, 8)), _mm_set1_epi8('0'));
}

/// One bit for each of sixteen characters, lowest first: whether it is not '0'.
inline std::uint32_t nonZeroMask(__m128i digits) noexcept {
    const int zeros = _mm_movemask_epi8(_mm_cmpeq_epi8(digits, _mm_set1_epi8('0')));
    return static_cast<std::uint32_t>(zeros) ^ 0xFFFF;
}

/// Writes sixteen characters.
inline void storeCharacters(__m128i characters, char* out) noexcept {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), characters);
}

inline void storeCharacters(__m128i characters, WideUnit* out) noexcept {
    auto* const units = reinterpret_cast<__m128i*>(out);
    _mm_storeu_si128(units, _mm_unpacklo_epi8(characters, _mm_setzero_si128()));
    _mm_storeu_si128(units + 1, _mm_unpackhi_epi8(characters, _mm_setzero_si128()));
}

}  // namespace vorel::algorithms
