// Compiled for AVX2. Do not use standard library functions that are emitted out of line: the linker could use the AVX2
// copy for the rest of the program.
//
// The shuffle tables follow Daniel Lemire and Wojciech Muła, "Transcoding billions of Unicode characters per second
// with SIMD instructions".

#include "algorithms/Utf8Avx2.h"

#include <cstdint>

#include "algorithms/PageReads.h"
#include "algorithms/SimdBlocks.h"
#include "algorithms/Utf16.h"

namespace vorel::algorithms {

namespace {

/// Of eight elements of two bytes, keeps both bytes, or one if the bit of the element is set.
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
            shuffles.order[mask][to++] = 0x80;
        }
    }
    return shuffles;
}

/// Of four elements of four bytes, keeps three bytes, two if the lower bit of the element is set, and one if its upper
/// bit is set too. The lower bits of all four are in the lower half of the mask.
constexpr Shuffles oneToThreeBytes() noexcept {
    Shuffles shuffles = {};
    for (unsigned int mask = 0; mask < 256; ++mask) {
        unsigned int to = 0;
        for (unsigned char element = 0; element < 4; ++element) {
            const unsigned int left = 3 - (mask >> element & 1) - (mask >> (element + 4) & 1);
            for (unsigned char byte = 0; byte < left; ++byte) {
                shuffles.order[mask][to++] = static_cast<unsigned char>(4 * element + byte);
            }
        }
        while (to < 16) {
            shuffles.order[mask][to++] = 0x80;
        }
    }
    return shuffles;
}

constexpr Shuffles kOneOrTwoBytes = oneOrTwoBytes();
constexpr Shuffles kOneToThreeBytes = oneToThreeBytes();

constexpr unsigned int kUnits = 8;  // per block
constexpr std::size_t kBlockBytes = 2 * std::size_t{kUnits};
constexpr std::size_t kMaxWritten = 28;  // per block, including insignificant bytes

/// Up to 24 bytes of UTF-8, in two pieces that are written one after the other.
struct Encoded {
    __m128i first;
    __m128i second;
    unsigned int inFirst;
    unsigned int inSecond;
};

/// Encodes the first `count` units, all below 0x800. The mask `ascii` holds those below 0x80.
[[gnu::always_inline]] inline Encoded encodeUpToTwo(__m128i units, unsigned int ascii, unsigned int count) noexcept {
    const __m128i lead = _mm_or_si128(_mm_srli_epi16(units, 6), _mm_set1_epi16(0xC0));
    const __m128i trail = _mm_or_si128(_mm_and_si128(units, _mm_set1_epi16(0x3F)), _mm_set1_epi16(0x80));
    const __m128i two = _mm_or_si128(lead, _mm_slli_epi16(trail, 8));
    const __m128i isAscii = _mm_cmpgt_epi16(_mm_set1_epi16(0x80), units);
    const __m128i bytes = _mm_blendv_epi8(two, units, isAscii);
    return {shuffled(bytes, kOneOrTwoBytes, ascii), _mm_setzero_si128(), 2 * count - countBits(ascii & lowBits(count)),
            0};
}

