// Compiled for AVX2. Do not use standard library functions that are emitted out of line, because the linker could use
// the AVX2 copy of such a function in the whole program.

#include "algorithms/TextLength.h"

#include <bit>
#include <cstddef>

#include <immintrin.h>

#include "algorithms/PageReads.h"
#include "algorithms/SimdBlocks.h"

namespace vorel::algorithms {

namespace {

/// Operations on a register that contains units of one width.
template <class T>
struct Units;

template <>
struct Units<char> {
    static __m256i smaller(__m256i a, __m256i b) noexcept { return _mm256_min_epu8(a, b); }
    static __m256i isZero(__m256i units) noexcept { return _mm256_cmpeq_epi8(units, _mm256_setzero_si256()); }
};

template <>
struct Units<WideUnit> {
    static __m256i smaller(__m256i a, __m256i b) noexcept { return _mm256_min_epu16(a, b); }
    static __m256i isZero(__m256i units) noexcept { return _mm256_cmpeq_epi16(units, _mm256_setzero_si256()); }
};

constexpr std::size_t kBlock = 32;  // bytes

template <class T>
__m256i load(const T* units) noexcept {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(units));
}

template <class T>
std::size_t count(const T* text) noexcept {
    constexpr std::size_t kUnits = kBlock / sizeof(T);
    const T* cursor = text;
    for (;;) {
        std::size_t blocks = (kPageBytes - offsetInPage(cursor)) / kBlock;
        for (; blocks >= 4; blocks -= 4, cursor += 4 * kUnits) {
            const __m256i smallest =
                Units<T>::smaller(Units<T>::smaller(load(cursor), load(cursor + kUnits)),
                                  Units<T>::smaller(load(cursor + 2 * kUnits), load(cursor + 3 * kUnits)));
            if (maskOf(Units<T>::isZero(smallest)) != 0) {
                break;
            }
        }
        for (; blocks != 0; --blocks, cursor += kUnits) {
            if (const unsigned int zeros = maskOf(Units<T>::isZero(load(cursor))); zeros != 0) {
                return static_cast<std::size_t>(cursor - text) +
                       static_cast<std::size_t>(std::countr_zero(zeros)) / sizeof(T);
            }
        }
        // Unit by unit up to the next page, because the text may end before that page.
        for (; !isInPage(cursor, kBlock); ++cursor) {
            if (*cursor == 0) {
                return static_cast<std::size_t>(cursor - text);
            }
        }
    }
}

}  // namespace

std::size_t countUnitsAvx2(const char* text) noexcept {
    return count(text);
}

std::size_t countUnitsAvx2(const WideUnit* text) noexcept {
    return count(text);
}

}  // namespace vorel::algorithms
