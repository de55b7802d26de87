// Compiled for AVX2. Do not use standard library functions that are emitted out of line: the linker could use the AVX2
// copy for the rest of the program.

#include "algorithms/Utf8Avx2.h"

#include <cstdint>

#include "algorithms/Attributes.h"
#include "algorithms/PageReads.h"
#include "algorithms/SimdBlocks.h"
#include "algorithms/Utf8EncodeAvx2.h"

namespace vorel::algorithms::encoding {

namespace {

VOREL_ALWAYS_INLINE bool isZero(const unsigned char* unit) noexcept {
    return (unit[0] | unit[1]) == 0;
}

/// The zeros of a block, two bits for each unit.
VOREL_ALWAYS_INLINE unsigned int zerosOf(__m256i units) noexcept {
    return maskOf(_mm256_cmpeq_epi16(units, _mm256_setzero_si256()));
}

/// The bytes of the first units of a block, and the number of these units.
struct Start {
    FourPieces bytes;
    unsigned int count;
};

/// Encodes a block up to a zero or an unpaired surrogate; `left` units of the text are left.
VOREL_ALWAYS_INLINE Start startOf(__m256i block, std::size_t left, bool paired, const Constants& k) noexcept {
    unsigned int stops = zerosOf(block);
    Sequences all(block, k);
    unsigned int highs = 0;
    if (paired) {
        const SurrogatesOf surrogates(block, k);
        all.joinPairs(block, surrogates, k);
        stops |= surrogates.single();
        highs = surrogates.highs();
    }
    unsigned int count = atMost(lowestBit(stops) / 2, left);
    // A pair is not split at the end of the block.
    count -= count != 0 && (bitsFrom(highs, 2 * count - 1) & 1) != 0 ? 1u : 0u;
    return {packed(all, count), count};
}

/// The position in the units and in the output.
struct Positions {
    const unsigned char* units;
    unsigned char* out;
};

VOREL_NOINLINE Progress encodeStart(const unsigned char* units, std::size_t left, unsigned char* out, bool paired,
                                    const Constants& k) noexcept {
    const __m256i block = loadUnits(units);
    const __m256i ascii = _mm256_permute4x64_epi64(_mm256_packus_epi16(block, _mm256_setzero_si256()), 0xD8);
    const unsigned int stops = maskOf(_mm256_or_si256(ascii, _mm256_cmpeq_epi8(ascii, _mm256_setzero_si256())));
    if (lowestBit(stops) >= left) {
        // Often the end of the text.
        const __m256i bytes = _mm256_and_si256(ascii, firstBytes(static_cast<unsigned int>(left)));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm256_castsi256_si128(bytes));
        return {static_cast<unsigned int>(left), static_cast<unsigned int>(left)};
    }
    const Start start = startOf(block, left, paired, k);
    return {start.count, static_cast<unsigned int>(start.bytes.store(out) - out)};
}

/// Encodes pairs of blocks of ASCII before `end`, up to the first pair that contains another unit.
VOREL_ALWAYS_INLINE Positions encodeAscii(Positions at, const unsigned char* end) noexcept {
    for (std::size_t left = static_cast<std::size_t>(end - at.units) / (2 * kBlockBytes); left != 0; --left) {
        // The saturated packing keeps 0x01 to 0x7F and turns every other unit into 0x00 or a byte from 0x80 on.
        const __m256i bytes = _mm256_packus_epi16(loadUnits(at.units), loadUnits(at.units + kBlockBytes));
        if (maskOf(_mm256_or_si256(bytes, _mm256_cmpeq_epi8(bytes, _mm256_setzero_si256()))) != 0) {
            break;
        }
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(at.out), _mm256_permute4x64_epi64(bytes, 0xD8));
        at = {at.units + 2 * kBlockBytes, at.out + std::size_t{2} * kUnits};
    }
    return at;
}

/// Encodes the blocks before `end`. Stops at a block that contains a zero or begins with an unpaired surrogate. The
/// output must have space for all blocks.
VOREL_ALWAYS_INLINE Positions encodeWhole(Positions at, const unsigned char* end, bool paired,
                                          const Constants& k) noexcept {
    while (static_cast<std::size_t>(end - at.units) >= kBlockBytes) {
        const __m256i block = loadUnits(at.units);
        // All bits of zeros are set here, so a zero counts neither as ASCII nor as a unit below 0x800.
        const __m256i bits = _mm256_or_si256(block, _mm256_add_epi16(block, _mm256_set1_epi16(-1)));
        if (hasNone(bits, k.notAscii)) {
            const __m256i bytes = _mm256_permute4x64_epi64(_mm256_packus_epi16(block, block), 0xD8);
            _mm_storeu_si128(reinterpret_cast<__m128i*>(at.out), _mm256_castsi256_si128(bytes));
            at = encodeAscii({at.units + kBlockBytes, at.out + kUnits}, end);
        } else if (hasNone(bits, k.notShort)) {
            at = {at.units + kBlockBytes, encodeUpToTwo(block, k).store(at.out)};
        } else {
            Sequences all(block, k);
            const SurrogatesOf surrogates(block, k);
            unsigned int count = kUnits;
            if (zerosOf(block) != 0) {
                break;
            }
            if (paired && surrogates.any()) {
                all.joinPairs(block, surrogates, k);
                count = lowestBit(surrogates.single()) / 2;
                if (count == 0) {
                    break;
                }
            } else if (all.kinds == 0) {
                at = {at.units + kBlockBytes, storeThrees(all, at.out, k)};
                continue;
            }
            at = {at.units + 2 * std::size_t{count}, packed(all, count).store(at.out)};
        }
    }
    return at;
}