/// Encodes the first `count` units of any value, each as one value.
[[gnu::always_inline]] inline Encoded encodeUpToThree(__m128i block, unsigned int count) noexcept {
    const __m256i units = _mm256_cvtepu16_epi32(block);
    const auto every = [](int value) { return _mm256_set1_epi32(value); };
    const auto trail = [&](__m256i value) {
        return _mm256_or_si256(_mm256_and_si256(value, every(0x3F)), every(0x80));
    };
    const __m256i upper = _mm256_srli_epi32(units, 6);
    const __m256i last = trail(units);
    const __m256i two = _mm256_or_si256(_mm256_or_si256(upper, every(0xC0)), _mm256_slli_epi32(last, 8));
    const __m256i leadOfThree = _mm256_or_si256(_mm256_srli_epi32(units, 12), every(0xE0));
    const __m256i three =
        _mm256_or_si256(leadOfThree, _mm256_or_si256(_mm256_slli_epi32(trail(upper), 8), _mm256_slli_epi32(last, 16)));
    const __m256i isShort = _mm256_cmpgt_epi32(every(0x800), units);
    const __m256i isAscii = _mm256_cmpgt_epi32(every(0x80), units);
    const __m256i bytes = _mm256_blendv_epi8(_mm256_blendv_epi8(three, two, isShort), units, isAscii);
    const auto shorts = static_cast<unsigned int>(_mm256_movemask_ps(_mm256_castsi256_ps(isShort)));
    const auto asciis = static_cast<unsigned int>(_mm256_movemask_ps(_mm256_castsi256_ps(isAscii)));
    const auto piece = [=](__m128i elements, unsigned int shift, unsigned int counted, __m128i& packed) {
        const unsigned int mask = (shorts >> shift & 15) | (asciis >> shift & 15) << 4;
        packed = shuffled(elements, kOneToThreeBytes, mask);
        return 3 * counted - countBits(mask & (lowBits(counted) | lowBits(counted) << 4));
    };
    Encoded encoded;
    const unsigned int inFirst = atMost(count, 4);
    encoded.inFirst = piece(_mm256_castsi256_si128(bytes), 0, inFirst, encoded.first);
    encoded.inSecond = piece(_mm256_extracti128_si256(bytes, 1), 4, count - inFirst, encoded.second);
    return encoded;
}

/// Encodes the surrogate pairs at the start of `count` units, and sets `count` to their number of units.
[[gnu::always_inline]] inline Encoded encodePairs(__m128i units, unsigned int& count) noexcept {
    const auto every = [](std::uint32_t value) { return _mm_set1_epi32(static_cast<int>(value)); };
    constexpr std::uint32_t kKindMasks = kSurrogateKindMask << 16 | kSurrogateKindMask;
    constexpr std::uint32_t kPair = kFirstLowSurrogate << 16 | kFirstHighSurrogate;
    const __m128i isPair = _mm_cmpeq_epi32(_mm_and_si128(units, every(kKindMasks)), every(kPair));
    const __m128i high = _mm_slli_epi32(
        _mm_add_epi32(_mm_and_si128(units, every(kLowSurrogateBits)), every(kFirstPairedValue >> 10)), 10);
    const __m128i code = _mm_or_si128(high, _mm_and_si128(_mm_srli_epi32(units, 16), every(kLowSurrogateBits)));
    const __m128i first = _mm_srli_epi32(code, 18);
    const __m128i second = _mm_and_si128(_mm_srli_epi32(code, 4), every(0x3F00));
    const __m128i third = _mm_and_si128(_mm_slli_epi32(code, 10), every(0x3F0000));
    const __m128i fourth = _mm_and_si128(_mm_slli_epi32(code, 24), every(0x3F000000));
    const __m128i bytes = _mm_or_si128(_mm_or_si128(first, second), _mm_or_si128(third, fourth));
    const unsigned int notPairs = ~static_cast<unsigned int>(_mm_movemask_ps(_mm_castsi128_ps(isPair)));
    const unsigned int pairs = atMost(lowestBit(notPairs), count / 2);
    count = 2 * pairs;
    return {_mm_or_si128(bytes, every(0x808080F0)), _mm_setzero_si128(), 4 * pairs, 0};
}

/// The kinds of eight units, one bit each.
struct Units {
    [[gnu::always_inline]] explicit Units(__m128i units) noexcept
        : zeros(maskOfUnits(_mm_cmpeq_epi16(units, _mm_setzero_si128()))),
          ascii(maskOfUnits(_mm_cmpgt_epi16(_mm_set1_epi16(0x80), units))) {
        const __m128i upperBits = _mm_and_si128(units, everyUnit(kSurrogateMask));
        shorts = maskOfUnits(_mm_cmpeq_epi16(upperBits, _mm_setzero_si128()));
        surrogates = maskOfUnits(_mm_cmpeq_epi16(upperBits, everyUnit(kFirstHighSurrogate)));
    }

    static __m128i everyUnit(std::uint32_t value) noexcept { return _mm_set1_epi16(static_cast<short>(value)); }
    static unsigned int maskOfUnits(__m128i found) noexcept {
        return maskOf(_mm_packs_epi16(found, _mm_setzero_si128()));
    }

