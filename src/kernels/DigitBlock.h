/// \file
/// Decimal digits, sixteen at a time: how many there are, and what they are worth, without a branch for each of them.
/// Where a number ends cannot be guessed, and a wrong guess costs as much as the whole of this.
///
/// Text is read in blocks that may reach beyond either of its ends, but never into another page; what does not belong
/// to the number does not count. SSE2 is part of every 64-bit x86 processor, so there is nothing to dispatch.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

#include <emmintrin.h>

#include "kernels/WideUnit.h"

namespace vorel::kernels {

/// The characters of a block.
inline constexpr std::uint64_t kDigitBlock = 16;

/// The powers of ten that 64 bits hold.
inline constexpr auto kIntegerPowersOfTen = [] {
    std::array<std::uint64_t, 20> powers = {1};
    for (std::size_t power = 1; power != powers.size(); ++power) {
        powers[power] = powers[power - 1] * 10;
    }
    return powers;
}();

/// Whether one block before `place` and two from there on lie in one page: then they can be read, wherever in them the
/// text begins and ends.
template <class T>
bool isWithinPage(const T* place) noexcept {
    constexpr std::uintptr_t kPage = 4096;
    constexpr std::uintptr_t kBlock = kDigitBlock * sizeof(T);
    return reinterpret_cast<std::uintptr_t>(place) % kPage - kBlock <= kPage - 3 * kBlock;
}

/// Sixteen characters as bytes. Units that are no bytes become 0 or 255. The attribute: what a block reaches into
/// beyond the text may be another object of the same page, which is no mistake here.
[[gnu::no_sanitize_address]] inline __m128i loadBlock(const char* place) noexcept {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(place));
}

[[gnu::no_sanitize_address]] inline __m128i loadBlock(const WideUnit* place) noexcept {
    const auto* const units = reinterpret_cast<const __m128i*>(place);
    return _mm_packus_epi16(_mm_loadu_si128(units), _mm_loadu_si128(units + 1));
}

/// A bit for each character of the block at `place`, the lowest for the first: whether it is a digit.
template <class T>
std::uint64_t digitMask(const T* place) noexcept {
    const __m128i values = _mm_sub_epi8(loadBlock(place), _mm_set1_epi8('0'));
    const __m128i isDigit = _mm_cmpeq_epi8(_mm_min_epu8(values, _mm_set1_epi8(9)), values);
    return static_cast<std::uint64_t>(_mm_movemask_epi8(isDigit));
}

/// How many digits stand at the begin of a mask.
constexpr std::uint64_t leadingDigits(std::uint64_t mask) noexcept {
    constexpr std::uint64_t kEnd = std::uint64_t{1} << 63;  // no mask is that long; there is always a bit to be found
    return static_cast<std::uint64_t>(std::countr_zero(~mask | kEnd));
}

/// Ones in the last `count` bytes of a block.
inline __m128i lastBytes(std::uint64_t count) noexcept {
    static constexpr std::uint8_t kZerosThenOnes[2 * kDigitBlock] = {
        0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,
        0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(kZerosThenOnes + count));
}

/// The value of the last `count` characters of a block, all of them digits.
[[gnu::always_inline]] inline std::uint64_t valueOfLast(__m128i block, std::uint64_t count) noexcept {
    const __m128i digits = _mm_and_si128(_mm_sub_epi8(block, _mm_set1_epi8('0')), lastBytes(count));
    // Neighbours are put together: to two digits in 16 bits each, to four in 32, to eight in 32.
    const __m128i tens = _mm_mullo_epi16(_mm_and_si128(digits, _mm_set1_epi16(0xFF)), _mm_set1_epi16(10));
    const __m128i twos = _mm_add_epi16(tens, _mm_srli_epi16(digits, 8));
    const __m128i fours = _mm_madd_epi16(twos, _mm_set1_epi32(1 << 16 | 100));
    const __m128i eights = _mm_madd_epi16(_mm_packs_epi32(fours, fours), _mm_set1_epi32(1 << 16 | 10000));
    const auto halves = static_cast<std::uint64_t>(_mm_cvtsi128_si64(eights));
    return (halves & 0xFFFFFFFF) * kIntegerPowersOfTen[8] + (halves >> 32);
}

/// The value of the `count` digits at `place`, a block of them at most.
template <class T>
[[gnu::always_inline]] inline std::uint64_t valueOfDigits(const T* place, std::uint64_t count) noexcept {
    return valueOfLast(loadBlock(place + count - kDigitBlock), count);
}

/// The value of the `whole` digits at `place` and of the `fraction` digits behind the point that follows them, as one
/// number; a block of them at most.
template <class T>
[[gnu::always_inline]] inline std::uint64_t valueAcrossPoint(const T* place, std::uint64_t whole,
                                                             std::uint64_t fraction) noexcept {
    // The same digits twice, the second time one place to the left: there the point stands where the fraction begins.
    const T* const lastBlock = place + whole + fraction - kDigitBlock;
    const __m128i fractionAtEnd = loadBlock(lastBlock + 1);
    const __m128i wholeInPlace = loadBlock(lastBlock);
    const __m128i isFraction = lastBytes(fraction);
    const __m128i digits =
        _mm_or_si128(_mm_and_si128(fractionAtEnd, isFraction), _mm_andnot_si128(isFraction, wholeInPlace));
    return valueOfLast(digits, whole + fraction);
}

}  // namespace vorel::kernels
