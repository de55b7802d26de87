/// \file
/// Counts and converts decimal and hexadecimal digits in blocks, without a branch per digit. The length of a number is
/// unpredictable, and one mispredicted branch takes as long as the whole conversion. A block has sixteen digits; a
/// block of hexadecimal digits in wide text has eight.
///
/// Reads may extend past either end of the text, but never into another page; characters outside the number are
/// ignored. SSE2 is part of every 64-bit x86 processor, so no dispatch is needed.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "algorithms/Ascii.h"
#include "algorithms/Attributes.h"
#include "algorithms/PageReads.h"
#include "algorithms/SimdBlocks.h"
#include "algorithms/Sse2.h"

namespace vorel::algorithms {

/// Characters per block.
inline constexpr std::uint64_t kDigitBlock = 16;

/// The powers of ten that fit into 64 bits.
inline constexpr auto kIntegerPowersOfTen = [] {
    std::array<std::uint64_t, 20> powers = {1};
    for (std::size_t power = 1; power != powers.size(); ++power) {
        powers[power] = powers[power - 1] * 10;
    }
    return powers;
}();

/// Whether one block before `position` and two blocks from `position` on lie in one page. If they do, all three blocks
/// are readable, wherever the text begins and ends.
template <class T>
bool areDigitBlocksInPage(const T* position) noexcept {
    constexpr std::uintptr_t kBlock = kDigitBlock * sizeof(T);
    return isInPageAround(position, kBlock, 2 * kBlock);
}

/// A mask of the digits in the block at `position`. The lowest bit belongs to the first character.
template <class T>
std::uint64_t digitMask(const T* position) noexcept {
    const __m128i values = _mm_sub_epi8(loadBlock(position), _mm_set1_epi8('0'));
    const __m128i isDigit = isAtMost(values, 9);
    return static_cast<std::uint64_t>(_mm_movemask_epi8(isDigit));
}

/// The number of digits at the start of a mask.
constexpr std::uint64_t leadingDigits(std::uint64_t mask) noexcept {
    // No mask has the top bit, so `~mask` always has it. The `|` only shows the compiler that the operand is not 0.
    constexpr std::uint64_t kEnd = std::uint64_t{1} << 63;
    return static_cast<std::uint64_t>(std::countr_zero(~mask | kEnd));
}

/// A mask of the last `count` bytes of a block.
inline __m128i lastBytes(std::uint64_t count) noexcept {
    static constexpr std::uint8_t kZerosThenOnes[2 * kDigitBlock] = {
        0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,
        0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(kZerosThenOnes + count));
}

/// The number formed by the last `count` characters of a block. All of them must be digits.
VOREL_ALWAYS_INLINE std::uint64_t valueOfLast(__m128i block, std::uint64_t count) noexcept {
    const __m128i digits = _mm_and_si128(_mm_sub_epi8(block, _mm_set1_epi8('0')), lastBytes(count));
    // Each step combines neighbours: first to numbers of two digits, then of four, then of eight. See Wojciech Muła,
    // "Parsing series of integers with SIMD".
    const __m128i tens = _mm_mullo_epi16(_mm_and_si128(digits, _mm_set1_epi16(0xFF)), _mm_set1_epi16(10));
    const __m128i twos = _mm_add_epi16(tens, _mm_srli_epi16(digits, 8));
    const __m128i fours = _mm_madd_epi16(twos, _mm_set1_epi32(1 << 16 | 100));
    const __m128i eights = _mm_madd_epi16(_mm_packs_epi32(fours, fours), _mm_set1_epi32(1 << 16 | 10000));
    const auto halves = static_cast<std::uint64_t>(_mm_cvtsi128_si64(eights));
    return (halves & 0xFFFFFFFF) * kIntegerPowersOfTen[8] + (halves >> 32);
}

/// The number formed by the `count` digits from `position` on. `count` is at most one block.
template <class T>
VOREL_ALWAYS_INLINE std::uint64_t valueOfDigits(const T* position, std::uint64_t count) noexcept {
    return valueOfLast(loadBlock(position + count - kDigitBlock), count);
}

/// The integer that the digits before and after a point form together. `whole` digits are before the point and
/// `fraction` digits after it, at most one block of digits in total.
template <class T>
VOREL_ALWAYS_INLINE std::uint64_t valueAcrossPoint(const T* position, std::uint64_t whole,
                                                   std::uint64_t fraction) noexcept {
    // The digits are loaded twice, because the point must be left out. `fractionAtEnd` ends with the last digit.
    // `wholeInPlace` begins one character earlier, so each character is one byte further towards its end. There, the
    // last digit before the point is directly before the first byte of the fraction in `fractionAtEnd`.
    const T* const lastBlock = position + whole + fraction - kDigitBlock;
    const __m128i fractionAtEnd = loadBlock(lastBlock + 1);
    const __m128i wholeInPlace = loadBlock(lastBlock);
    const __m128i isFraction = lastBytes(fraction);
    const __m128i digits =
        _mm_or_si128(_mm_and_si128(fractionAtEnd, isFraction), _mm_andnot_si128(isFraction, wholeInPlace));
    return valueOfLast(digits, whole + fraction);
}

// ---- Hexadecimal digits ---------------------------------------------------------------------------------------------

/// The number of characters that `hexBlock` loads: the characters in sixteen bytes.
template <class T>
inline constexpr std::uint64_t kHexBlock = 16 / sizeof(T);

/// Sixteen narrow characters; or eight wide characters as bytes, and eight zeros after them.
VOREL_NO_SANITIZE_ADDRESS inline __m128i hexBlock(const char* position) noexcept {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(position));
}