    unsigned int zeros;
    unsigned int ascii;   ///< below 0x80, and from 0x8000 on, which is irrelevant where all are short
    unsigned int shorts;  ///< below 0x800
    unsigned int surrogates;
};

/// Stores both pieces and insignificant bytes after them. Returns the end.
[[gnu::always_inline]] inline unsigned char* store(const Encoded& encoded, unsigned char* out) noexcept {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), encoded.first);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + encoded.inFirst), encoded.second);
    return out + encoded.inFirst + encoded.inSecond;
}

/// Encodes whole blocks without zeros that have either no surrogates or only pairs. A separate loop, so that its
/// constants stay in registers.
[[gnu::noinline]] Progress encodeBlocks(const unsigned char* units, std::size_t left, unsigned char* out,
                                        std::size_t capacity, bool paired) noexcept {
    unsigned char* const start = out;
    unsigned int read = 0;
    while (left - read >= kUnits && capacity - static_cast<std::size_t>(out - start) >= kMaxWritten &&
           isInPage(units + 2 * std::size_t{read}, kBlockBytes)) {
        const __m128i block = loadBytes(units + 2 * std::size_t{read});
        const Units found(block);
        unsigned int count = kUnits;
        if (found.zeros != 0) {
            break;
        }
        if (found.shorts == 0xFF) {
            const Encoded encoded = encodeUpToTwo(block, found.ascii, kUnits);
            _mm_storeu_si128(reinterpret_cast<__m128i*>(out), encoded.first);
            out += encoded.inFirst;
        } else if (!paired || found.surrogates == 0) {
            out = store(encodeUpToThree(block, kUnits), out);
        } else {
            const Encoded pairs = encodePairs(block, count);
            if (count != kUnits) {
                break;
            }
            _mm_storeu_si128(reinterpret_cast<__m128i*>(out), pairs.first);
            out += kBlockBytes;
        }
        read += kUnits;
    }
    return {read, static_cast<unsigned int>(out - start)};
}

/// Encodes units of a block, `left` of which belong to the text: up to a zero, and up to where surrogates begin or end.
/// Writes nothing past the encoded bytes.
[[gnu::noinline]] Progress encodePart(__m128i block, std::size_t left, unsigned char* out, std::size_t capacity,
                                      bool paired) noexcept {
    const Units found(block);
    unsigned int count = atMost(lowestBit(found.zeros | 1u << kUnits), left);
    const unsigned int surrogates = paired ? found.surrogates : 0;
    Encoded encoded;
    if ((~found.shorts & lowBits(count)) == 0) {
        encoded = encodeUpToTwo(block, found.ascii, count);
    } else if ((surrogates & 1) != 0) {
        encoded = encodePairs(block, count);
    } else {
        count = atMost(lowestBit(surrogates | 1u << kUnits), count);
        encoded = encodeUpToThree(block, count);
    }
    if (encoded.inFirst + encoded.inSecond > capacity) {
        return kNoProgress;
    }
    storeFirstBytes(encoded.first, encoded.inFirst, out);
    storeFirstBytes(encoded.second, encoded.inSecond, out + encoded.inFirst);
    return {count, encoded.inFirst + encoded.inSecond};
}

}  // namespace

Progress encodeUtf8Avx2(const void* units, std::size_t left, unsigned char* out, std::size_t capacity,
                        bool paired) noexcept {
    left = atMost(kMaxProgress, left);
    const auto* const bytes = static_cast<const unsigned char*>(units);
    unsigned int read = 0;
    unsigned int written = 0;
    while (read != left) {
        const unsigned char* const next = bytes + 2 * std::size_t{read};
        Progress step = kNoProgress;
        if (left - read >= kUnits && capacity - written >= kMaxWritten) {
            step = encodeBlocks(next, left - read, out + written, capacity - written, paired);
        }
        if (step.read == 0 && isInPage(next, kBlockBytes)) {
            step = encodePart(loadBytes(next), left - read, out + written, capacity - written, paired);
        }
        if (step.read == 0) {
            break;
        }
        read += step.read;
        written += step.written;
    }
    return {read, written};
}

}  // namespace vorel::algorithms
