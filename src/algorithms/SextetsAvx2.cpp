// Compiled for AVX2. Do not use standard library functions that are emitted out of line: the linker could use the AVX2
// copy for the rest of the program.
//
// Unpacking and packing follow Wojciech Muła and Daniel Lemire, "Faster Base64 Encoding and Decoding Using AVX2
// Instructions".

#include "algorithms/Sextets.h"

#include <cstddef>
#include <cstdint>

#include <immintrin.h>

#include "algorithms/PageReads.h"
#include "algorithms/SimdBlocks.h"

namespace vorel::algorithms {

namespace {

/// The alphabet in four parts. The lower four bits of a value select a character in each part, the upper two bits
/// select the part.
class Alphabet {
public:
    explicit Alphabet(const char* alphabet) noexcept
        : m_first(loadTwice(alphabet)),
          m_second(loadTwice(alphabet + 16)),
          m_third(loadTwice(alphabet + 32)),
          m_fourth(loadTwice(alphabet + 48)) {}

    [[nodiscard]] __m256i charactersOf(__m256i values) const noexcept {
        // Blending selects by the top bit of each byte.
        const __m256i bit4 = _mm256_slli_epi16(values, 3);
        const __m256i bit5 = _mm256_slli_epi16(values, 2);
        const __m256i lower =
            _mm256_blendv_epi8(_mm256_shuffle_epi8(m_first, values), _mm256_shuffle_epi8(m_second, values), bit4);
        const __m256i upper =
            _mm256_blendv_epi8(_mm256_shuffle_epi8(m_third, values), _mm256_shuffle_epi8(m_fourth, values), bit4);
        return _mm256_blendv_epi8(lower, upper, bit5);
    }

private:
    __m256i m_first;
    __m256i m_second;
    __m256i m_third;
    __m256i m_fourth;
};

/// Spreads twelve bytes in each half to sixteen six-bit values.
__m256i spread(__m256i bytes) noexcept {
    // Each group of three bytes a b c becomes the 32 bits "b a c b", lowest byte first.
    const __m256i order = _mm256_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10,  //
                                           1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10);
    const __m256i groups = _mm256_shuffle_epi8(bytes, order);
    // A multiplication shifts each 16 bits by its own distance: the first and third value right, the others left.
    const __m256i down =
        _mm256_mulhi_epu16(_mm256_and_si256(groups, _mm256_set1_epi32(0x0FC0FC00)), _mm256_set1_epi32(0x04000040));
    const __m256i up =
        _mm256_mullo_epi16(_mm256_and_si256(groups, _mm256_set1_epi32(0x003F03F0)), _mm256_set1_epi32(0x01000010));
    return _mm256_or_si256(down, up);
}

template <class T>
std::size_t encode(const unsigned char* bytes, std::size_t count, const char* alphabet, T* out) noexcept {
    constexpr std::size_t kRead = 28;  // two loads of sixteen bytes, twelve bytes apart
    const Alphabet lookUp(alphabet);
    std::size_t done = 0;
    for (; count - done >= kSextetBlockBytes; done += kSextetBlockBytes, out += kSextetBlockCharacters) {
        if (count - done < kRead && !isInPage(bytes + done, kRead)) {
            break;
        }
        const auto* const lower = reinterpret_cast<const __m128i*>(bytes + done);
        const auto* const upper = reinterpret_cast<const __m128i*>(bytes + done + 12);
        const __m256i both =
            _mm256_inserti128_si256(_mm256_castsi128_si256(_mm_loadu_si128(lower)), _mm_loadu_si128(upper), 1);
        storeCharacters(lookUp.charactersOf(spread(both)), out);
    }
    return done;
}

/// Looks up values by row and column.
class Rows {
public:
    explicit Rows(const SextetRows& rows) noexcept
        : m_rowsOfColumn(loadTwice(rows.rowsOfColumn)),
          m_offsetOfRow(loadTwice(rows.offsetOfRow)),
          m_irregularOffset(loadTwice(rows.irregularOffset)) {}

    /// The values. In `invalid`, the bytes of characters without a value are all ones.
    [[nodiscard]] __m256i valuesOf(__m256i characters, __m256i& invalid) const noexcept {
        invalid = notInTable(characters, m_rowsOfColumn);
        const __m256i row = _mm256_and_si256(_mm256_srli_epi16(characters, 4), _mm256_set1_epi8(15));
        const __m256i isIrregular = _mm256_cmpeq_epi8(row, _mm256_set1_epi8(SextetRows::kIrregularRow));
        const __m256i offset = _mm256_blendv_epi8(_mm256_shuffle_epi8(m_offsetOfRow, row),
                                                  _mm256_shuffle_epi8(m_irregularOffset, characters), isIrregular);
        return _mm256_add_epi8(characters, offset);
    }

private:
    __m256i m_rowsOfColumn;
    __m256i m_offsetOfRow;
    __m256i m_irregularOffset;
};

/// Whether a block can be read: it lies in one page, or the text does not end before the next page.
template <class T>
bool isReadable(const T* text) noexcept {
    constexpr std::uintptr_t kBlock = kSextetBlockCharacters * sizeof(T);
    if (isInPage(text, kBlock)) {
        return true;
    }
    const std::uintptr_t offset = offsetInPage(text);
    const std::uintptr_t before = (offset - (kPageBytes - kBlock)) / sizeof(T);
    const std::uint32_t zeros = maskOf(_mm256_cmpeq_epi8(loadWideBlock(text - before), _mm256_setzero_si256()));
    return offset % sizeof(T) == 0 && zeros >> before == 0;
}

template <class T>
std::size_t decode(const T* text, std::size_t blocks, const SextetRows& rows, InvalidCharacters rule,
                   unsigned char* out) noexcept {
    const Rows lookUp(rows);
    const __m256i order = _mm256_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1,  //
                                           2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1);
    std::size_t done = 0;
    for (; done < blocks && isReadable(text); ++done, text += kSextetBlockCharacters, out += kSextetBlockBytes) {
        __m256i invalid;
        __m256i sextets = lookUp.valuesOf(loadWideBlock(text), invalid);
        if (rule == InvalidCharacters::AsZero) {
            sextets = _mm256_andnot_si256(invalid, sextets);
        } else if (_mm256_movemask_epi8(invalid) != 0) {
            break;
        }
        const __m256i twelveBits = _mm256_maddubs_epi16(sextets, _mm256_set1_epi32(0x01400140));
        const __m256i groups = _mm256_madd_epi16(twelveBits, _mm256_set1_epi32(0x00011000));
        const __m256i bytes = _mm256_shuffle_epi8(groups, order);
        const __m256i together = _mm256_permutevar8x32_epi32(bytes, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), together);
    }
    return done;
}

}  // namespace

std::size_t encodeSextetsAvx2(const unsigned char* bytes, std::size_t count, const char* alphabet, char* out) noexcept {
    return encode(bytes, count, alphabet, out);
}

std::size_t encodeSextetsAvx2(const unsigned char* bytes, std::size_t count, const char* alphabet,
                              WideUnit* out) noexcept {
    return encode(bytes, count, alphabet, out);
}

std::size_t decodeSextetsAvx2(const char* text, std::size_t blocks, const SextetRows& rows, InvalidCharacters rule,
                              unsigned char* out) noexcept {
    return decode(text, blocks, rows, rule, out);
}

std::size_t decodeSextetsAvx2(const WideUnit* text, std::size_t blocks, const SextetRows& rows, InvalidCharacters rule,
                              unsigned char* out) noexcept {
    return decode(text, blocks, rows, rule, out);
}

}  // namespace vorel::algorithms
