// Compiled for AVX2. Do not use standard library functions that are emitted out of line, because the linker could use
// the AVX2 copy of such a function in the whole program.

#include "algorithms/DaylightText.h"

#include <cstddef>

#include <immintrin.h>

#include "algorithms/Sextets.h"
#include "algorithms/SimdBlocks.h"

namespace vorel::algorithms {

namespace {

constexpr std::size_t kGroups = kSextetBlockCharacters / 4;  // per block

/// Looks up the values of characters by row and column (see `SextetRows`).
class Rows {
public:
    /// The bytes that 32 characters decode to, twelve in each half.
    [[nodiscard]] __m256i bytesOf(__m256i characters) const noexcept {
        const __m256i row = _mm256_and_si256(_mm256_srli_epi16(characters, 4), _mm256_set1_epi8(15));
        const __m256i isIrregular = _mm256_cmpeq_epi8(row, _mm256_set1_epi8(SextetRows::kIrregularRow));
        const __m256i offset = _mm256_blendv_epi8(_mm256_shuffle_epi8(m_offsetOfRow, row),
                                                  _mm256_shuffle_epi8(m_irregularOffset, characters), isIrregular);
        const __m256i values = _mm256_add_epi8(characters, offset);
        return packSextets(_mm256_andnot_si256(notInTable(characters, m_rowsOfColumn), values));
    }

private:
    __m256i m_rowsOfColumn = loadTwice(kDaylightRows.rowsOfColumn);
    __m256i m_offsetOfRow = loadTwice(kDaylightRows.offsetOfRow);
    __m256i m_irregularOffset = loadTwice(kDaylightRows.irregularOffset);
};

template <class T>
void decode(const T* text, std::size_t groups, unsigned char* out) noexcept {
    const Rows rows;
    const auto decodeBlock = [&](std::size_t group, auto storeLast) {
        const __m256i halves = rows.bytesOf(loadWideBlock(text + 4 * group));
        auto* const to = out + 3 * group;
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm256_castsi256_si128(halves));
        storeLast(_mm256_extracti128_si256(halves, 1), to + kSextetBlockBytes / 2);
    };
    std::size_t done = 0;
    // Each block of this loop stores four bytes beyond its own output. The next block overwrites them.
    for (; groups - done > kGroups + 1; done += kGroups) {
        decodeBlock(done,
                    [](__m128i bytes, unsigned char* to) { _mm_storeu_si128(reinterpret_cast<__m128i*>(to), bytes); });
    }
    const auto storeTwelve = [](__m128i bytes, unsigned char* to) {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(to), bytes);
        _mm_storeu_si32(to + 8, _mm_srli_si128(bytes, 8));
    };
    if (groups - done > kGroups) {
        decodeBlock(done, storeTwelve);
    }
    decodeBlock(groups - kGroups, storeTwelve);  // may decode some groups a second time
}

}  // namespace

void decodeDaylightAvx2(const char* text, std::size_t groups, unsigned char* out) noexcept {
    decode(text, groups, out);
}

void decodeDaylightAvx2(const WideUnit* text, std::size_t groups, unsigned char* out) noexcept {
    decode(text, groups, out);
}

}  // namespace vorel::algorithms
