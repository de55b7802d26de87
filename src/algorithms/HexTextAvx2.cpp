// Compiled for AVX2. Do not use standard library functions that are emitted out of line: the linker could use the AVX2
// copy for the rest of the program.

#include "algorithms/HexText.h"

#include <cstddef>

#include <immintrin.h>

#include "algorithms/Ascii.h"
#include "algorithms/SimdBlocks.h"

namespace vorel::algorithms {

namespace {

template <class T>
std::size_t decode(const T* text, std::size_t blocks, unsigned char* out) noexcept {
    std::size_t done = 0;
    for (; done < blocks; ++done, text += 32, out += 16) {
        const __m256i block = loadWideBlock(text);
        const __m256i decimal = _mm256_sub_epi8(block, _mm256_set1_epi8('0'));
        const __m256i letter =
            _mm256_sub_epi8(_mm256_or_si256(block, _mm256_set1_epi8(char{kCaseBit})), _mm256_set1_epi8('a'));
        const __m256i isDecimal = isAtMost(decimal, 9);
        const __m256i isLetter = isAtMost(letter, 5);
        if (_mm256_movemask_epi8(_mm256_or_si256(isDecimal, isLetter)) != -1) {
            break;
        }
        const __m256i values = _mm256_blendv_epi8(_mm256_add_epi8(letter, _mm256_set1_epi8(10)), decimal, isDecimal);
        const __m256i bytes = _mm256_maddubs_epi16(values, _mm256_set1_epi16(0x0110));  // weights 16 and 1
        const __m256i packed = _mm256_permute4x64_epi64(_mm256_packus_epi16(bytes, bytes), 0x08);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm256_castsi256_si128(packed));
    }
    return done;
}

}  // namespace

std::size_t decodeHexAvx2(const char* text, std::size_t blocks, unsigned char* out) noexcept {
    return decode(text, blocks, out);
}

std::size_t decodeHexAvx2(const WideUnit* text, std::size_t blocks, unsigned char* out) noexcept {
    return decode(text, blocks, out);
}

}  // namespace vorel::algorithms
