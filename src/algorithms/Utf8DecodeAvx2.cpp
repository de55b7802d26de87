// Compiled for AVX2. Do not use standard library functions that are emitted out of line: the linker could use the AVX2
// copy for the rest of the program.

#include "algorithms/Utf8Avx2.h"

#include <cstdint>

#include "algorithms/PageReads.h"
#include "algorithms/SimdBlocks.h"
#include "algorithms/Utf16.h"

namespace vorel::algorithms {

namespace {

/// Of eight 16-bit elements, keeps those whose bit is set.
constexpr Shuffles keepUnits() noexcept {
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

constexpr Shuffles kKeepUnits = keepUnits();

constexpr unsigned int kBytes = 16;     // per block
constexpr std::size_t kReadBytes = 18;  // including the trailing bytes of the last one
constexpr std::size_t kFourByteBlock = 32;

/// The units that begin at each of sixteen bytes, as if each were a lead byte.
[[gnu::always_inline]] inline __m256i unitsAt(const unsigned char* bytes) noexcept {
    const __m256i lead = _mm256_cvtepu8_epi16(loadBytes(bytes));
    const __m256i low = _mm256_set1_epi16(0x3F);
    const __m256i second = _mm256_and_si256(_mm256_cvtepu8_epi16(loadBytes(bytes + 1)), low);
    const __m256i third = _mm256_and_si256(_mm256_cvtepu8_epi16(loadBytes(bytes + 2)), low);
    const __m256i two = _mm256_or_si256(_mm256_slli_epi16(_mm256_and_si256(lead, _mm256_set1_epi16(0x1F)), 6), second);
    // The shift drops the upper bits of the lead of three bytes.
    const __m256i three =
        _mm256_or_si256(_mm256_or_si256(_mm256_slli_epi16(lead, 12), _mm256_slli_epi16(second, 6)), third);
    const __m256i isLead = _mm256_cmpgt_epi16(lead, _mm256_set1_epi16(0x7F));
    const __m256i isLeadOfThree = _mm256_cmpgt_epi16(lead, _mm256_set1_epi16(0xDF));
    return _mm256_blendv_epi8(_mm256_blendv_epi8(lead, two, isLead), three, isLeadOfThree);
}

/// The kinds of sixteen bytes, one bit each.
struct Bytes {
    [[gnu::always_inline]] explicit Bytes(__m128i block) noexcept
        : zeros(maskOf(_mm_cmpeq_epi8(block, _mm_setzero_si128()))), notAscii(maskOf(block)) {
        // As signed numbers, trailing bytes are below 0xC0, leads of two bytes below 0xE0, and leads of three below
        // 0xF0.
        trailing = maskOf(_mm_cmpgt_epi8(_mm_set1_epi8(-64), block));
        leads = notAscii & ~trailing;
        threes = leads & ~maskOf(_mm_cmpgt_epi8(_mm_set1_epi8(-32), block));
        fours = leads & ~maskOf(_mm_cmpgt_epi8(_mm_set1_epi8(-16), block));
    }

    unsigned int zeros;
    unsigned int notAscii;
    unsigned int trailing;
    unsigned int leads;
    unsigned int threes;  ///< leads of three bytes or more
    unsigned int fours;   ///< leads of four bytes or more, and bytes that do not start a sequence
};

/// Decodes characters of one to three bytes at the end of the text or of the capacity: up to a zero, a lead of four
/// bytes, or the end of the `left` bytes. Writes nothing past the decoded units.
[[gnu::noinline]] Progress decodePart(const unsigned char* bytes, std::size_t left, unsigned char* out,
                                      std::size_t capacity) noexcept {
    const Bytes found(loadBytes(bytes));
    const unsigned int size = atMost(lowestBit(found.zeros | found.fours | 1u << kBytes), left);
    const unsigned int leads = found.leads & lowBits(size);
    const unsigned int announced = leads << 1 | (found.threes & leads) << 2;
    if (((announced ^ found.trailing) & lowBits(size)) != 0) {
        return kNoProgress;
    }
    // A character that is cut off at the end of these bytes is left.
    const unsigned int cut = (bitsFrom(leads, size - 1) & 1) != 0 ? 1 : 2;
    const unsigned int whole = bitsFrom(announced, size) == 0 ? size : size - cut;
    const unsigned int kept = ~found.trailing & lowBits(whole);
    const unsigned int count = countBits(kept);
    if (count > capacity) {
        return kNoProgress;
    }
    const __m256i units = unitsAt(bytes);
    const unsigned int inFirst = countBits(kept & 0xFF);
    storeFirstBytes(shuffled(_mm256_castsi256_si128(units), kKeepUnits, kept & 0xFF), std::size_t{2} * inFirst, out);
    storeFirstBytes(shuffled(_mm256_extracti128_si256(units, 1), kKeepUnits, kept >> 8),
                    std::size_t{2} * (count - inFirst), out + std::size_t{2} * inFirst);
    return {whole, count};
}

/// Decodes characters of four bytes that begin with 0xF0 and are not overlong. Writes nothing past them.
[[gnu::noinline]] Progress decodeFours(const unsigned char* bytes, std::size_t left, unsigned char* out,
                                       std::size_t capacity) noexcept {
    unsigned int read = 0;
    unsigned int written = 0;
    while (isInPage(bytes + read, kFourByteBlock) && read != left) {
        const __m256i block = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes + read));
        const auto every = [](std::uint32_t value) { return _mm256_set1_epi32(static_cast<int>(value)); };
        const __m256i isFour = _mm256_cmpeq_epi32(_mm256_and_si256(block, every(0xC0C0C0FF)), every(0x808080F0));
        const __m256i code =
            _mm256_or_si256(_mm256_or_si256(_mm256_and_si256(_mm256_srli_epi32(block, 24), every(0x3F)),
                                            _mm256_and_si256(_mm256_srli_epi32(block, 10), every(0xFC0))),
                            _mm256_and_si256(_mm256_slli_epi32(block, 4), every(0x3F000)));
        const __m256i isLarge = _mm256_cmpgt_epi32(code, every(kFirstPairedValue - 1));
        const auto fours =
            static_cast<unsigned int>(_mm256_movemask_ps(_mm256_castsi256_ps(_mm256_and_si256(isFour, isLarge))));
        const unsigned int count = atMost(atMost(lowestBit(~fours), (left - read) / 4), (capacity - written) / 2);
        const __m256i high = _mm256_add_epi32(_mm256_srli_epi32(code, 10), every(kHighSurrogateOffset));
        const __m256i low =
            _mm256_or_si256(_mm256_and_si256(code, every(kLowSurrogateBits)), every(kFirstLowSurrogate));
        const __m256i pairs = _mm256_or_si256(high, _mm256_slli_epi32(low, 16));
        unsigned char* const to = out + std::size_t{2} * written;
        read += 4 * count;
        written += 2 * count;
        if (count != 8) {
            const unsigned int inFirst = atMost(count, 4);
            storeFirstBytes(_mm256_castsi256_si128(pairs), std::size_t{4} * inFirst, to);
            storeFirstBytes(_mm256_extracti128_si256(pairs, 1), std::size_t{4} * (count - inFirst), to + 16);
            break;
        }
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), pairs);
    }
    return {read, written};
}

