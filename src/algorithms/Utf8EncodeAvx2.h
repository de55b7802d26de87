/// \file
/// Encodes a block of sixteen units as UTF-8 with AVX2. For Utf8EncodeAvx2.cpp only.
///
/// The bit operations and the shuffle tables follow Daniel Lemire and Wojciech Muła, "Transcoding billions of Unicode
/// characters per second with SIMD instructions".
#pragma once

#include <cstddef>
#include <cstdint>

#include <immintrin.h>

#include "algorithms/Attributes.h"
#include "algorithms/SimdBlocks.h"
#include "algorithms/Utf16.h"
#include "algorithms/Utf8Avx2.h"

namespace vorel::algorithms::encoding {

inline constexpr unsigned char kDropped = 0x80;  // an index that makes a shuffle write a zero

/// Shuffles for eight elements of two bytes. They keep the first byte of an element whose bit is set in the mask, and
/// both bytes of an element whose bit is not set.
constexpr Shuffles oneOrTwoBytes() noexcept {
    Shuffles shuffles = {};
    for (unsigned int mask = 0; mask < 256; ++mask) {
        unsigned int to = 0;
        for (unsigned char element = 0; element < 8; ++element) {
            shuffles.order[mask][to++] = static_cast<unsigned char>(2 * element);
            if ((mask >> element & 1) == 0) {
                shuffles.order[mask][to++] = static_cast<unsigned char>(2 * element + 1);
            }
        }
        while (to < 16) {
            shuffles.order[mask][to++] = kDropped;
        }
    }
    return shuffles;
}

/// Shuffles for four elements of four bytes (see `Sequences`). They keep the bytes that belong to the UTF-8 sequence of
/// each element. Each element has two bits in the mask: both are set for a sequence of one byte, only the upper bit for
/// two bytes, no bit for three. If only the lower bit is set, the element is dropped. The last byte of each order is
/// the number of kept bytes plus `kDropped`, so this byte makes the shuffle write a zero too.
constexpr Shuffles oneToThreeBytes() noexcept {
    Shuffles shuffles = {};
    for (unsigned int mask = 0; mask < 256; ++mask) {
        unsigned int to = 0;
        for (unsigned int element = 0; element < 4; ++element) {
            const bool isAscii = (mask >> 2 * element & 1) != 0;
            const bool isShort = (mask >> 2 * element & 2) != 0;
            const auto keep = [&](bool kept, unsigned int byte) {
                if (kept) {
                    shuffles.order[mask][to++] = static_cast<unsigned char>(4 * element + byte);
                }
            };
            keep(isAscii && isShort, 0);
            keep(!isAscii && !isShort, 2);
            keep(!isAscii, 3);
            keep(!isAscii, 1);
        }
        shuffles.order[mask][15] = static_cast<unsigned char>(kDropped | to);
        while (to < 15) {
            shuffles.order[mask][to++] = kDropped;
        }
    }
    return shuffles;
}

inline constexpr Shuffles kOneOrTwoBytes = oneOrTwoBytes();
inline constexpr Shuffles kOneToThreeBytes = oneToThreeBytes();

inline constexpr unsigned int kUnits = 16;  // per block
inline constexpr std::size_t kBlockBytes = 2 * std::size_t{kUnits};
inline constexpr std::size_t kPairUnits = 2 * std::size_t{kUnits};  // two blocks
inline constexpr std::size_t kPairBytes = 2 * kBlockBytes;

/// The maximum number of bytes that are written to encode one block, or two blocks of units below 0x800. The zeros
/// after the output are included.
inline constexpr std::size_t kMaxWritten = 64;

/// Constants of sixteen units. They are read from memory, because otherwise the compiler builds them in each iteration.
struct Constants {
    using Units = std::uint16_t[kUnits];

