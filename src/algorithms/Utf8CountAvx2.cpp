// Compiled for AVX2. Do not use standard library functions that are emitted out of line, because the linker could use
// the AVX2 copy of such a function in the whole program.

#include "algorithms/Utf8Avx2.h"

#include <cstdint>

#include "algorithms/Attributes.h"
#include "algorithms/PageReads.h"
#include "algorithms/SimdBlocks.h"
#include "algorithms/Utf16.h"

namespace vorel::algorithms {

namespace {

constexpr unsigned int kBlock = 32;  // bytes

// Blocks are aligned, so each lies in one page. The first block may begin before the text; masks do not include the
// bytes before the text.

VOREL_ALWAYS_INLINE __m256i load32(const void* position) noexcept {
    return _mm256_loadu_si256(static_cast<const __m256i*>(position));
}

VOREL_ALWAYS_INLINE unsigned int offsetInBlock(const void* position) noexcept {
    return static_cast<unsigned int>(offsetInPage(position) % kBlock);
}

/// Counts bytes of ASCII from `bytes` on, in double blocks. Stops before the first double block that contains a zero or
/// a non-ASCII byte, that extends into the next page, or that extends past `left` bytes.
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

/// Constants of sixteen units. They are read from memory, because otherwise the compiler builds them in each iteration.
struct Constants {
    std::uint16_t notAscii[16], notShort[16], kindMask[16], high[16], low[16];
};

constexpr Constants constants() noexcept {
    Constants all = {};
    for (unsigned int unit = 0; unit < 16; ++unit) {
        all.notAscii[unit] = 0xFF80;
        all.notShort[unit] = kSurrogateMask;
        all.kindMask[unit] = kSurrogateKindMask;
        all.high[unit] = kFirstHighSurrogate;
        all.low[unit] = kFirstLowSurrogate;
    }
    return all;
}

alignas(32) constexpr Constants kConstants = constants();

/// The sum of thirty-two bytes.
VOREL_ALWAYS_INLINE std::size_t sumOf(__m256i bytes) noexcept {
    const __m256i four = _mm256_sad_epu8(bytes, _mm256_setzero_si256());
    const __m128i two = _mm_add_epi64(_mm256_castsi256_si128(four), _mm256_extracti128_si256(four, 1));
    return static_cast<std::size_t>(_mm_cvtsi128_si64(_mm_add_epi64(two, _mm_unpackhi_epi64(two, two))));
}

/// Counts the 16-bit units that UTF-8 text decodes to, block by block.
class DecodedCount {
public:
    /// Counts the units that the bytes of a block decode to. Only bytes whose bits in `kept` are set are counted.
    /// Returns false and counts nothing if these bytes contain a zero, an overlong form of four bytes, or a byte above
    /// 0xF0, or if a trailing byte is missing or surplus.
    VOREL_ALWAYS_INLINE bool add(const unsigned char* bytes, unsigned int kept) noexcept {
        const __m256i block = load32(bytes);
        const unsigned int notAscii = maskOf(block) & kept;
        const unsigned int leads = bytesFrom(0xC0, block) & kept;
        std::uint64_t required = std::uint64_t{leads} << 1 | m_expected;
        unsigned int fours = 0;
        const unsigned int threes = bytesFrom(0xE0, block) & kept;
        if ((threes | m_second) != 0) {
            fours = bytesFrom(0xF0, block) & kept;
            required |= std::uint64_t{threes} << 2 | std::uint64_t{fours} << 3;
            // A sequence of four bytes that begins with 0xF0 becomes a surrogate pair, unless it is overlong. Other
            // lead bytes of four-byte sequences are rare, so they are not counted here.
            const unsigned int seconds = fours << 1 | m_second;
            if ((bytesFrom(0xF1, block) & kept) != 0 || (seconds & ~bytesFrom(0x90, block)) != 0) {
                return false;
            }
        }
        if ((zerosIn(block) & kept) != 0 || static_cast<std::uint32_t>(required) != (notAscii & ~leads)) {
            return false;
        }
        m_units += countBits(kept & (~notAscii | leads)) + countBits(fours);
        m_expected = static_cast<unsigned int>(required >> kBlock);
        m_second = fours >> (kBlock - 1);
        return true;
    }

