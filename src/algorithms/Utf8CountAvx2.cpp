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

/// The surrogates of a kind in a block, two bits for each unit.
[[gnu::always_inline]] inline unsigned int surrogatesIn(__m256i units, std::uint32_t kind) noexcept {
    const auto every = [](std::uint32_t value) { return _mm256_set1_epi16(static_cast<short>(value)); };
    return maskOf(_mm256_cmpeq_epi16(_mm256_and_si256(units, every(kSurrogateKindMask)), every(kind)));
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
    const auto* const bytes = static_cast<const unsigned char*>(units);
    const std::size_t size = 2 * std::size_t{atMost(kMaxProgress, left)};
    const __m256i zero = _mm256_setzero_si256();
    const auto hasNone = [=](__m256i block, std::uint32_t bits) {
        const __m256i found = _mm256_and_si256(block, _mm256_set1_epi16(static_cast<short>(bits)));
        return maskOf(_mm256_cmpeq_epi16(found, zero));
    };
    std::size_t read = 0;
    std::size_t written = 0;
    while (size - read >= kBlock && isReadable(bytes + read, size - read)) {
        const __m256i block = load32(bytes + read);
        const unsigned int shorts = hasNone(block, 0xF800);
        const unsigned int highs = paired ? surrogatesIn(block, kFirstHighSurrogate) : 0;
        const unsigned int lows = paired ? surrogatesIn(block, kFirstLowSurrogate) : 0;
        if (maskOf(_mm256_cmpeq_epi16(block, zero)) != 0) {
            break;
        }
        // A high surrogate at the end is left to the next block.
        const unsigned int cut = highs >> (kBlock - 1) != 0 ? 2 : 0;
        if ((highs << 2) != lows) {
            break;
        }
        // Each surrogate stands for two bytes.
        const unsigned int fewer = countBits(hasNone(block, 0xFF80)) + countBits(shorts | highs | lows);
        read += kBlock - cut;
        written += (3 * kBlock - fewer) / 2 - cut;
    }
    return {static_cast<unsigned int>(read / 2), static_cast<unsigned int>(written)};
}

}  // namespace vorel::algorithms