    Units notAscii, notShort, kindMask, high, low;
    Units trailingBits, twoByteForm, aboveAscii;
    Units duplicate, lowerBits, lowerForm, spreading, upperForm, threeByteForm;
    Units pairedBits, pairedOffset, highUpper, highLower, highForm, lowUpper, lowLower;
};

constexpr Constants constants() noexcept {
    Constants all = {};
    for (unsigned int unit = 0; unit < kUnits; ++unit) {
        all.notAscii[unit] = 0xFF80;
        all.notShort[unit] = 0xF800;
        all.kindMask[unit] = kSurrogateKindMask;
        all.high[unit] = kFirstHighSurrogate;
        all.low[unit] = kFirstLowSurrogate;
        all.trailingBits[unit] = 0x3F00;
        all.twoByteForm[unit] = 0x80C0;
        all.aboveAscii[unit] = 0x80;
        all.duplicate[unit] = static_cast<std::uint16_t>(unit % 8 * 0x202);
        all.lowerBits[unit] = 0x3F7F;
        all.lowerForm[unit] = 0x8000;
        all.spreading[unit] = 0x0140;
        all.upperForm[unit] = 0xC0E0;
        all.threeByteForm[unit] = 0x4000;
        all.pairedBits[unit] = kLowSurrogateBits;
        all.pairedOffset[unit] = kFirstPairedValue >> 10;
        all.highUpper[unit] = 0x0F00;
        all.highLower[unit] = 0x003F;
        all.highForm[unit] = 0xF080;
        all.lowUpper[unit] = 0x3000;
        all.lowLower[unit] = 0x0F00;
    }
    return all;
}

alignas(32) inline constexpr Constants kConstants = constants();

VOREL_ALWAYS_INLINE __m256i loadUnits(const void* position) noexcept {
    return _mm256_loadu_si256(static_cast<const __m256i*>(position));
}

VOREL_ALWAYS_INLINE bool hasNone(__m256i units, const Constants::Units& bits) noexcept {
    return _mm256_testz_si256(units, loadUnits(bits)) != 0;
}

VOREL_ALWAYS_INLINE void storeBytes(__m128i bytes, unsigned char* out) noexcept {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), bytes);
}

/// Up to sixteen bytes of the output, followed by zeros.
struct Piece {
    __m128i bytes;
    std::size_t size;

    /// Stores the bytes and the zeros after them. Returns the end of the bytes.
    VOREL_ALWAYS_INLINE unsigned char* store(unsigned char* out) const noexcept {
        storeBytes(bytes, out);
        return out + size;
    }
    /// Stores only the bytes. Returns the end of the bytes.
    unsigned char* storeExactly(unsigned char* out) const noexcept {
        storeFirstBytes(bytes, size, out);
        return out + size;
    }
};

/// Two consecutive pieces. The functions have no loops, so the compiler keeps the pieces in registers.
struct TwoPieces {
    Piece first, second;

    [[nodiscard]] std::size_t size() const noexcept { return first.size + second.size; }
    VOREL_ALWAYS_INLINE unsigned char* store(unsigned char* out) const noexcept {
        return second.store(first.store(out));
    }
    unsigned char* storeExactly(unsigned char* out) const noexcept {
        return second.storeExactly(first.storeExactly(out));
    }
};

/// The output of sixteen units.
struct FourPieces {
    TwoPieces first, second;

    [[nodiscard]] std::size_t size() const noexcept { return first.size() + second.size(); }
    VOREL_ALWAYS_INLINE unsigned char* store(unsigned char* out) const noexcept {
        return second.store(first.store(out));
    }
    unsigned char* storeExactly(unsigned char* out) const noexcept {
        return second.storeExactly(first.storeExactly(out));
    }
};

/// The units of two blocks as bytes, and a mask of the units that are ASCII but not zero. The bits of `kInFirst` belong
/// to the first block, and the bits of `kInSecond` to the second block.
class PackedAscii {
public:
    static constexpr unsigned int kInFirst = 0x00FF00FF;
    static constexpr unsigned int kInSecond = 0xFF00FF00;

    VOREL_ALWAYS_INLINE PackedAscii(__m256i first, __m256i second) noexcept
        // Saturated packing keeps 0x01 to 0x7F and turns every other unit into 0x00 or a byte from 0x80 on.
        : m_bytes(_mm256_packus_epi16(first, second)),
          m_ascii(maskOf(_mm256_cmpgt_epi8(m_bytes, _mm256_setzero_si256()))) {}
    VOREL_ALWAYS_INLINE explicit PackedAscii(const unsigned char* units) noexcept
        : PackedAscii(loadUnits(units), loadUnits(units + kBlockBytes)) {}

    [[nodiscard]] bool isAscii() const noexcept { return m_ascii == ~0u; }
    [[nodiscard]] bool isAscii(unsigned int units) const noexcept { return (~m_ascii & units) == 0; }

