// Compiled for AVX2. Do not use standard library functions that are emitted out of line: the linker could use the AVX2
// copy for the rest of the program.

#include "algorithms/Utf8Avx2.h"

#include <cstdint>

#include "algorithms/Attributes.h"
#include "algorithms/PageReads.h"
#include "algorithms/SimdBlocks.h"
#include "algorithms/Utf16.h"

namespace vorel::algorithms {

namespace {

constexpr unsigned int kBlock = 32;  // bytes

// Blocks are aligned, so each lies in one page. The first block may begin before the text; the bits before the text are
// masked.

VOREL_ALWAYS_INLINE __m256i load32(const void* position) noexcept {
    return _mm256_loadu_si256(static_cast<const __m256i*>(position));
}

VOREL_ALWAYS_INLINE unsigned int offsetInBlock(const void* position) noexcept {
    return static_cast<unsigned int>(offsetInPage(position) % kBlock);
}

/// The number of bytes of ASCII in double blocks of this page, up to a double block with anything else.
VOREL_ALWAYS_INLINE std::size_t countAscii(const unsigned char* bytes, std::size_t left) noexcept {
    constexpr std::size_t kDouble = std::size_t{2} * kBlock;
    const std::size_t inPage = kPageBytes - offsetInPage(bytes);
    const std::size_t size = (inPage < left ? inPage : left) / kDouble * kDouble;
    std::size_t at = 0;
    for (; at != size; at += kDouble) {
        const __m256i first = load32(bytes + at);
        const __m256i second = load32(bytes + at + kBlock);
        const __m256i isZero = _mm256_cmpeq_epi8(_mm256_min_epu8(first, second), _mm256_setzero_si256());
        if (maskOf(_mm256_or_si256(_mm256_or_si256(first, second), isZero)) != 0) {
            break;
        }
    }
    return at;
}

/// The same for units.
VOREL_ALWAYS_INLINE std::size_t countAsciiUnits(const unsigned char* units, std::size_t left) noexcept {
    constexpr std::size_t kDouble = std::size_t{2} * kBlock;
    const std::size_t inPage = kPageBytes - offsetInPage(units);
    const std::size_t size = (inPage < left ? inPage : left) / kDouble * kDouble;
    std::size_t at = 0;
    for (; at != size; at += kDouble) {
        // The saturated packing keeps 0x01 to 0x7F and turns every other unit into 0x00 or a byte from 0x80 on.
        const __m256i bytes = _mm256_packus_epi16(load32(units + at), load32(units + at + kBlock));
        if (maskOf(_mm256_or_si256(bytes, _mm256_cmpeq_epi8(bytes, _mm256_setzero_si256()))) != 0) {
            break;
        }
    }
    return at;
}

/// Constants of sixteen units. They are read from memory, because otherwise the compiler builds them in each iteration.
struct Constants {
    std::uint16_t notAscii[16], notShort[16], kindMask[16], high[16];
};

constexpr Constants constants() noexcept {
    Constants all = {};
    for (unsigned int unit = 0; unit < 16; ++unit) {
        all.notAscii[unit] = 0xFF80;
        all.notShort[unit] = kSurrogateMask;
        all.kindMask[unit] = kSurrogateKindMask;
        all.high[unit] = kFirstHighSurrogate;
    }
    return all;
}

alignas(32) constexpr Constants kConstants = constants();

/// Counts well-formed UTF-8, block by block.
class DecodedCount {
public:
    /// Counts the bytes of a block whose bits in `kept` are set. False if there is a zero or an ill-formed part.
    VOREL_ALWAYS_INLINE bool add(const unsigned char* bytes, unsigned int kept) noexcept {
        const __m256i block = load32(bytes);
        const unsigned int notAscii = maskOf(block) & kept;
        const unsigned int leads = bytesFrom(0xC0, block) & kept;
        std::uint64_t announced = std::uint64_t{leads} << 1 | m_expected;
        unsigned int fours = 0;
        const unsigned int threes = bytesFrom(0xE0, block) & kept;
        if ((threes | m_second) != 0) {
            fours = bytesFrom(0xF0, block) & kept;
            announced |= std::uint64_t{threes} << 2 | std::uint64_t{fours} << 3;
            // Four bytes that begin with 0xF0 become a surrogate pair, unless they are overlong. Other sequences of
            // four bytes are rare.
            const unsigned int seconds = fours << 1 | m_second;
            if ((bytesFrom(0xF1, block) & kept) != 0 || (seconds & ~bytesFrom(0x90, block)) != 0) {
                return false;
            }
        }
        if ((zerosIn(block) & kept) != 0 || static_cast<std::uint32_t>(announced) != (notAscii & ~leads)) {
            return false;
        }
        m_units += countBits(kept & (~notAscii | leads)) + countBits(fours);
        m_expected = static_cast<unsigned int>(announced >> kBlock);
        m_second = fours >> (kBlock - 1);
        return true;
    }

    void addAscii(std::size_t bytes) noexcept { m_units += static_cast<unsigned int>(bytes); }

    [[nodiscard]] bool isComplete() const noexcept { return m_expected == 0; }
    [[nodiscard]] unsigned int units() const noexcept { return m_units; }

private:
    unsigned int m_units = 0;
    unsigned int m_expected = 0;  // a bit for each trailing byte that the next block must begin with
    unsigned int m_second = 0;    // whether the next byte is the second one of four
};

/// Counts the bytes of units, block by block. Masks have two bits for each unit.
class EncodedCount {
public:
    explicit EncodedCount(bool paired) noexcept : m_k(hidden(kConstants)), m_paired(paired ? ~0u : 0u) {}