    /// Adds `units`, which another function counted up to `end`, and prepares `add` for the block at `end`. At least
    /// three bytes of the text precede `end`.
    void pass(const unsigned char* end, std::size_t units) noexcept {
        m_units += static_cast<unsigned int>(units);
        const auto isFrom = [&](int position, unsigned int first) { return end[position] >= first ? 1u : 0u; };
        m_second = isFrom(-1, 0xF0);
        m_expected = isFrom(-1, 0xC0) | isFrom(-2, 0xE0) | isFrom(-3, 0xF0);
        m_expected |= (isFrom(-1, 0xE0) | isFrom(-2, 0xF0)) << 1 | m_second << 2;
    }

    /// Whether no trailing byte of the last character is missing.
    [[nodiscard]] bool isComplete() const noexcept { return m_expected == 0; }
    [[nodiscard]] unsigned int units() const noexcept { return m_units; }

private:
    unsigned int m_units = 0;
    unsigned int m_expected = 0;  // a bit for each trailing byte that the next block must begin with
    unsigned int m_second = 0;    // whether the next byte is the second of a sequence of four
};

/// Counts the bytes that 16-bit units take in UTF-8, block by block. Masks have two bits for each unit.
class EncodedCount {
public:
    explicit EncodedCount(bool paired) noexcept : m_k(hidden(kConstants)), m_paired(paired ? ~0u : 0u) {}

    /// Counts the bytes that the units of a block take. Only units whose bits in `kept` are set are counted. Returns
    /// false and counts nothing if these units contain a zero or, if surrogates are paired, an unpaired surrogate.
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
            fewer = countBits(surrogates);  // a surrogate of a pair takes two bytes, not three
            high = highs >> (kBlock - 2);
        }
        fewer += countBits(maskOf(isShort) & kept) + countBits(maskOf(isAscii) & kept);
        m_bytes += (3 * countBits(kept) - fewer) / 2;
        m_high = high;
        return true;
    }

    /// Adds `bytes`, which another function counted up to `end`, and prepares `add` for the block at `end`. At least
    /// one unit of the text precedes `end`.
    void pass(const unsigned char* end, std::size_t bytes) noexcept {
        m_bytes += static_cast<unsigned int>(bytes);
        m_high = (end[-1] & kSurrogateKindMask >> 8) == kFirstHighSurrogate >> 8 ? m_paired & 3 : 0;
    }

    /// Whether the last unit is not the high surrogate of a pair.
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
    unsigned int m_high = 0;  // two bits, set if surrogates are paired and the last unit was a high surrogate
};

/// The number of counted bytes, and the number of units that these bytes decode to.
struct CountedBytes {
    std::size_t bytes;
    std::size_t units;
    bool stopped;  // whether a block of this page stopped the counting
};