    /// Whether all units are ASCII, zero, or at least 0x8000. Packing turns units of 0x8000 or more into zeros.
    [[nodiscard]] bool hasOnlyZeros() const noexcept { return maskOf(m_bytes) == 0; }

    /// The bytes in the order of the units.
    [[nodiscard]] __m256i bytes() const noexcept { return _mm256_permute4x64_epi64(m_bytes, 0xD8); }

    /// The number of units before the first unit that is zero or not ASCII.
    [[nodiscard]] unsigned int start() const noexcept {
        const __m256i isAscii = _mm256_cmpgt_epi8(bytes(), _mm256_setzero_si256());
        return lowestBit(~maskOf(isAscii));
    }

private:
    __m256i m_bytes;
    unsigned int m_ascii;
};

/// Stores the UTF-8 of sixteen units below 0x800, and zeros after it. Returns the end of the UTF-8.
VOREL_ALWAYS_INLINE unsigned char* storeUpToTwo(__m256i units, unsigned char* out, const Constants& k) noexcept {
    const __m256i lead = _mm256_srli_epi16(units, 6);
    const __m256i trail = _mm256_and_si256(_mm256_slli_epi16(units, 8), loadUnits(k.trailingBits));
    const __m256i two = _mm256_or_si256(_mm256_or_si256(lead, trail), loadUnits(k.twoByteForm));
    const __m256i isAscii = _mm256_cmpgt_epi16(loadUnits(k.aboveAscii), units);
    const __m256i bytes = _mm256_blendv_epi8(two, units, isAscii);
    const unsigned int ascii = maskOf(_mm256_packs_epi16(isAscii, _mm256_setzero_si256()));
    const unsigned int first = ascii & 0xFF;
    unsigned char* const middle = out + kUnits - std::size_t{countBits(first)};
    unsigned char* const end = out + std::size_t{2} * kUnits - std::size_t{countBits(ascii)};
    storeBytes(shuffled(_mm256_castsi256_si128(bytes), kOneOrTwoBytes, first), out);
    storeBytes(shuffled(_mm256_extracti128_si256(bytes, 1), kOneOrTwoBytes, ascii >> 16), middle);
    return end;
}

/// Finds the surrogates among sixteen units. The masks have two bits for each unit.
struct SurrogatesOf {
    VOREL_ALWAYS_INLINE SurrogatesOf(__m256i units, const Constants& k) noexcept {
        const __m256i kind = _mm256_and_si256(units, loadUnits(k.kindMask));
        isHigh = _mm256_cmpeq_epi16(kind, loadUnits(k.high));
        isLow = _mm256_cmpeq_epi16(kind, loadUnits(k.low));
    }

    [[nodiscard]] unsigned int highs() const noexcept { return maskOf(isHigh); }

    /// The surrogates that are not part of a pair within the sixteen units. So a low surrogate at the start and a high
    /// surrogate at the end are included.
    [[nodiscard]] unsigned int single() const noexcept {
        const unsigned int high = highs();
        const unsigned int low = maskOf(isLow);
        return (low & ~(high << 2)) | (high & ~(low >> 2));
    }

    __m256i isHigh;
    __m256i isLow;
};

/// The UTF-8 sequences of sixteen units. Each unit has an element of four bytes, and `packed` keeps the bytes that
/// belong to the sequence. Byte 0 is an ASCII character. Byte 1 is the last byte of a longer sequence. Byte 2 is the
/// lead byte of a sequence of three bytes. Byte 3 is the lead byte of a sequence of two bytes, or the second byte of a
/// sequence of three bytes. Each surrogate is encoded as a separate value unless `joinPairs` is called.
struct Sequences {
    VOREL_ALWAYS_INLINE Sequences(__m256i units, const Constants& k) noexcept {
        const __m256i zero = _mm256_setzero_si256();
        const __m256i isShort = _mm256_cmpeq_epi16(_mm256_and_si256(units, loadUnits(k.notShort)), zero);
        const __m256i isAscii = _mm256_cmpeq_epi16(_mm256_and_si256(units, loadUnits(k.notAscii)), zero);
        const __m256i twice = _mm256_shuffle_epi8(units, loadUnits(k.duplicate));
        lower = _mm256_or_si256(_mm256_and_si256(twice, loadUnits(k.lowerBits)), loadUnits(k.lowerForm));
        // The bits aaaabbbbbbcccccc of a unit become 00bbbbbbcc00aaaa, and then 11bbbbbb1110aaaa. The byte 11bbbbbb is
        // the lead byte of a sequence of two bytes, and 1110aaaa is the lead byte of a sequence of three bytes. For a
        // sequence of three bytes, the trailing byte 10bbbbbb replaces 11bbbbbb.
        const __m256i spread = _mm256_maddubs_epi16(_mm256_srli_epi16(units, 4), loadUnits(k.spreading));
        upper = _mm256_xor_si256(_mm256_or_si256(spread, loadUnits(k.upperForm)),
                                 _mm256_andnot_si256(isShort, loadUnits(k.threeByteForm)));
        kinds = (maskOf(isAscii) & 0x55555555) | (maskOf(isShort) & 0xAAAAAAAA);
    }

