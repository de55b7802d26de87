/// \file
/// Decodes a block of sixteen bytes of UTF-8 with AVX2. For Utf8DecodeAvx2.cpp only.
#pragma once

#include <cstddef>
#include <cstdint>

#include <immintrin.h>

#include "algorithms/Attributes.h"
#include "algorithms/SimdBlocks.h"
#include "algorithms/Utf16.h"
#include "algorithms/Utf8Avx2.h"

namespace vorel::algorithms::decoding {

/// Shuffles for eight 16-bit elements. They keep the elements whose bits are set in the mask.
inline constexpr Shuffles keepUnits() noexcept {
    Shuffles shuffles = {};
    for (unsigned int mask = 0; mask < 256; ++mask) {
        unsigned int to = 0;
        for (unsigned char element = 0; element < 8; ++element) {
            if ((mask >> element & 1) != 0) {
                shuffles.order[mask][to++] = static_cast<unsigned char>(2 * element);
                shuffles.order[mask][to++] = static_cast<unsigned char>(2 * element + 1);
            }
        }
        while (to < 16) {
            shuffles.order[mask][to++] = 0x80;
        }
    }
    return shuffles;
}

inline constexpr Shuffles kKeepUnits = keepUnits();

/// Shuffles for eight bytes of ASCII and of sequences of two bytes. The index has a bit for each of the eight bytes and
/// for the byte after them. The bits of trailing bytes are set. Every byte that is not a trailing byte becomes a unit.
/// The unit of an ASCII character has the byte in its lower half. The unit of a lead byte has this byte in its upper
/// half and the trailing byte in its lower half.
struct PairShuffles {
    unsigned char order[512][16];
};

constexpr PairShuffles pairBytes() noexcept {
    PairShuffles shuffles = {};
    for (unsigned int trailing = 0; trailing < 512; ++trailing) {
        unsigned int to = 0;
        for (unsigned char byte = 0; byte < 8; ++byte) {
            if ((trailing >> byte & 1) == 0) {
                const bool isLead = (trailing >> (byte + 1) & 1) != 0;
                shuffles.order[trailing][to++] = static_cast<unsigned char>(isLead ? byte + 1 : byte);
                shuffles.order[trailing][to++] = isLead ? byte : 0x80;
            }
        }
        while (to < 16) {
            shuffles.order[trailing][to++] = 0x80;
        }
    }
    return shuffles;
}

inline constexpr PairShuffles kPairBytes = pairBytes();

inline constexpr unsigned int kBytes = 16;  // per block
inline constexpr unsigned int kDoubleBlock = 32;
inline constexpr std::size_t kReadBytes = 32;    // bytes that may be read for a block
inline constexpr std::size_t kReadDouble = 40;   // for a double block: four loads of sixteen bytes, eight bytes apart
inline constexpr std::size_t kThreesBlock = 24;  // eight characters of three bytes

/// Constants of thirty-two bytes each. They are read from memory, because otherwise the compiler builds them in each
/// iteration.
struct Constants {
    std::uint16_t firstOfTwo[16], firstOfThree[16], firstOfFour[16], firstOfOther[16], lastTrailing[16];
    std::uint16_t lowerOfTwo[16], upperOfTwo[16];
    std::uint16_t threes[16], bitsOfThree[16], scaleOfTrailing[16], scaleOfLead[16];
    std::uint16_t lane[16];
    std::uint16_t bitsOfTrailing[16], bitsOfTwo[16], bitsOfFour[16];
    std::uint16_t lastOfOne[16], lastOfTwo[16], lastOfThree[16];
    std::uint16_t highOffset[16], high[16], low[16];
};

constexpr Constants constants() noexcept {
    Constants all = {};
    constexpr unsigned char kThrees[16] = {2, 1, 0, 0x80, 5, 4, 3, 0x80, 8, 7, 6, 0x80, 11, 10, 9, 0x80};
    for (unsigned int unit = 0; unit < 16; ++unit) {
        const bool isLower = unit % 2 == 0;
        all.firstOfTwo[unit] = 0xC0C0;
        all.firstOfThree[unit] = 0xE0E0;
        all.firstOfFour[unit] = 0xF0F0;
        all.firstOfOther[unit] = 0xF1F1;
        all.lastTrailing[unit] = 0xBFBF;
        all.lowerOfTwo[unit] = 0x007F;
        all.upperOfTwo[unit] = 0x1F00;
        all.threes[unit] = static_cast<std::uint16_t>(kThrees[std::size_t{unit} % 8 * 2] |
                                                      kThrees[std::size_t{unit} % 8 * 2 + 1] << 8);
        all.bitsOfThree[unit] = isLower ? 0x3F3F : 0x000F;
        all.scaleOfTrailing[unit] = isLower ? 0x4001 : 0x0001;
        all.scaleOfLead[unit] = isLower ? 0x0001 : 0x1000;
        all.lane[unit] = static_cast<std::uint16_t>(1u << unit);
        all.bitsOfTrailing[unit] = 0x3F;
        all.bitsOfTwo[unit] = 0x1F;
        all.bitsOfFour[unit] = 0x0F;
        all.lastOfOne[unit] = 0x7F;
        all.lastOfTwo[unit] = 0xDF;
        all.lastOfThree[unit] = 0xEF;
        all.highOffset[unit] = static_cast<std::uint16_t>(kHighSurrogateOffset);
        all.high[unit] = kFirstHighSurrogate;
        all.low[unit] = kFirstLowSurrogate;
    }
    return all;
}

alignas(32) inline constexpr Constants kConstants = constants();

VOREL_ALWAYS_INLINE __m256i load32(const void* position) noexcept {
    return _mm256_loadu_si256(static_cast<const __m256i*>(position));
}

VOREL_ALWAYS_INLINE __m256i everyUnit(std::uint32_t value) noexcept {
    return _mm256_set1_epi16(static_cast<short>(value));
}

/// The kinds of sixteen bytes, as masks with one bit for each byte.
struct Bytes {
    VOREL_ALWAYS_INLINE Bytes(__m128i block, const Constants& k) noexcept
        : zeros(maskOf(_mm_cmpeq_epi8(block, _mm_setzero_si128()))) {
        // The bytes are compared as signed numbers, so ASCII is above all limits. Trailing bytes are below 0xC0. The
        // lead bytes of two-byte sequences are below 0xE0, and the lead bytes of three-byte sequences are below 0xF0.
        // Of the lead bytes of four-byte sequences, only 0xF0 is decoded here.
        const unsigned int notAscii = maskOf(block);
        const auto below = [&](const std::uint16_t* limit) { return maskOf(_mm_cmpgt_epi8(loadBytes(limit), block)); };
        trailing = below(k.firstOfTwo);
        leads = notAscii & ~trailing;
        threes = leads & ~below(k.firstOfThree);
        fours = leads & ~below(k.firstOfFour);
        others = leads & ~below(k.firstOfOther);
    }

