/// \file
/// Converts the well-formed parts of UTF-8 and wide text with AVX2 (see Processor.h). The functions stop before a zero
/// or an ill-formed part. The callers continue there with the scalar codec (Utf8.h), so all results follow the codec's
/// rules.
#pragma once

#include <cstddef>

#if defined(__AVX2__)
#include <immintrin.h>

#include "algorithms/Attributes.h"
#include "algorithms/PageReads.h"
#endif

namespace vorel::algorithms {

/// The numbers of elements read and written. One call converts at most 2^30 elements, so 32 bits are enough for each
/// number, and the struct fits into one register.
struct Progress {
    unsigned int read;
    unsigned int written;
};

/// Whether the function may store whole vectors, and so overwrite units of the output after the decoded text.
enum class Overwrite { Allowed, Forbidden };

/// Decodes well-formed text from `bytes`, up to a zero, a byte above 0xF0, or an ill-formed part. Reads at most `left`
/// bytes of text and writes at most `capacity` 16-bit units. If the function makes no progress, the scalar codec must
/// continue. Reads may extend past the text, but not into a page after it.
Progress decodeUtf8Avx2(const unsigned char* bytes, std::size_t left, void* out, std::size_t capacity,
                        Overwrite overwrite) noexcept;

/// Encodes 16-bit units from `units`, up to a zero. Reads at most `left` units of text and writes at most `capacity`
/// bytes. Within the capacity, whole vectors may be stored, which overwrite bytes after the encoded text. If `paired`
/// is true, surrogates are read in pairs, and an unpaired surrogate stops the conversion. Otherwise each surrogate is
/// encoded separately.
Progress encodeUtf8Avx2(const void* units, std::size_t left, unsigned char* out, std::size_t capacity,
                        bool paired) noexcept;

/// Count the elements that the functions above would read and write with a sufficient capacity, but write nothing. The
/// counting may stop earlier than the conversion, but never within a character.
Progress countDecodedAvx2(const unsigned char* bytes, std::size_t left) noexcept;
Progress countEncodedAvx2(const void* units, std::size_t left, bool paired) noexcept;

#if defined(__AVX2__)

// ---- Helpers for decoding and encoding, for the sources compiled for AVX2. All functions are static. ---------------

inline constexpr Progress kNoProgress{0, 0};
inline constexpr unsigned int kMaxProgress = 1u << 30;

/// A shuffle for each mask of eight bits. The functions that create shuffles define the meaning of the bits.
struct Shuffles {
    unsigned char order[256][16];
};

static inline __m128i shuffled(__m128i elements, const Shuffles& shuffles, unsigned int mask) noexcept {
    return _mm_shuffle_epi8(elements, _mm_loadu_si128(reinterpret_cast<const __m128i*>(shuffles.order[mask])));
}

static inline __m128i loadBytes(const void* position) noexcept {
    return _mm_loadu_si128(static_cast<const __m128i*>(position));
}

/// The number of set bits.
static inline unsigned int countBits(unsigned int mask) noexcept {
    return static_cast<unsigned int>(_mm_popcnt_u32(mask));
}

/// The position of the lowest set bit of `mask`, 32 if none is set.
static inline unsigned int lowestBit(unsigned int mask) noexcept {
    return countBits((mask & (0 - mask)) - 1);
}

/// A mask of the lowest `count` bits. `count` must be below 32.
static inline unsigned int lowBits(unsigned int count) noexcept {
    return (1u << (count & 31)) - 1;
}

/// The bits of `mask` from `position` on. `position` must be below 32.
static inline unsigned int bitsFrom(unsigned int mask, unsigned int position) noexcept {
    return mask >> (position & 31);
}

static inline unsigned int atMost(unsigned int count, std::size_t limit) noexcept {
    return count < limit ? count : static_cast<unsigned int>(limit);
}

/// Hides the values of `constants` from the compiler, so that it reads them from memory. For compilers
/// other than GCC and clang, the function hides nothing.
template <class Constants>
VOREL_ALWAYS_INLINE static const Constants& hidden(const Constants& constants) noexcept {
    const Constants* address = &constants;
#if defined(__GNUC__)
    asm("" : "+r"(address));
#endif
    return *address;
}

/// A mask of the first `count` bytes of thirty-two. `count` must not exceed 32.
static inline __m256i firstBytes(unsigned int count) noexcept {
    static constexpr unsigned char kBytes[64] = {
        0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,
        0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,
    };
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(kBytes + 32 - count));
}

/// Masks with one bit for each of thirty-two bytes: `zerosIn` finds the zeros, and `bytesFrom` finds the bytes that are
/// at least `first`.
static inline unsigned int zerosIn(__m256i block) noexcept {
    return static_cast<unsigned int>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(block, _mm256_setzero_si256())));
}

static inline unsigned int bytesFrom(unsigned char first, __m256i block) noexcept {
    const __m256i isFrom = _mm256_cmpeq_epi8(_mm256_max_epu8(block, _mm256_set1_epi8(static_cast<char>(first))), block);
    return static_cast<unsigned int>(_mm256_movemask_epi8(isFrom));
}

/// Whether the text certainly continues in the next page. This is so if the `left` bytes that are left in the text do
/// not all lie in this page, and if the rest of this page has no zero, no byte above 0xF0, and no missing or surplus
/// trailing byte. Otherwise the result is false, because the next page may not be readable. The page of `bytes` must
/// have fewer than 32 bytes left. If a character began before `bytes`, `expected` has a bit for each of its trailing
/// bytes from `bytes` on.
[[maybe_unused]] VOREL_NOINLINE static bool continuesInNextPage(const unsigned char* bytes, std::size_t left,
                                                                unsigned int expected) noexcept {
    const auto rest = static_cast<unsigned int>(kPageBytes - offsetInPage(bytes));
    const unsigned int before = 32 - rest;
    const __m256i last = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes - before));
    const auto from = [&](unsigned char first) { return bytesFrom(first, last) >> before; };
    const unsigned int trailing = from(0x80) & ~from(0xC0);
    const unsigned int announced = from(0xC0) << 1 | from(0xE0) << 2 | from(0xF0) << 3 | expected;
    const bool isWellFormed = ((announced ^ trailing) & lowBits(rest)) == 0 && from(0xF1) == 0;
    return left > rest && isWellFormed && zerosIn(last) >> before == 0;
}

/// Like the function above, but for 16-bit units. Also returns false if a unit crosses the page border.
[[maybe_unused]] VOREL_NOINLINE static bool continuesInNextPage(const unsigned char* units,
                                                                std::size_t bytesLeft) noexcept {
    const auto rest = static_cast<unsigned int>(kPageBytes - offsetInPage(units));
    const unsigned int before = 32 - rest;
    const __m256i last = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(units - before));
    const __m256i isZero = _mm256_cmpeq_epi16(last, _mm256_setzero_si256());
    return bytesLeft > rest && rest % 2 == 0 && static_cast<unsigned int>(_mm256_movemask_epi8(isZero)) >> before == 0;
}

#endif

}  // namespace vorel::algorithms