    /// Counts the units of a block whose bits in `kept` are set. False if there is a zero or an unpaired surrogate.
    VOREL_ALWAYS_INLINE bool add(const unsigned char* position, unsigned int kept) noexcept {
        const __m256i zero = _mm256_setzero_si256();
        const __m256i block = load32(position);
        const __m256i upper = _mm256_and_si256(block, load32(m_k.notShort));
        const __m256i isShort = _mm256_cmpeq_epi16(upper, zero);
        const __m256i isAscii = _mm256_cmpeq_epi16(_mm256_and_si256(block, load32(m_k.notAscii)), zero);
        const __m256i isSurrogate = _mm256_cmpeq_epi16(upper, load32(m_k.high));
        const __m256i isZero = _mm256_cmpeq_epi16(block, zero);
        const unsigned int stops = maskOf(_mm256_or_si256(isSurrogate, isZero)) & kept;
        unsigned int fewer = 0;
        unsigned int high = 0;
        if ((stops | m_high) != 0) {
            const unsigned int surrogates = maskOf(isSurrogate) & kept & m_paired;
            const unsigned int highs = highsOf(block) & surrogates;
            if ((maskOf(isZero) & kept) != 0 || (highs << 2 | m_high) != (surrogates & ~highs)) {
                return false;
            }
            fewer = countBits(surrogates);  // two bytes each
            high = highs >> (kBlock - 2);
        }
        fewer += countBits(maskOf(isShort) & kept) + countBits(maskOf(isAscii) & kept);
        m_bytes += (3 * countBits(kept) - fewer) / 2;
        m_high = high;
        return true;
    }

    void addAscii(std::size_t bytes) noexcept { m_bytes += static_cast<unsigned int>(bytes / 2); }

    /// Whether the last unit is not the first unit of a pair.
    [[nodiscard]] bool isComplete() const noexcept { return m_high == 0; }
    [[nodiscard]] unsigned int bytes() const noexcept { return m_bytes; }

private:
    [[nodiscard]] VOREL_ALWAYS_INLINE unsigned int highsOf(__m256i block) const noexcept {
        const __m256i kind = _mm256_and_si256(block, load32(m_k.kindMask));
        return maskOf(_mm256_cmpeq_epi16(kind, load32(m_k.high)));
    }

    const Constants& m_k;
    unsigned int m_paired;
    unsigned int m_bytes = 0;
    unsigned int m_high = 0;  // two bits, set if the last unit of the previous block was a high surrogate
};

}  // namespace

Progress countDecodedAvx2(const unsigned char* bytes, std::size_t left) noexcept {
    const unsigned int offset = offsetInBlock(bytes);
    const unsigned char* at = bytes - offset;
    const unsigned char* const end = bytes + atMost(kMaxProgress, left);
    DecodedCount count;
    if (static_cast<std::size_t>(end - at) < kBlock || !count.add(at, ~0u << offset)) {
        return kNoProgress;
    }
    at += kBlock;
    while (static_cast<std::size_t>(end - at) >= kBlock) {
        const unsigned int before = count.units();
        if (!count.add(at, ~0u)) {
            break;
        }
        at += kBlock;
        if (count.units() - before == kBlock && count.isComplete()) {
            const std::size_t ascii = countAscii(at, static_cast<std::size_t>(end - at));
            count.addAscii(ascii);
            at += ascii;
        }
    }
    auto read = static_cast<unsigned int>(at - bytes);
    unsigned int units = count.units();
    if (!count.isComplete()) {  // the last character is left to the next step
        const unsigned int cut = at[-1] >= 0xC0 ? 1 : at[-2] >= 0xC0 ? 2 : 3;
        if (cut >= read) {
            return kNoProgress;
        }
        read -= cut;
        units -= bytes[read] >= 0xF0 ? 2 : 1;
    }
    return {read, units};
}

Progress countEncodedAvx2(const void* units, std::size_t left, bool paired) noexcept {
    const auto* const bytes = static_cast<const unsigned char*>(units);
    const unsigned int offset = offsetInBlock(bytes);
    const unsigned char* at = bytes - offset;
    const unsigned char* const end = bytes + 2 * std::size_t{atMost(kMaxProgress, left)};
    EncodedCount count(paired);
    if (offset % 2 != 0 || static_cast<std::size_t>(end - at) < kBlock || !count.add(at, ~0u << offset)) {
        return kNoProgress;
    }
    at += kBlock;
    while (static_cast<std::size_t>(end - at) >= kBlock) {
        const unsigned int before = count.bytes();
        if (!count.add(at, ~0u)) {
            break;
        }
        at += kBlock;
        if (count.bytes() - before == kBlock / 2 && count.isComplete()) {
            const std::size_t ascii = countAsciiUnits(at, static_cast<std::size_t>(end - at));
            count.addAscii(ascii);
            at += ascii;
        }
    }
    auto read = static_cast<unsigned int>((at - bytes) / 2);
    unsigned int written = count.bytes();
    if (!count.isComplete()) {  // a pair is left to the next step
        read -= 1;
        written -= 2;
    }
    return {read, written};
}

}  // namespace vorel::algorithms
