// Compiled for AVX2. Do not use standard library functions that are emitted out of line, because the linker could use
// the AVX2 copy of such a function in the whole program.

#include "algorithms/HexText.h"

#include <cstddef>
#include <cstdint>

#include <immintrin.h>

#include "algorithms/Ascii.h"
#include "algorithms/Attributes.h"
#include "algorithms/SimdBlocks.h"

namespace vorel::algorithms {

namespace {

/// Writes the digits of sixteen bytes. `spreadBytes` defines the order of the digits in the register.
void storeDigits(__m256i digits, char* out) noexcept {
    storeCharacters(digits, out);
}

void storeDigits(__m256i digits, WideUnit* out) noexcept {
    auto* const units = reinterpret_cast<__m256i*>(out);
    _mm256_storeu_si256(units, _mm256_unpacklo_epi8(digits, _mm256_setzero_si256()));
    _mm256_storeu_si256(units + 1, _mm256_unpackhi_epi8(digits, _mm256_setzero_si256()));
}

/// The constants of an encoder for one case of letters.
struct HexTable {
    char digits[16];
    std::uint16_t multipliers[8];
};

/// All multipliers are equal. They are read from memory, because compilers replace the multiplication by two slower
/// instructions if the multiplier is a known constant.
constexpr HexTable kHexTables[] = {
    {{'0', '1', '2', '3', '4', '5', '6', '7', '8', '9', 'A', 'B', 'C', 'D', 'E', 'F'},
     {0x1001, 0x1001, 0x1001, 0x1001, 0x1001, 0x1001, 0x1001, 0x1001}},
    {{'0', '1', '2', '3', '4', '5', '6', '7', '8', '9', 'a', 'b', 'c', 'd', 'e', 'f'},
     {0x1001, 0x1001, 0x1001, 0x1001, 0x1001, 0x1001, 0x1001, 0x1001}},
};

/// Looks up the digits of sixteen bytes.
template <class T>
class Digits {
public:
    explicit Digits(HexCase letters) noexcept : Digits(kHexTables[letters == HexCase::Upper ? 0 : 1]) {}

    void write(const unsigned char* bytes, T* out) const noexcept {
        // Each byte of the input is in the lower half of 16 bits. The multiplication copies the lower four bits of the
        // byte to the top of the 16 bits. After the shift, the first of the two bytes has the upper four bits of the
        // input, and the second byte has the lower four bits.
        const __m256i words = _mm256_shuffle_epi8(loadTwice(bytes), spreadBytes());
        const __m256i values = _mm256_srli_epi16(_mm256_mullo_epi16(words, m_multipliers), 4);
        storeDigits(_mm256_shuffle_epi8(m_digits, values), out);
    }

private:
    explicit Digits(const HexTable& table) noexcept
        : m_digits(loadTwice(table.digits)), m_multipliers(loadTwice(table.multipliers)) {}

    /// Puts eight bytes into each half of a register, as 16 bits each. For wide text, the first half has bytes 0 to 3
    /// and 8 to 11, and the second half bytes 4 to 7 and 12 to 15, because the instructions that widen bytes to units
    /// work on each half.
    static __m256i spreadBytes() noexcept {
        if constexpr (sizeof(T) == 1) {
            return _mm256_setr_epi8(0, -1, 1, -1, 2, -1, 3, -1, 4, -1, 5, -1, 6, -1, 7, -1,  //
                                    8, -1, 9, -1, 10, -1, 11, -1, 12, -1, 13, -1, 14, -1, 15, -1);
        } else {
            return _mm256_setr_epi8(0, -1, 1, -1, 2, -1, 3, -1, 8, -1, 9, -1, 10, -1, 11, -1,  //
                                    4, -1, 5, -1, 6, -1, 7, -1, 12, -1, 13, -1, 14, -1, 15, -1);
        }
    }