VOREL_NO_SANITIZE_ADDRESS inline __m128i hexBlock(const WideUnit* position) noexcept {
    return _mm_packus_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(position)), _mm_setzero_si128());
}

/// A block of characters as hexadecimal digits.
struct HexDigits {
    explicit HexDigits(__m128i characters) noexcept {
        const __m128i isDecimal = isAtMost(_mm_sub_epi8(characters, _mm_set1_epi8('0')), 9);
        const __m128i folded = _mm_or_si128(characters, _mm_set1_epi8(static_cast<char>(kCaseBit)));
        const __m128i isLetter = isAtMost(_mm_sub_epi8(folded, _mm_set1_epi8('a')), 5);
        // For a letter, 9 is added, because the lower four bits of 'A' and 'a' are 1.
        values = _mm_add_epi8(_mm_and_si128(characters, _mm_set1_epi8(15)), _mm_and_si128(isLetter, _mm_set1_epi8(9)));
        mask = static_cast<std::uint64_t>(_mm_movemask_epi8(_mm_or_si128(isDecimal, isLetter)));
    }

    __m128i values;      ///< below 16, even for characters that are not digits
    std::uint64_t mask;  ///< the bits of digits are set; the lowest bit belongs to the first character
};

/// The bytes in reverse order. Compilers translate this to one instruction.
constexpr std::uint64_t reversedBytes(std::uint64_t value) noexcept {
    value = (value & 0x00FF00FF00FF00FF) << 8 | (value >> 8 & 0x00FF00FF00FF00FF);
    value = (value & 0x0000FFFF0000FFFF) << 16 | (value >> 16 & 0x0000FFFF0000FFFF);
    return value << 32 | value >> 32;
}

/// The value of the first `count` digits, at most sixteen.
inline std::uint64_t valueOfHexDigits(const HexDigits& digits, std::uint64_t count) noexcept {
    const __m128i pairs = _mm_or_si128(_mm_slli_epi16(digits.values, 4), _mm_srli_epi16(digits.values, 8));
    const __m128i bytes = _mm_packus_epi16(_mm_and_si128(pairs, _mm_set1_epi16(0xFF)), _mm_setzero_si128());
    const std::uint64_t all = reversedBytes(static_cast<std::uint64_t>(_mm_cvtsi128_si64(bytes)));
    const std::uint64_t unused = kDigitBlock - count;
    return all >> 2 * unused >> 2 * unused;  // two shifts, because a shift by 64 bits is undefined
}

}  // namespace vorel::algorithms
