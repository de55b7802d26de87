// Compiled for AVX2. Do not use standard library functions that are emitted out of line: the linker could use the AVX2
// copy for the rest of the program.

#include "algorithms/Utf8Avx2.h"

#include <cstdint>

#include "algorithms/PageReads.h"
#include "algorithms/SimdBlocks.h"
#include "algorithms/Utf16.h"

namespace vorel::algorithms {

namespace {

constexpr unsigned int kBlock = 32;  // bytes

[[gnu::always_inline]] inline __m256i load32(const void* position) noexcept {
    return _mm256_loadu_si256(static_cast<const __m256i*>(position));
}

/// The number of bytes of ASCII in double blocks of this page, up to a double block with anything else.
[[gnu::always_inline]] inline std::size_t countAscii(const unsigned char* bytes, std::size_t left) noexcept {
    const std::size_t inPage = kPageBytes - offsetInPage(bytes);
    const std::size_t size = (inPage < left ? inPage : left) / (2 * kBlock) * (2 * kBlock);
    for (std::size_t at = 0; at != size; at += 2 * kBlock) {
        const __m256i first = load32(bytes + at);
        const __m256i second = load32(bytes + at + kBlock);
        const __m256i isZero = _mm256_cmpeq_epi8(_mm256_min_epu8(first, second), _mm256_setzero_si256());
        if (maskOf(_mm256_or_si256(_mm256_or_si256(first, second), isZero)) != 0) {
            return at;
        }
    }
    return size;
}

/// Whether a block can be read: it is in one page, or the text continues in the next page.
template <class... Expected>
[[gnu::always_inline]] inline bool isReadable(const unsigned char* bytes, std::size_t left,
                                              Expected... expected) noexcept {
    return isInPage(bytes, kBlock) || continuesInNextPage(bytes, left, expected...);
}

/// The number of bytes of units of ASCII in double blocks of this page, up to a double block with anything else.
[[gnu::always_inline]] inline std::size_t countAsciiUnits(const unsigned char* units, std::size_t left) noexcept {
    const std::size_t inPage = kPageBytes - offsetInPage(units);
    const std::size_t size = (inPage < left ? inPage : left) / (2 * kBlock) * (2 * kBlock);
    for (std::size_t at = 0; at != size; at += 2 * kBlock) {
        // The saturated packing keeps 0x01 to 0x7F and turns every other unit into 0x00 or a byte from 0x80 on.
        const __m256i bytes = _mm256_packus_epi16(load32(units + at), load32(units + at + kBlock));
        if (maskOf(_mm256_or_si256(bytes, _mm256_cmpeq_epi8(bytes, _mm256_setzero_si256()))) != 0) {
            return at;
        }
    }
    return size;
}

/// Constants of sixteen units. They are read from memory, because the compiler would build them again in each round.
struct Constants {
    std::uint16_t notAscii[16], notShort[16], high[16], kindMask[16], low[16];
};

constexpr Constants constants() noexcept {
    Constants all = {};
    for (unsigned int unit = 0; unit < 16; ++unit) {
        all.notAscii[unit] = 0xFF80;
        all.notShort[unit] = kSurrogateMask;
        all.high[unit] = kFirstHighSurrogate;
        all.kindMask[unit] = kSurrogateKindMask;
        all.low[unit] = kFirstLowSurrogate;
    }
    return all;
}

alignas(32) constexpr Constants kConstants = constants();

/// The number of units of a block whose surrogates are all in pairs, without a high one at its end. 0 if one is not.
[[gnu::always_inline]] inline unsigned int unitsInPairs(__m256i units, const Constants& k) noexcept {
    const __m256i kind = _mm256_and_si256(units, load32(k.kindMask));
    const unsigned int highs = maskOf(_mm256_cmpeq_epi16(kind, load32(k.high)));
    const unsigned int lows = maskOf(_mm256_cmpeq_epi16(kind, load32(k.low)));
    return highs << 2 != lows ? 0 : 16 - (highs >> (kBlock - 1));
}

}  // namespace

Progress countDecodedAvx2(const unsigned char* bytes, std::size_t left) noexcept {
    left = atMost(kMaxProgress, left);
    std::size_t read = 0;
    unsigned int units = 0;
    unsigned int expected = 0;  // trailing bytes that the next block must begin with, lowest bit first
    unsigned int second = 0;    // whether the next byte is the second one of four
    while (left - read >= kBlock && isReadable(bytes + read, left - read, expected)) {
        const __m256i block = load32(bytes + read);
        const unsigned int zeros = zerosIn(block);
        const unsigned int notAscii = maskOf(block);
        if ((notAscii | zeros | expected) == 0) {
            const auto ascii = static_cast<unsigned int>(countAscii(bytes + read, left - read));
            read += ascii != 0 ? ascii : kBlock;
            units += ascii != 0 ? ascii : kBlock;
            continue;
        }
        const unsigned int leads = bytesFrom(0xC0, block);
        const unsigned int fours = bytesFrom(0xF0, block);
        const std::uint64_t announced = std::uint64_t{leads} << 1 | std::uint64_t{bytesFrom(0xE0, block)} << 2 |
                                        std::uint64_t{fours} << 3 | expected;
        if (zeros != 0 || static_cast<std::uint32_t>(announced) != (notAscii & ~leads)) {
            break;
        }
        if ((fours | second) != 0) {
            // Four bytes that begin with 0xF0 are a pair, unless they are overlong. Others are rare.
            const unsigned int seconds = fours << 1 | second;
            if (bytesFrom(0xF1, block) != 0 || (seconds & ~bytesFrom(0x90, block)) != 0) {
                break;
            }
        }
        read += kBlock;
        units += countBits(~notAscii | leads) + countBits(fours);
        expected = static_cast<unsigned int>(announced >> kBlock);
        second = fours >> (kBlock - 1);
    }
    if (expected != 0) {  // the last character is left to the next step
        const unsigned int cut = bytes[read - 1] >= 0xC0 ? 1 : bytes[read - 2] >= 0xC0 ? 2 : 3;
        read -= cut;
        units -= bytes[read] >= 0xF0 ? 2 : 1;
    }
    return {static_cast<unsigned int>(read), units};
}

Progress countEncodedAvx2(const void* units, std::size_t left, bool paired) noexcept {
    const Constants& k = hidden(kConstants);
    const auto* const bytes = static_cast<const unsigned char*>(units);
    const std::size_t size = 2 * std::size_t{atMost(kMaxProgress, left)};
    const __m256i zero = _mm256_setzero_si256();
    std::size_t read = 0;
    std::size_t written = 0;
    while (size - read >= kBlock && isReadable(bytes + read, size - read)) {
        const __m256i block = load32(bytes + read);
        const __m256i upper = _mm256_and_si256(block, load32(k.notShort));
        const __m256i isShort = _mm256_cmpeq_epi16(upper, zero);
        const __m256i isAscii = _mm256_cmpeq_epi16(_mm256_and_si256(block, load32(k.notAscii)), zero);
        const __m256i isSurrogate = _mm256_cmpeq_epi16(upper, load32(k.high));
        // One bit for each unit below 0x80, and one for each below 0x800.
        const unsigned int fewer = countBits(maskOf(_mm256_packs_epi16(isAscii, isShort)));
        if (maskOf(_mm256_cmpeq_epi16(block, zero)) != 0) {
            break;
        }
        if (fewer == kBlock) {
            const std::size_t ascii = countAsciiUnits(bytes + read, size - read);
            read += ascii != 0 ? ascii : kBlock;
            written += ascii != 0 ? ascii / 2 : kBlock / 2;
            continue;
        }
        const unsigned int surrogates = paired ? maskOf(isSurrogate) : 0;
        unsigned int counted = 16;
        if (surrogates != 0) {
            counted = unitsInPairs(block, k);
            if (counted == 0) {
                break;
            }
        }
        // Each surrogate of a pair stands for two bytes. One at the end is left to the next block.
        read += 2 * std::size_t{counted};
        written += 3 * 16 - fewer - countBits(surrogates) / 2 - 2 * (16 - counted);
    }
    return {static_cast<unsigned int>(read / 2), static_cast<unsigned int>(written)};
}

}  // namespace vorel::algorithms
