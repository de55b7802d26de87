#include <array>
#include <bit>
#include <cstdint>

#include <immintrin.h>

#include "Transcoders.h"
#include "Vectors.h"

namespace bench {

namespace {

// ---- Tables ---------------------------------------------------------------------------------------------------------

/// The bytes of a vector that belong to the output: `row` has their positions, and `length` is their number.
struct Packing {
    std::uint8_t length;
    Row row;
};

/// The packings of eight lanes of two bytes. Bit n of the index is set if the character in lane n has one byte.
std::array<Packing, 256> makeTwoBytePackings() {
    std::array<Packing, 256> packings = {};
    for (unsigned int ascii = 0; ascii != 256; ++ascii) {
        Packing& packing = packings[ascii];
        packing.row.fill(0x80);
        for (unsigned int lane = 0; lane != 8; ++lane) {
            packing.row[packing.length++] = static_cast<std::uint8_t>(2 * lane);
            if ((ascii >> lane & 1) == 0) {
                packing.row[packing.length++] = static_cast<std::uint8_t>(2 * lane + 1);
            }
        }
    }
    return packings;
}

/// The packings of four lanes of four bytes. The index has two bits for each lane: the lower bit is set if the
/// character has one byte, the higher bit if it has one or two bytes.
std::array<Packing, 256> makeThreeBytePackings() {
    std::array<Packing, 256> packings = {};
    for (unsigned int mask = 0; mask != 256; ++mask) {
        Packing& packing = packings[mask];
        packing.row.fill(0x80);
        for (unsigned int lane = 0; lane != 4; ++lane) {
            const unsigned int bits = mask >> 2 * lane & 3;
            if ((bits & 1) != 0) {
                packing.row[packing.length++] = static_cast<std::uint8_t>(4 * lane);
                continue;
            }
            if ((bits & 2) == 0) {
                packing.row[packing.length++] = static_cast<std::uint8_t>(4 * lane + 2);
            }
            packing.row[packing.length++] = static_cast<std::uint8_t>(4 * lane + 3);
            packing.row[packing.length++] = static_cast<std::uint8_t>(4 * lane + 1);
        }
    }
    return packings;
}

const std::array<Packing, 256> kTwoBytePackings = makeTwoBytePackings();
const std::array<Packing, 256> kThreeBytePackings = makeThreeBytePackings();

// ---- Conversion -----------------------------------------------------------------------------------------------------

char* writePacked(__m128i lanes, const Packing& packing, char* out) {
    store(out, shuffled(lanes, packing.row));
    return out + packing.length;
}

/// Writes sixteen units below 0x800. Returns the end of the output.
char* writeUpToTwo(__m256i units, __m256i isAscii, char* out) {
    const __m256i lead = _mm256_srli_epi16(units, 6);
    const __m256i trailing = _mm256_slli_epi16(_mm256_and_si256(units, everyUnit(0x3F)), 8);
    const __m256i two = _mm256_or_si256(_mm256_or_si256(lead, trailing), everyUnit(0x80C0));
    const __m256i bytes = _mm256_blendv_epi8(two, units, isAscii);
    const std::uint32_t mask = maskOf(_mm256_packs_epi16(isAscii, isAscii));
    out = writePacked(_mm256_castsi256_si128(bytes), kTwoBytePackings[mask & 0xFF], out);
    return writePacked(_mm256_extracti128_si256(bytes, 1), kTwoBytePackings[mask >> 16 & 0xFF], out);
}

/// Writes sixteen units without surrogates. Each unit gets a lane of four bytes: the ASCII byte, the last byte, the
/// lead byte of a sequence of three, and the byte before the last byte. Returns the end of the output.
char* writeUpToThree(__m256i units, __m256i isAscii, __m256i isShort, char* out) {
    const __m256i duplicate = _mm256_setr_epi8(0, 0, 2, 2, 4, 4, 6, 6, 8, 8, 10, 10, 12, 12, 14, 14,  //
                                               0, 0, 2, 2, 4, 4, 6, 6, 8, 8, 10, 10, 12, 12, 14, 14);
    const __m256i lower =
        _mm256_or_si256(_mm256_and_si256(_mm256_shuffle_epi8(units, duplicate), everyUnit(0x3F7F)), everyUnit(0x8000));
    const __m256i spread = _mm256_maddubs_epi16(_mm256_srli_epi16(units, 4), everyUnit(0x0140));
    const __m256i upper =
        _mm256_xor_si256(_mm256_or_si256(spread, everyUnit(0xC0E0)), _mm256_andnot_si256(isShort, everyUnit(0x4000)));
    const std::uint32_t mask = (maskOf(isAscii) & 0x55555555) | (maskOf(isShort) & 0xAAAAAAAA);
    const __m256i first = _mm256_unpacklo_epi16(lower, upper);
    const __m256i second = _mm256_unpackhi_epi16(lower, upper);
    out = writePacked(_mm256_castsi256_si128(first), kThreeBytePackings[mask & 0xFF], out);
    out = writePacked(_mm256_castsi256_si128(second), kThreeBytePackings[mask >> 8 & 0xFF], out);
    out = writePacked(_mm256_extracti128_si256(first, 1), kThreeBytePackings[mask >> 16 & 0xFF], out);
    return writePacked(_mm256_extracti128_si256(second, 1), kThreeBytePackings[mask >> 24], out);
}

/// Converts the units from `unit` to `end`, one character at a time. A surrogate pair that begins before `end` is
/// converted completely. Moves `unit` past the converted units, and returns the end of the output. Returns null if a
/// surrogate is not part of a pair.
char* convertUnits(const char16_t*& unit, const char16_t* end, const char16_t* textEnd, char* out) {
    while (unit < end) {
        std::uint32_t code = *unit++;
        if ((code & 0xF800) == 0xD800) {
            if ((code & 0xFC00) != 0xD800 || unit == textEnd || (*unit & 0xFC00) != 0xDC00) {
                return nullptr;
            }
            code = 0x10000 + ((code & 0x3FF) << 10) + (*unit++ & 0x3FFu);
        }
        const int trailing = code < 0x80 ? 0 : code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
        *out++ = static_cast<char>(trailing == 0 ? code : (0x7F80u >> trailing & 0xFF) | code >> 6 * trailing);
        for (int left = trailing - 1; left >= 0; --left) {
            *out++ = static_cast<char>(0x80 | (code >> 6 * left & 0x3F));
        }
    }
    return out;
}

}  // namespace

std::size_t utf8LengthAvx2(const char16_t* text, std::size_t units) {
    std::size_t bytes = 0;
    std::size_t at = 0;
    for (; at + 16 <= units; at += 16) {
        const __m256i block = load32(text + at);
        const __m256i upper = _mm256_and_si256(block, everyUnit(0xF800));
        const __m256i isAscii = _mm256_cmpeq_epi16(_mm256_and_si256(block, everyUnit(0xFF80)), _mm256_setzero_si256());
        const __m256i isTwo = _mm256_or_si256(_mm256_cmpeq_epi16(upper, _mm256_setzero_si256()),
                                              _mm256_cmpeq_epi16(upper, everyUnit(0xD800)));
        const int fewer = std::popcount(maskOf(isAscii)) + std::popcount(maskOf(isTwo));
        bytes += static_cast<std::size_t>(48 - fewer / 2);
    }
    for (; at != units; ++at) {
        bytes += text[at] < 0x80 ? 1 : text[at] < 0x800 || (text[at] & 0xF800) == 0xD800 ? 2 : 3;
    }
    return bytes;
}

std::size_t toUtf8Avx2(const char16_t* text, std::size_t units, char* out) {
    const char* const start = out;
    const char16_t* const end = text + units;
    const char16_t* unit = text;
    // A store may write up to 12 bytes after the text of its block. The output has space for these bytes, because at
    // least 12 units follow the block.
    while (end - unit >= 16 + 12) {
        const __m256i block = load32(unit);
        if (_mm256_testz_si256(block, everyUnit(0xFF80))) {
            const __m256i next = load32(unit + 16);
            const __m256i packed = _mm256_permute4x64_epi64(_mm256_packus_epi16(block, next), 0xD8);
            if (end - unit >= 32 + 12 && _mm256_testz_si256(next, everyUnit(0xFF80))) {
                store32(out, packed);
                unit += 32;
                out += 32;
            } else {
                store(out, _mm256_castsi256_si128(packed));
                unit += 16;
                out += 16;
            }
            continue;
        }
        const __m256i zero = _mm256_setzero_si256();
        const __m256i isAscii = _mm256_cmpeq_epi16(_mm256_and_si256(block, everyUnit(0xFF80)), zero);
        const __m256i upper = _mm256_and_si256(block, everyUnit(0xF800));
        const __m256i isShort = _mm256_cmpeq_epi16(upper, zero);
        if (maskOf(isShort) == 0xFFFFFFFF) {
            out = writeUpToTwo(block, isAscii, out);
            unit += 16;
        } else if (maskOf(_mm256_cmpeq_epi16(upper, everyUnit(0xD800))) == 0) {
            out = writeUpToThree(block, isAscii, isShort, out);
            unit += 16;
        } else {
            out = convertUnits(unit, unit + 15, end, out);
            if (!out) {
                return 0;
            }
        }
    }
    out = convertUnits(unit, end, end, out);
    return out ? static_cast<std::size_t>(out - start) : 0;
}

}  // namespace bench
