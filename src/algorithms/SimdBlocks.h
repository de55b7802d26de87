/// \file
/// Loads and stores vectors of characters of either width. SSE2 is part of every 64-bit x86 processor; the functions
/// for AVX2 exist only in sources compiled for AVX2.
///
/// All functions are static, because otherwise the rest of the program could call a copy that was compiled for AVX2.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "algorithms/Attributes.h"
#include "algorithms/Sse2.h"

namespace vorel::algorithms {

/// The character type of wide text, with units of 16 bits. `wchar_t` is larger on most systems other than Windows, so
/// the algorithms are compiled with another type there.
using WideUnit = std::conditional_t<sizeof(wchar_t) == 2, wchar_t, char16_t>;

/// Sixteen characters as bytes. Units above 255 become 0 or 255. The attribute switches AddressSanitizer off, because a
/// block may extend into another object of the same page.
VOREL_NO_SANITIZE_ADDRESS static inline __m128i loadBlock(const char* position) noexcept {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(position));
}

VOREL_NO_SANITIZE_ADDRESS static inline __m128i loadBlock(const WideUnit* position) noexcept {
    const auto* const units = reinterpret_cast<const __m128i*>(position);
    return _mm_packus_epi16(_mm_loadu_si128(units), _mm_loadu_si128(units + 1));
}

/// Writes sixteen characters.
static inline void storeCharacters(__m128i characters, char* out) noexcept {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), characters);
}

static inline void storeCharacters(__m128i characters, WideUnit* out) noexcept {
    auto* const units = reinterpret_cast<__m128i*>(out);
    _mm_storeu_si128(units, _mm_unpacklo_epi8(characters, _mm_setzero_si128()));
    _mm_storeu_si128(units + 1, _mm_unpackhi_epi8(characters, _mm_setzero_si128()));
}

/// For each byte, 0xFF if it is at most `limit`, and 0 otherwise.
static inline __m128i isAtMost(__m128i bytes, unsigned char limit) noexcept {
    return _mm_cmpeq_epi8(_mm_min_epu8(bytes, _mm_set1_epi8(static_cast<char>(limit))), bytes);
}

/// Stores the first `count` bytes, at most sixteen, and writes nothing past them.
static inline void storeFirstBytes(__m128i bytes, std::size_t count, void* to) noexcept {
    auto* out = static_cast<unsigned char*>(to);
    if (count == 16) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out), bytes);
        return;
    }
    if ((count & 8) != 0) {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out), bytes);
        bytes = _mm_srli_si128(bytes, 8);
        out += 8;
    }
    auto rest = static_cast<std::uint64_t>(_mm_cvtsi128_si64(bytes));
    if ((count & 4) != 0) {
        std::memcpy(out, &rest, 4);
        rest >>= 32;
        out += 4;
    }
    if ((count & 2) != 0) {
        std::memcpy(out, &rest, 2);
        rest >>= 16;
        out += 2;
    }
    if ((count & 1) != 0) {
        *out = static_cast<unsigned char>(rest);
    }
}

/// Writes `count` zeros. For 16 to 64 bytes, this is faster than the runtime's function.
static inline void fillWithZeros(void* to, std::size_t count) noexcept {
    constexpr std::size_t kBlock = 16;
    constexpr std::size_t kMax = 4 * kBlock;
    if (count < kBlock || count > kMax) {
        std::memset(to, 0, count);
        return;
    }
    // Writes four blocks. Each begins at most one block after the previous one, so they leave no gap. The last block
    // ends at the last byte.
    const std::size_t last = count - kBlock;
    for (std::size_t block = 0; block != 4; ++block) {
        auto* const position = static_cast<unsigned char*>(to) + last * block / 3;
        _mm_storeu_si128(reinterpret_cast<__m128i*>(position), _mm_setzero_si128());
    }
}

#if defined(__AVX2__)

// ---- AVX2 -----------------------------------------------------------------------------------------------------------

/// Thirty-two characters as bytes. Units above 255 become 0 or 255.
static inline __m256i loadWideBlock(const char* text) noexcept {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(text));
}

static inline __m256i loadWideBlock(const WideUnit* text) noexcept {
    const auto* const units = reinterpret_cast<const __m256i*>(text);
    const __m256i packed = _mm256_packus_epi16(_mm256_loadu_si256(units), _mm256_loadu_si256(units + 1));
    return _mm256_permute4x64_epi64(packed, 0xD8);
}

/// The same sixteen bytes in both halves.
static inline __m256i loadTwice(const void* sixteen) noexcept {
    return _mm256_broadcastsi128_si256(_mm_loadu_si128(static_cast<const __m128i*>(sixteen)));
}

/// Writes thirty-two characters.
static inline void storeCharacters(__m256i characters, char* out) noexcept {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), characters);
}

static inline void storeCharacters(__m256i characters, WideUnit* out) noexcept {
    auto* const units = reinterpret_cast<__m256i*>(out);
    const __m256i halves = _mm256_permute4x64_epi64(characters, 0xD8);  // each half is unpacked separately
    _mm256_storeu_si256(units, _mm256_unpacklo_epi8(halves, _mm256_setzero_si256()));
    _mm256_storeu_si256(units + 1, _mm256_unpackhi_epi8(halves, _mm256_setzero_si256()));
}

static inline __m256i isAtMost(__m256i bytes, unsigned char limit) noexcept {
    return _mm256_cmpeq_epi8(_mm256_min_epu8(bytes, _mm256_set1_epi8(static_cast<char>(limit))), bytes);
}

/// In each half, packs sixteen values of six bits into twelve bytes, followed by four zeros. For the method, see
/// Wojciech Muła and Daniel Lemire, "Faster Base64 Encoding and Decoding Using AVX2 Instructions".
static inline __m256i packSextets(__m256i values) noexcept {
    const __m256i twelveBits = _mm256_maddubs_epi16(values, _mm256_set1_epi32(0x01400140));
    const __m256i groups = _mm256_madd_epi16(twelveBits, _mm256_set1_epi32(0x00011000));
    return _mm256_shuffle_epi8(groups, _mm256_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1,  //
                                                        2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1));
}

/// The top bits of all bytes, lowest byte first.
static inline unsigned int maskOf(__m128i bytes) noexcept {
    return static_cast<unsigned int>(_mm_movemask_epi8(bytes));
}

static inline unsigned int maskOf(__m256i bytes) noexcept {
    return static_cast<unsigned int>(_mm256_movemask_epi8(bytes));
}

/// For each character, 0xFF if the character is not in the table, and 0 otherwise. The table has a bit for each
/// character below 128. The upper four bits of a character select a row, the lower four bits select a column. Each byte
/// of `rowsOfColumn` belongs to a column and has one bit for each row.
static inline __m256i notInTable(__m256i characters, __m256i rowsOfColumn) noexcept {
    const __m256i bitOfRow = _mm256_setr_epi8(1, 2, 4, 8, 16, 32, 64, -128, 0, 0, 0, 0, 0, 0, 0, 0,  //
                                              1, 2, 4, 8, 16, 32, 64, -128, 0, 0, 0, 0, 0, 0, 0, 0);
    const __m256i row = _mm256_and_si256(_mm256_srli_epi16(characters, 4), _mm256_set1_epi8(15));
    const __m256i rows = _mm256_shuffle_epi8(rowsOfColumn, characters);
    const __m256i known = _mm256_and_si256(rows, _mm256_shuffle_epi8(bitOfRow, row));
    return _mm256_cmpeq_epi8(known, _mm256_setzero_si256());
}

#endif

}  // namespace vorel::algorithms