/// Counts the units that the blocks in one page decode to. Stops before the first block that `DecodedCount::add` would
/// reject. At least three bytes of the text precede `bytes`. The loop does not branch on the kind of a character,
/// because texts often switch between kinds, and each switch would cost a mispredicted branch. The check of the
/// trailing bytes follows John Keiser and Daniel Lemire, "Validating UTF-8 in less than one instruction per byte".
VOREL_ALWAYS_INLINE CountedBytes countPage(const unsigned char* bytes, std::size_t left) noexcept {
    static_assert(kPageBytes / kBlock < 256);  // each block adds at most 1 to each byte of a counter
    const auto every = [](unsigned char byte) { return _mm256_set1_epi8(static_cast<char>(byte)); };
    const __m256i zero = _mm256_setzero_si256();
    const std::size_t inPage = kPageBytes - offsetInPage(bytes);
    const std::size_t size = (inPage < left ? inPage : left) / kBlock * kBlock;
    __m256i starts = zero;
    __m256i fours = zero;
    std::size_t at = 0;
    for (; at != size; at += kBlock) {
        const __m256i block = load32(bytes + at);
        const __m256i before = load32(bytes + at - 1);
        const __m256i isStart = _mm256_cmpgt_epi8(block, every(0xBF));
        // A byte of `required` is not zero if one of the three preceding bytes of the text requires a trailing byte at
        // this position.
        const __m256i required = _mm256_or_si256(_mm256_or_si256(_mm256_subs_epu8(before, every(0xBF)),
                                                                 _mm256_subs_epu8(load32(bytes + at - 2), every(0xDF))),
                                                 _mm256_subs_epu8(load32(bytes + at - 3), every(0xEF)));
        const __m256i isMisplaced = _mm256_xor_si256(_mm256_cmpeq_epi8(required, zero), isStart);
        // A sequence of four bytes that begins with 0xF0 becomes a surrogate pair, unless it is overlong. Other lead
        // bytes of four-byte sequences are rare, so they are not counted here.
        const __m256i isOverlong =
            _mm256_and_si256(_mm256_cmpeq_epi8(before, every(0xF0)), _mm256_cmpgt_epi8(every(0x90), block));
        const __m256i isOther = _mm256_or_si256(_mm256_subs_epu8(block, every(0xF0)), _mm256_cmpeq_epi8(block, zero));
        const __m256i stops = _mm256_or_si256(_mm256_or_si256(isMisplaced, isOverlong), isOther);
        if (_mm256_testz_si256(stops, stops) == 0) {
            break;
        }
        starts = _mm256_sub_epi8(starts, isStart);
        fours = _mm256_sub_epi8(fours, _mm256_cmpeq_epi8(block, every(0xF0)));
    }
    return {at, sumOf(starts) + sumOf(fours), at != size};
}

/// Counts like `countPage`, but two blocks at a time and in fewer steps, because it also stops before lead bytes of
/// four-byte sequences. The three bytes before `bytes` must not contain such a lead byte.
VOREL_ALWAYS_INLINE CountedBytes countUpToThree(const unsigned char* bytes, std::size_t left) noexcept {
    constexpr std::size_t kDouble = std::size_t{2} * kBlock;
    static_assert(kPageBytes / kBlock < 256);  // each block adds at most 1 to each byte of a counter
    const auto every = [](unsigned char byte) { return _mm256_set1_epi8(static_cast<char>(byte)); };
    const __m256i zero = _mm256_setzero_si256();
    const std::size_t inPage = kPageBytes - offsetInPage(bytes);
    const std::size_t size = (inPage < left ? inPage : left) / kDouble * kDouble;
    // Finds the bytes that must be trailing bytes but are not, and the trailing bytes that no lead byte requires.
    const auto misplaced = [&](const unsigned char* block, __m256i isStart) {
        const __m256i required = _mm256_or_si256(_mm256_subs_epu8(load32(block - 1), every(0xBF)),
                                                 _mm256_subs_epu8(load32(block - 2), every(0xDF)));
        return _mm256_xor_si256(_mm256_cmpeq_epi8(required, zero), isStart);
    };
    __m256i starts = zero;
    std::size_t at = 0;
    for (; at != size; at += kDouble) {
        const __m256i first = load32(bytes + at);
        const __m256i second = load32(bytes + at + kBlock);
        const __m256i firstStart = _mm256_cmpgt_epi8(first, every(0xBF));
        const __m256i secondStart = _mm256_cmpgt_epi8(second, every(0xBF));
        const __m256i isMisplaced =
            _mm256_or_si256(misplaced(bytes + at, firstStart), misplaced(bytes + at + kBlock, secondStart));
        const __m256i isOther = _mm256_or_si256(_mm256_subs_epu8(_mm256_max_epu8(first, second), every(0xEF)),
                                                _mm256_cmpeq_epi8(_mm256_min_epu8(first, second), zero));
        const __m256i stops = _mm256_or_si256(isMisplaced, isOther);
        if (_mm256_testz_si256(stops, stops) == 0) {
            break;
        }
        starts = _mm256_sub_epi8(starts, _mm256_add_epi8(firstStart, secondStart));
    }
    return {at, sumOf(starts), at != size};
}