    /// Changes the elements of each surrogate pair, which is encoded as a sequence of four bytes. The element of the
    /// high surrogate has the first two bytes of the sequence, and the element of the low surrogate has the last two
    /// bytes. The elements of unpaired surrogates become invalid.
    VOREL_ALWAYS_INLINE void joinPairs(__m256i units, const SurrogatesOf& surrogates, const Constants& k) noexcept {
        const __m256i value =
            _mm256_add_epi16(_mm256_and_si256(units, loadUnits(k.pairedBits)), loadUnits(k.pairedOffset));
        const __m256i second = _mm256_and_si256(_mm256_srli_epi16(value, 2), loadUnits(k.highLower));
        const __m256i firstTwo = _mm256_add_epi16(
            _mm256_add_epi16(_mm256_and_si256(value, loadUnits(k.highUpper)), second), loadUnits(k.highForm));
        const __m256i before = _mm256_alignr_epi8(units, _mm256_permute2x128_si256(units, units, 0x08), 14);
        const __m256i fromHigh = _mm256_and_si256(_mm256_slli_epi16(before, 12), loadUnits(k.lowUpper));
        const __m256i fromLow = _mm256_and_si256(_mm256_slli_epi16(units, 2), loadUnits(k.lowLower));
        const __m256i third = _mm256_or_si256(_mm256_or_si256(fromHigh, fromLow), loadUnits(k.lowerForm));
        lower = _mm256_blendv_epi8(lower, _mm256_slli_epi16(firstTwo, 8), surrogates.isHigh);
        upper = _mm256_blendv_epi8(upper, firstTwo, surrogates.isHigh);
        upper = _mm256_blendv_epi8(upper, third, surrogates.isLow);
        kinds |= maskOf(_mm256_or_si256(surrogates.isHigh, surrogates.isLow)) & 0xAAAAAAAA;
    }

    /// `first` has the sequences of units 0 to 3 and 8 to 11. `second` has the sequences of units 4 to 7 and 12 to 15.
    [[nodiscard]] __m256i first() const noexcept { return _mm256_unpacklo_epi16(lower, upper); }
    [[nodiscard]] __m256i second() const noexcept { return _mm256_unpackhi_epi16(lower, upper); }

    __m256i lower;
    __m256i upper;
    unsigned int kinds;  ///< two bits for each unit, see `oneToThreeBytes`
};

/// Packs the sequences of the first `count` units.
VOREL_ALWAYS_INLINE FourPieces packed(const Sequences& all, unsigned int count) noexcept {
    const __m256i first = all.first();
    const __m256i second = all.second();
    // Units from `count` on must produce zeros, because the caller's output may be an array whose unused elements must
    // remain zero.
    const auto kept = static_cast<unsigned int>((std::uint64_t{1} << 2 * count) - 1);
    const unsigned int kinds = (all.kinds & kept) | (0x55555555 & ~kept);
    const auto piece = [&](__m128i elements, unsigned int part) -> Piece {
        const unsigned char* const order = kOneToThreeBytes.order[kinds >> 8 * part & 0xFF];
        return {_mm_shuffle_epi8(elements, loadBytes(order)), std::size_t{order[15]} - kDropped};
    };
    return {{piece(_mm256_castsi256_si128(first), 0), piece(_mm256_castsi256_si128(second), 1)},
            {piece(_mm256_extracti128_si256(first, 1), 2), piece(_mm256_extracti128_si256(second, 1), 3)}};
}

}  // namespace vorel::algorithms::encoding