/// The number of blocks that can be read, and can be written with `kMaxWritten` bytes for the last one. These are the
/// blocks in the page, or one block that extends into the next page. 0 if the text may end before the next page.
VOREL_ALWAYS_INLINE std::size_t readableBlocks(const unsigned char* units, std::size_t bytesLeft,
                                               std::size_t room) noexcept {
    const std::size_t inPage = kPageBytes - offsetInPage(units);
    if (inPage < kBlockBytes) {
        return continuesInNextPage(units, bytesLeft) ? 1 : 0;
    }
    const std::size_t readable = (inPage < bytesLeft ? inPage : bytesLeft) / kBlockBytes;
    const std::size_t writable = (room - kMaxWritten) / (std::size_t{3} * kUnits) + 1;
    return readable < writable ? readable : writable;
}

/// Encodes text up to a zero or a surrogate that is not part of a pair, while the output has space for `kMaxWritten`
/// bytes.
VOREL_NOINLINE Progress encodeBlocks(const unsigned char* units, std::size_t left, unsigned char* out,
                                     std::size_t capacity, bool paired) noexcept {
    const Constants& k = hidden(kConstants);
    const unsigned char* const end = units + 2 * left;
    const unsigned char* const limit = out + capacity;
    Positions at = {units, out};
    while (at.units != end && !isZero(at.units) && static_cast<std::size_t>(limit - at.out) >= kMaxWritten) {
        const auto bytesLeft = static_cast<std::size_t>(end - at.units);
        if (bytesLeft >= kBlockBytes) {
            const std::size_t blocks = readableBlocks(at.units, bytesLeft, static_cast<std::size_t>(limit - at.out));
            if (blocks == 0) {
                break;
            }
            const Positions next = encodeWhole(at, at.units + kBlockBytes * blocks, paired, k);
            if (next.units != at.units) {
                at = next;
                continue;
            }
        } else if (!isInPage(at.units, kBlockBytes) && !continuesInNextPage(at.units, bytesLeft)) {
            break;
        }
        const Progress start = encodeStart(at.units, bytesLeft / 2, at.out, paired, k);
        if (start.read == 0) {
            break;
        }
        at = {at.units + 2 * std::size_t{start.read}, at.out + start.written};
    }
    return {static_cast<unsigned int>((at.units - units) / 2), static_cast<unsigned int>(at.out - out)};
}

/// Encodes the first units of a block. Writes nothing past their bytes.
VOREL_NOINLINE Progress encodePart(const unsigned char* units, std::size_t left, unsigned char* out,
                                   std::size_t capacity, bool paired) noexcept {
    const Start start = startOf(loadUnits(units), left, paired, kConstants);
    if (start.bytes.size() > capacity) {
        return kNoProgress;
    }
    start.bytes.storeExactly(out);
    return {start.count, start.bytes.size()};
}

/// Encodes ASCII up to the first other unit, in blocks or in a last double block that is filled up with zeros.
VOREL_ALWAYS_INLINE Progress encodeAsciiStart(const unsigned char* units, std::size_t left, unsigned char* out,
                                              std::size_t capacity) noexcept {
    const std::size_t inPage = kPageBytes - offsetInPage(units);
    std::size_t whole = left < capacity ? left : capacity;
    whole = whole < inPage / 2 ? whole : inPage / 2;
    const Positions at = encodeAscii({units, out}, units + 2 * whole);
    auto read = static_cast<unsigned int>(at.out - out);
    if (read != left && capacity - read >= std::size_t{2} * kUnits && isInPage(at.units, 2 * kBlockBytes)) {
        const __m256i packs = _mm256_packus_epi16(loadUnits(at.units), loadUnits(at.units + kBlockBytes));
        const __m256i bytes = _mm256_permute4x64_epi64(packs, 0xD8);
        const unsigned int stops = maskOf(_mm256_or_si256(bytes, _mm256_cmpeq_epi8(bytes, _mm256_setzero_si256())));
        const unsigned int count = atMost(lowestBit(stops), left - read);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(at.out), _mm256_and_si256(bytes, firstBytes(count)));
        read += count;
    }
    return {read, read};
}

Progress encode(const void* units, std::size_t left, unsigned char* out, std::size_t capacity, bool paired) noexcept {
    left = atMost(kMaxProgress, left);
    const auto* const bytes = static_cast<const unsigned char*>(units);
    // Most text begins with ASCII, and much text is only ASCII.
    const bool isAscii = left != 0 && bytes[0] < 0x80 && bytes[1] == 0;
    const Progress ascii = isAscii ? encodeAsciiStart(bytes, left, out, capacity) : kNoProgress;
    unsigned int read = ascii.read;
    unsigned int written = ascii.written;
    while (read != left && !isZero(bytes + 2 * std::size_t{read})) {
        const unsigned char* const next = bytes + 2 * std::size_t{read};
        Progress step = kNoProgress;
        if (capacity - written >= kMaxWritten) {
            step = encodeBlocks(next, left - read, out + written, capacity - written, paired);
        } else if (isInPage(next, kBlockBytes)) {
            step = encodePart(next, left - read, out + written, capacity - written, paired);
        }
        if (step.read == 0) {
            break;
        }
        read += step.read;
        written += step.written;
    }
    return {read, written};
}

}  // namespace
}  // namespace vorel::algorithms::encoding

namespace vorel::algorithms {

Progress encodeUtf8Avx2(const void* units, std::size_t left, unsigned char* out, std::size_t capacity,
                        bool paired) noexcept {
    return encoding::encode(units, left, out, capacity, paired);
}

}  // namespace vorel::algorithms