/// The progress from `bytes` to `end`, without an incomplete last character. The caller's scalar code counts that
/// character.
Progress completeCharacters(const unsigned char* bytes, const unsigned char* end, const DecodedCount& count) noexcept {
    auto read = static_cast<unsigned int>(end - bytes);
    unsigned int units = count.units();
    if (!count.isComplete()) {
        const unsigned int cut = end[-1] >= 0xC0 ? 1 : end[-2] >= 0xC0 ? 2 : 3;
        if (cut >= read) {
            return kNoProgress;
        }
        read -= cut;
        units -= bytes[read] >= 0xF0 ? 2 : 1;
    }
    return {read, units};
}

}  // namespace

Progress countDecodedAvx2(const unsigned char* bytes, std::size_t left) noexcept {
    constexpr std::ptrdiff_t kPreceding = 3;
    const unsigned int offset = offsetInBlock(bytes);
    const unsigned char* at = bytes - offset;
    const unsigned char* const end = bytes + atMost(kMaxProgress, left);
    DecodedCount count;
    bool hasFours = false;  // whether the next bytes probably contain sequences of four bytes
    if (static_cast<std::size_t>(end - at) < kBlock || !count.add(at, ~0u << offset)) {
        return kNoProgress;
    }
    at += kBlock;
    while (static_cast<std::size_t>(end - at) >= kBlock) {
        if (at - bytes >= kPreceding) {
            const std::size_t ascii = count.isComplete() ? countAscii(at, static_cast<std::size_t>(end - at)) : 0;
            if (ascii != 0) {
                at += ascii;
                count.pass(at, ascii);
                continue;
            }
            CountedBytes counted = {0, 0, true};
            if (!hasFours && at[-1] < 0xF0 && at[-2] < 0xF0 && at[-3] < 0xF0) {
                counted = countUpToThree(at, static_cast<std::size_t>(end - at));
                at += counted.bytes;
                count.pass(at, counted.units);
            }
            if (counted.stopped || counted.bytes == 0) {
                const bool wasStopped = counted.stopped;
                counted = countPage(at, static_cast<std::size_t>(end - at));
                at += counted.bytes;
                count.pass(at, counted.units);
                hasFours = wasStopped && counted.bytes != 0;
            }
            if (!counted.stopped) {
                continue;
            }
        }
        if (!count.add(at, ~0u)) {
            break;
        }
        at += kBlock;
    }
    return completeCharacters(bytes, at, count);
}

/// The number of counted units, and the number of bytes that these units have in UTF-8.
struct CountedUnits {
    std::size_t units;
    std::size_t bytes;
    bool stopped;  // whether two blocks of this page stopped the counting
};

/// Whether `countPage` stops at surrogates, or counts surrogate pairs.
enum class SurrogatePairs { Stop, Counted };