    __m256i m_digits;
    __m256i m_multipliers;
};

template <class T>
void encode(const unsigned char* bytes, std::size_t count, HexCase letters, T* out) noexcept {
    constexpr std::size_t kBlock = 16;
    const Digits<T> digits(letters);
    const unsigned char* const last = bytes + count - kBlock;
    T* const lastOut = out + 2 * (count - kBlock);
    for (; count >= 4 * kBlock; count -= 4 * kBlock, bytes += 4 * kBlock, out += 8 * kBlock) {
        digits.write(bytes, out);
        digits.write(bytes + kBlock, out + 2 * kBlock);
        digits.write(bytes + 2 * kBlock, out + 4 * kBlock);
        digits.write(bytes + 3 * kBlock, out + 6 * kBlock);
    }
    for (; count >= kBlock; count -= kBlock, bytes += kBlock, out += 2 * kBlock) {
        digits.write(bytes, out);
    }
    if (count != 0) {
        digits.write(last, lastOut);  // some of these bytes are encoded twice
    }
}

/// The values of 32 hexadecimal digits. If a character is not a hexadecimal digit, the top bit of its byte in `invalid`
/// is set. See Wojciech Muła, "Fast parsing and validating of hexadecimal numbers".
__m256i valuesOf(__m256i characters, __m256i& invalid) noexcept {
    // `decimal` is 0 to 9 for a decimal digit, and larger than 15 for every other character. `letter` is 10 to 15 for a
    // letter from A to F in either case, and larger than 15 for every other character.
    const __m256i moved = _mm256_add_epi8(characters, _mm256_set1_epi8(static_cast<char>(0xFF - '9')));
    const __m256i decimal =
        _mm256_sub_epi8(_mm256_subs_epu8(moved, _mm256_set1_epi8(6)), _mm256_set1_epi8(static_cast<char>(0xF0)));
    const __m256i upperCase = _mm256_and_si256(characters, _mm256_set1_epi8(static_cast<char>(~kCaseBit)));
    const __m256i letter = _mm256_adds_epu8(_mm256_sub_epi8(upperCase, _mm256_set1_epi8('A')), _mm256_set1_epi8(10));
    const __m256i values = _mm256_min_epu8(decimal, letter);
    invalid = _mm256_adds_epu8(values, _mm256_set1_epi8(127 - 15));
    return values;
}

/// Combines the values of 32 digits to sixteen bytes, each in 16 bits.
__m256i bytesOf(__m256i values) noexcept {
    return _mm256_maddubs_epi16(values, _mm256_set1_epi16(0x0110));  // weights 16 and 1
}

/// Decodes at most `blocks` blocks in pairs. Stops before the first pair that contains an invalid character. Returns
/// the number of blocks decoded.
template <class T>
VOREL_NOINLINE std::size_t decodeTwos(const T* text, std::size_t blocks, unsigned char* out) noexcept {
    std::size_t done = 0;
    for (; blocks - done >= 2; done += 2, text += 64, out += 32) {
        __m256i invalid[2];
        const __m256i first = bytesOf(valuesOf(loadWideBlock(text), invalid[0]));
        const __m256i second = bytesOf(valuesOf(loadWideBlock(text + 32), invalid[1]));
        if (maskOf(_mm256_or_si256(invalid[0], invalid[1])) != 0) {
            break;
        }
        const __m256i packed = _mm256_permute4x64_epi64(_mm256_packus_epi16(first, second), 0xD8);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), packed);
    }
    return done;
}

/// Decodes a block. Returns false and writes nothing if the block contains an invalid character. This is a separate
/// function, because `decodeTwos` saves and restores registers for its caller, and the decoding of short text should
/// not take that time.
template <class T>
VOREL_NOINLINE bool decodeBlock(const T* text, unsigned char* out) noexcept {
    __m256i invalid;
    const __m256i bytes = bytesOf(valuesOf(loadWideBlock(text), invalid));
    if (maskOf(invalid) != 0) {
        return false;
    }
    const __m256i packed = _mm256_permute4x64_epi64(_mm256_packus_epi16(bytes, bytes), 0x08);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm256_castsi256_si128(packed));
    return true;
}

template <class T>
std::size_t decode(const T* text, std::size_t blocks, unsigned char* out) noexcept {
    std::size_t done = blocks >= 2 ? decodeTwos(text, blocks, out) : 0;
    while (done < blocks && decodeBlock(text + 32 * done, out + 16 * done)) {
        ++done;
    }
    return done;
}

}  // namespace

void encodeHexAvx2(const unsigned char* bytes, std::size_t count, HexCase letters, char* out) noexcept {
    encode(bytes, count, letters, out);
}

void encodeHexAvx2(const unsigned char* bytes, std::size_t count, HexCase letters, WideUnit* out) noexcept {
    encode(bytes, count, letters, out);
}

std::size_t decodeHexAvx2(const char* text, std::size_t blocks, unsigned char* out) noexcept {
    return decode(text, blocks, out);
}

std::size_t decodeHexAvx2(const WideUnit* text, std::size_t blocks, unsigned char* out) noexcept {
    return decode(text, blocks, out);
}

}  // namespace vorel::algorithms