    unsigned int zeros;
    unsigned int trailing;
    unsigned int leads;
    unsigned int threes;  ///< lead bytes of three-byte sequences, and `fours`
    unsigned int fours;   ///< the lead byte 0xF0, and `others`
    unsigned int others;  ///< bytes above 0xF0: other lead bytes, and bytes that do not start a sequence
};

/// For each of sixteen bytes, the unit of the sequence of up to three bytes that would begin at this byte.
struct Units {
    VOREL_ALWAYS_INLINE Units(const unsigned char* bytes, const Constants& k) noexcept
        : lead(_mm256_cvtepu8_epi16(loadBytes(bytes))),
          second(_mm256_and_si256(_mm256_cvtepu8_epi16(loadBytes(bytes + 1)), load32(k.bitsOfTrailing))),
          third(_mm256_and_si256(_mm256_cvtepu8_epi16(loadBytes(bytes + 2)), load32(k.bitsOfTrailing))) {
        const __m256i two = _mm256_or_si256(_mm256_slli_epi16(_mm256_and_si256(lead, load32(k.bitsOfTwo)), 6), second);
        // The shift drops the upper four bits of the lead byte of a three-byte sequence.
        const __m256i three =
            _mm256_or_si256(_mm256_or_si256(_mm256_slli_epi16(lead, 12), _mm256_slli_epi16(second, 6)), third);
        const __m256i isLead = _mm256_cmpgt_epi16(lead, load32(k.lastOfOne));
        const __m256i isLeadOfThree = _mm256_cmpgt_epi16(lead, load32(k.lastOfTwo));
        units = _mm256_blendv_epi8(_mm256_blendv_epi8(lead, two, isLead), three, isLeadOfThree);
    }

    /// For each character that begins with 0xF0, replaces the unit at its first byte by the high surrogate, and the
    /// unit at its third byte by the low surrogate. `thirds` has a bit for each third byte. Returns false if one of
    /// these characters is overlong.
    VOREL_ALWAYS_INLINE bool splitFours(unsigned int thirds, const Constants& k) noexcept {
        const __m256i isFour = _mm256_cmpgt_epi16(lead, load32(k.lastOfThree));
        const __m256i high = _mm256_add_epi16(
            _mm256_or_si256(_mm256_slli_epi16(second, 2), _mm256_srli_epi16(third, 4)), load32(k.highOffset));
        const __m256i low = _mm256_or_si256(
            _mm256_or_si256(_mm256_slli_epi16(_mm256_and_si256(lead, load32(k.bitsOfFour)), 6), second), load32(k.low));
        const __m256i lanes = load32(k.lane);
        const __m256i isThird = _mm256_cmpeq_epi16(_mm256_and_si256(everyUnit(thirds), lanes), lanes);
        const __m256i isOverlong = _mm256_and_si256(isFour, _mm256_cmpgt_epi16(load32(k.high), high));
        units = _mm256_blendv_epi8(_mm256_blendv_epi8(units, high, isFour), low, isThird);
        return _mm256_testz_si256(isOverlong, isOverlong) != 0;
    }

    /// The units of the first eight bytes, and the units of the last eight bytes. Only bytes whose bits in `kept` are
    /// set have units.
    [[nodiscard]] __m128i lower(unsigned int kept) const noexcept {
        return shuffled(_mm256_castsi256_si128(units), kKeepUnits, kept & 0xFF);
    }
    [[nodiscard]] __m128i upper(unsigned int kept) const noexcept {
        return shuffled(_mm256_extracti128_si256(units, 1), kKeepUnits, kept >> 8);
    }

    __m256i lead;
    __m256i second;
    __m256i third;
    __m256i units;
};

}  // namespace vorel::algorithms::decoding