/// Counts the UTF-8 bytes of the units in one page, two blocks at a time. Stops before the first two blocks that
/// contain a zero, any surrogate (if `Rule` is `Stop`), or an unpaired surrogate (if `Rule` is `Counted`). At least one
/// unit of the text precedes `units`. The loop does not branch on the kind of a character, for the same reason as in
/// the function for UTF-8 above.
template <SurrogatePairs Rule>
VOREL_ALWAYS_INLINE CountedUnits countPage(const unsigned char* units, std::size_t left) noexcept {
    constexpr std::size_t kPair = std::size_t{2} * kBlock;
    static_assert(kPageBytes / kPair < 256);  // two blocks add at most 1 to each byte of a counter
    const Constants& k = hidden(kConstants);
    const __m256i zero = _mm256_setzero_si256();
    const std::size_t inPage = kPageBytes - offsetInPage(units);
    const std::size_t size = (inPage < left ? inPage : left) / kPair * kPair;
    const auto isSurrogate = [&](__m256i upper) { return _mm256_cmpeq_epi16(upper, load32(k.high)); };
    const auto isUnpaired = [&](const unsigned char* position, __m256i block) {
        const __m256i before = _mm256_and_si256(load32(position - 2), load32(k.kindMask));
        const __m256i kind = _mm256_and_si256(block, load32(k.kindMask));
        return _mm256_xor_si256(_mm256_cmpeq_epi16(before, load32(k.high)), _mm256_cmpeq_epi16(kind, load32(k.low)));
    };
    __m256i ascii = zero;
    __m256i upToTwo = zero;  // units of at most two bytes; each surrogate of a pair counts as two bytes
    std::size_t at = 0;
    for (; at != size; at += kPair) {
        const __m256i first = load32(units + at);
        const __m256i second = load32(units + at + kBlock);
        const __m256i upperOfFirst = _mm256_and_si256(first, load32(k.notShort));
        const __m256i upperOfSecond = _mm256_and_si256(second, load32(k.notShort));
        __m256i firstUpToTwo = _mm256_cmpeq_epi16(upperOfFirst, zero);
        __m256i secondUpToTwo = _mm256_cmpeq_epi16(upperOfSecond, zero);
        __m256i stops = _mm256_cmpeq_epi16(_mm256_min_epu16(first, second), zero);
        if constexpr (Rule == SurrogatePairs::Counted) {
            firstUpToTwo = _mm256_or_si256(firstUpToTwo, isSurrogate(upperOfFirst));
            secondUpToTwo = _mm256_or_si256(secondUpToTwo, isSurrogate(upperOfSecond));
            stops = _mm256_or_si256(stops, isUnpaired(units + at, first));
            stops = _mm256_or_si256(stops, isUnpaired(units + at + kBlock, second));
        } else {
            stops = _mm256_or_si256(stops, isSurrogate(upperOfFirst));
            stops = _mm256_or_si256(stops, isSurrogate(upperOfSecond));
        }
        if (_mm256_testz_si256(stops, stops) == 0) {
            break;
        }
        // Saturated packing keeps 0x01 to 0x7F and turns every other unit into 0x00 or a byte from 0x80 on.
        ascii = _mm256_sub_epi8(ascii, _mm256_cmpgt_epi8(_mm256_packus_epi16(first, second), zero));
        upToTwo = _mm256_sub_epi8(upToTwo, _mm256_packs_epi16(firstUpToTwo, secondUpToTwo));
    }
    return {at / 2, 3 * (at / 2) - sumOf(ascii) - sumOf(upToTwo), at != size};
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
    bool hasPairs = false;
    while (static_cast<std::size_t>(end - at) >= kBlock) {
        const auto bytesLeft = static_cast<std::size_t>(end - at);
        if (hasPairs || count.isComplete()) {
            const CountedUnits counted = hasPairs ? countPage<SurrogatePairs::Counted>(at, bytesLeft)
                                                  : countPage<SurrogatePairs::Stop>(at, bytesLeft);
            at += 2 * counted.units;
            count.pass(at, counted.bytes);
            hasPairs = paired && !hasPairs && counted.stopped;
            if (static_cast<std::size_t>(end - at) < kBlock) {
                break;
            }
        }
        if (!count.add(at, ~0u)) {
            break;
        }
        at += kBlock;
    }
    auto read = static_cast<unsigned int>((at - bytes) / 2);
    unsigned int written = count.bytes();
    if (!count.isComplete()) {  // the last unit begins a surrogate pair, which the caller's scalar code counts
        read -= 1;
        written -= 2;
    }
    return {read, written};
}

}  // namespace vorel::algorithms