/// Decodes whole blocks of characters of one to three bytes, up to a block with anything else. A character belongs to
/// the block in which it begins; the next block checks its remaining trailing bytes. Sixteen units may be written for
/// each block, significant or not.
[[gnu::noinline]] Progress decodeBlocks(const unsigned char* bytes, std::size_t left, unsigned char* out,
                                        std::size_t capacity) noexcept {
    unsigned int read = 0;
    unsigned int written = 0;
    unsigned int expected = 0;  // trailing bytes, lowest bit first
    while (left - read >= kBytes && capacity - written >= kBytes && isInPage(bytes + read, kReadBytes)) {
        const unsigned char* const next = bytes + read;
        auto* const to = reinterpret_cast<__m128i*>(out + std::size_t{2} * written);
        const __m128i block = loadBytes(next);
        const Bytes found(block);
        if ((found.zeros | found.notAscii | expected) == 0) {
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), _mm256_cvtepu8_epi16(block));
            read += kBytes;
            written += kBytes;
            continue;
        }
        const unsigned int announced = found.leads << 1 | found.threes << 2 | expected;
        if ((found.zeros | found.fours | ((announced ^ found.trailing) & 0xFFFF)) != 0) {
            break;
        }
        const unsigned int kept = ~found.trailing & 0xFFFF;
        const __m256i units = unitsAt(next);
        const unsigned int inFirst = countBits(kept & 0xFF);
        _mm_storeu_si128(to, shuffled(_mm256_castsi256_si128(units), kKeepUnits, kept & 0xFF));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + std::size_t{2} * (written + inFirst)),
                         shuffled(_mm256_extracti128_si256(units, 1), kKeepUnits, kept >> 8));
        read += kBytes;
        written += countBits(kept);
        expected = announced >> kBytes;
    }
    if (expected != 0) {  // the last character is left to the next step
        read -= bytes[read - 1] >= 0xC0 ? 1 : 2;
        --written;
    }
    return {read, written};
}

/// Decodes the next part with the fitting algorithm.
Progress decodeNext(const unsigned char* bytes, std::size_t left, unsigned char* out, std::size_t capacity,
                    Overwrite overwrite) noexcept {
    if (*bytes >= 0xF0) {
        return decodeFours(bytes, left, out, capacity);
    }
    if (overwrite == Overwrite::Allowed && left >= kBytes && capacity >= kBytes) {
        const Progress blocks = decodeBlocks(bytes, left, out, capacity);
        if (blocks.read != 0) {
            return blocks;
        }
    }
    return isInPage(bytes, kReadBytes) ? decodePart(bytes, left, out, capacity) : kNoProgress;
}

}  // namespace

Progress decodeUtf8Avx2(const unsigned char* bytes, std::size_t left, void* out, std::size_t capacity,
                        Overwrite overwrite) noexcept {
    left = atMost(kMaxProgress, left);
    auto* const units = static_cast<unsigned char*>(out);
    unsigned int read = 0;
    unsigned int written = 0;
    while (read != left) {
        const Progress step =
            decodeNext(bytes + read, left - read, units + std::size_t{2} * written, capacity - written, overwrite);
        if (step.read == 0) {
            break;
        }
        read += step.read;
        written += step.written;
    }
    return {read, written};
}

}  // namespace vorel::algorithms
