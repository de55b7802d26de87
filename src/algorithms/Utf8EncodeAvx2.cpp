// Compiled for AVX2. Do not use standard library functions that are emitted out of line, because the linker could use
// the AVX2 copy of such a function in the whole program.

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

/// A mask of the zeros in a block, with two bits for each unit.
VOREL_ALWAYS_INLINE unsigned int zerosOf(__m256i units) noexcept {
    return maskOf(_mm256_cmpeq_epi16(units, _mm256_setzero_si256()));
}

/// The UTF-8 of the first units of a block, and the number of these units.
struct Start {
    FourPieces bytes;
    unsigned int count;
};

/// Encodes the first units of a block: up to a zero, at most `left` units, and if `paired` is true, up to an unpaired
/// surrogate.
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
    // A high surrogate is not encoded without the low surrogate after it.
    count -= count != 0 && (bitsFrom(highs, 2 * count - 1) & 1) != 0 ? 1u : 0u;
    return {packed(all, count), count};
}

/// The position in the units and in the output.
struct Positions {
    const unsigned char* units;
    unsigned char* out;
};

/// Encodes the first units of a block (see `startOf`), and writes zeros after their bytes.
VOREL_NOINLINE Progress encodeStart(const unsigned char* units, std::size_t left, unsigned char* out, bool paired,
                                    const Constants& k) noexcept {
    const __m256i block = loadUnits(units);
    const __m256i ascii = _mm256_permute4x64_epi64(_mm256_packus_epi16(block, _mm256_setzero_si256()), 0xD8);
    const unsigned int stops = maskOf(_mm256_or_si256(ascii, _mm256_cmpeq_epi8(ascii, _mm256_setzero_si256())));
    if (lowestBit(stops) >= left) {
        // All units that are left are ASCII. This is frequent at the end of a text.
        const __m256i bytes = _mm256_and_si256(ascii, firstBytes(static_cast<unsigned int>(left)));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm256_castsi256_si128(bytes));
        return {static_cast<unsigned int>(left), static_cast<unsigned int>(left)};
    }
    const Start start = startOf(block, left, paired, k);
    return {start.count, static_cast<unsigned int>(start.bytes.store(out) - out)};
}

/// Stores a pair of blocks that contains only ASCII.
VOREL_ALWAYS_INLINE Positions storePair(Positions at, const PackedAscii& pair) noexcept {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(at.out), pair.bytes());
    return {at.units + kPairBytes, at.out + kPairUnits};
}

/// Stores the ASCII at the start of a pair of blocks, at most `left` units, and zeros after the ASCII.
VOREL_ALWAYS_INLINE Positions storeStart(Positions at, const PackedAscii& pair, std::size_t left) noexcept {
    const unsigned int count = atMost(pair.start(), left);
    const __m256i bytes = _mm256_and_si256(pair.bytes(), firstBytes(count));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(at.out), bytes);
    return {at.units + 2 * std::size_t{count}, at.out + count};
}

/// Encodes pairs of blocks of ASCII before `end`, up to the first pair that contains a zero or a non-ASCII unit.
VOREL_ALWAYS_INLINE Positions encodeAscii(Positions at, const unsigned char* end) noexcept {
    for (std::size_t left = static_cast<std::size_t>(end - at.units) / kPairBytes; left != 0; --left) {
        const PackedAscii pair(at.units);
        if (!pair.isAscii()) {
            break;
        }
        at = storePair(at, pair);
    }
    return at;
}

/// Replaces zeros by 0xFFFF, so that they are not below 0x800. Other units may change, too. But each of these units is
/// below 0x800 afterwards if, and only if, it was below 0x800 before.
VOREL_ALWAYS_INLINE __m256i withoutZeros(__m256i units) noexcept {
    return _mm256_or_si256(units, _mm256_add_epi16(units, _mm256_set1_epi16(-1)));
}

/// Whether all units of a block are below 0x800 and not zero.
VOREL_ALWAYS_INLINE bool isShort(__m256i block, const Constants& k) noexcept {
    return hasNone(withoutZeros(block), k.notShort);
}

/// Whether a block contains neither a zero nor a surrogate.
VOREL_ALWAYS_INLINE bool hasOnlyValues(__m256i block, const Constants& k) noexcept {
    const __m256i upper = _mm256_and_si256(block, loadUnits(k.notShort));
    const __m256i isOther = _mm256_or_si256(_mm256_cmpeq_epi16(block, _mm256_setzero_si256()),
                                            _mm256_cmpeq_epi16(upper, loadUnits(k.high)));
    return _mm256_testz_si256(isOther, isOther) != 0;
}

/// Encodes a block that contains surrogates. If `paired` is true, stops at the first surrogate that is not part of a
/// pair within the block. If the block begins with such a surrogate, or contains a zero, encodes nothing and returns
/// `at`.
VOREL_ALWAYS_INLINE Positions encodePairs(Positions at, __m256i block, bool paired, const Constants& k) noexcept {
    if (zerosOf(block) != 0) {
        return at;
    }
    Sequences all(block, k);
    unsigned int count = kUnits;
    if (paired) {
        const SurrogatesOf surrogates(block, k);
        all.joinPairs(block, surrogates, k);
        count = lowestBit(surrogates.single()) / 2;
    }
    return {at.units + 2 * std::size_t{count}, packed(all, count).store(at.out)};
}

/// Stores the UTF-8 of a block of units below 0x800. If `isAscii` is true, `ascii` already contains the UTF-8. Returns
/// the end of the UTF-8.
VOREL_ALWAYS_INLINE unsigned char* storeShort(__m256i block, bool isAscii, __m128i ascii, unsigned char* out,
                                              const Constants& k) noexcept {
    if (isAscii) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out), ascii);
        return out + kUnits;
    }
    return storeUpToTwo(block, out, k);
}

/// Encodes pairs of blocks before `end`. Stops when the output is past `lastOut`, or at a pair that contains a zero or
/// a unit of 0x800 or more.
VOREL_ALWAYS_INLINE Positions encodeShort(Positions at, const unsigned char* end, const unsigned char* lastOut,
                                          const Constants& k) noexcept {
    std::size_t left = static_cast<std::size_t>(end - at.units) / kPairBytes;
    for (; left != 0 && at.out <= lastOut; --left) {
        const __m256i first = loadUnits(at.units);
        const __m256i second = loadUnits(at.units + kBlockBytes);
        const PackedAscii pair(first, second);
        if (pair.isAscii()) {
            at = storePair(at, pair);
            continue;
        }
        const __m256i bits = _mm256_or_si256(first, second);
        if (!hasNone(_mm256_or_si256(bits, withoutZeros(_mm256_min_epu16(first, second))), k.notShort)) {
            break;
        }
        const __m256i bytes = pair.bytes();
        at.out = storeShort(first, pair.isAscii(PackedAscii::kInFirst), _mm256_castsi256_si128(bytes), at.out, k);
        at.out =
            storeShort(second, pair.isAscii(PackedAscii::kInSecond), _mm256_extracti128_si256(bytes, 1), at.out, k);
        at.units += kPairBytes;
    }
    return at;
}

/// Encodes the blocks before `end` while the output has space for `kMaxWritten` bytes before `limit`. Stops at a block
/// that contains a zero or, if `paired` is true, begins with an unpaired surrogate. `end` is at most the end of the
/// page in which `at.units` lies. An aligned pair of blocks lies in one page. So if `at.units` is aligned, units below
/// 0x800 are also encoded past `end`, in pairs of blocks, up to `textEnd`. A stop at every page border would cost a
/// mispredicted branch.
VOREL_ALWAYS_INLINE Positions encodeWhole(Positions at, const unsigned char* end, const unsigned char* textEnd,
                                          const unsigned char* limit, bool paired, const Constants& k) noexcept {
    const unsigned char* const lastOut = limit - kMaxWritten;
    const auto isAtEnd = [&] { return end - at.units < std::ptrdiff_t{kBlockBytes} || at.out > lastOut; };
    for (;;) {
        at = encodeShort(at, offsetInPage(at.units) % kPairBytes == 0 ? textEnd : end, lastOut, k);
        if (isAtEnd()) {
            return at;
        }
        __m256i block = loadUnits(at.units);
        if (isShort(block, k)) {
            // This is the last block, or the second block of the pair contains a zero or a unit of 0x800 or more.
            at = {at.units + kBlockBytes, storeUpToTwo(block, at.out, k)};
            if (isAtEnd()) {
                return at;
            }
            block = loadUnits(at.units);
        }
        while (!isShort(block, k)) {
            if (hasOnlyValues(block, k)) [[likely]] {
                at = {at.units + kBlockBytes, packed(Sequences(block, k), kUnits).store(at.out)};
            } else {
                const Positions next = encodePairs(at, block, paired, k);
                if (next.units == at.units) {
                    return at;
                }
                at = next;
            }
            if (isAtEnd()) {
                return at;
            }
            block = loadUnits(at.units);
        }
    }
}

/// Encodes text while the output has space for `kMaxWritten` bytes. Stops at a zero, at an unpaired surrogate if
/// `paired` is true, and at a block that may extend into a page after the end of the text.
VOREL_NOINLINE Progress encodeBlocks(const unsigned char* units, std::size_t left, unsigned char* out,
                                     std::size_t capacity, bool paired) noexcept {
    const Constants& k = hidden(kConstants);
    const unsigned char* const end = units + 2 * left;
    const unsigned char* const limit = out + capacity;
    Positions at = {units, out};
    while (at.units != end && !isZero(at.units) && static_cast<std::size_t>(limit - at.out) >= kMaxWritten) {
        const auto bytesLeft = static_cast<std::size_t>(end - at.units);
        if (bytesLeft < kPairBytes && isInPage(at.units, kPairBytes)) {
            const PackedAscii pair(at.units);
            if (pair.isAscii(1)) {
                at = storeStart(at, pair, bytesLeft / 2);
                continue;
            }
        }
        const std::size_t inPage = kPageBytes - offsetInPage(at.units);
        const std::size_t readable = inPage < bytesLeft ? inPage : bytesLeft;
        if (readable >= kBlockBytes) {
            const Positions next = encodeWhole(at, at.units + readable, end, limit, paired, k);
            if (next.units != at.units) {
                at = next;
                continue;
            }
        } else if (inPage < kBlockBytes && !continuesInNextPage(at.units, bytesLeft)) {
            break;
        }
        // At the end of a page, the first call encodes only the units in this page, so that the blocks after them are
        // aligned. The second call encodes a surrogate pair that crosses the border.
        Progress start = encodeStart(at.units, readable / 2, at.out, paired, k);
        if (start.read == 0 && readable != bytesLeft) {
            start = encodeStart(at.units, bytesLeft / 2, at.out, paired, k);
        }
        if (start.read == 0) {
            break;
        }
        at = {at.units + 2 * std::size_t{start.read}, at.out + start.written};
    }
    return {static_cast<unsigned int>((at.units - units) / 2), static_cast<unsigned int>(at.out - out)};
}

/// Encodes the first units of a block (see `startOf`). Writes nothing past the bytes of these units, and nothing at all
/// if the bytes exceed the capacity.
VOREL_NOINLINE Progress encodePart(const unsigned char* units, std::size_t left, unsigned char* out,
                                   std::size_t capacity, bool paired) noexcept {
    const Start start = startOf(loadUnits(units), left, paired, kConstants);
    if (start.bytes.size() > capacity) {
        return kNoProgress;
    }
    start.bytes.storeExactly(out);
    return {start.count, static_cast<unsigned int>(start.bytes.size())};
}

/// Copies `count` bytes and writes nothing past them. `count` must be below sixty-four. At least sixteen bytes must be
/// readable at `from`.
VOREL_ALWAYS_INLINE void copyBytes(const unsigned char* from, std::size_t count, unsigned char* to) noexcept {
    constexpr std::size_t kVector = 32;
    if (count >= kVector) {
        const __m256i last = loadUnits(from + count - kVector);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), loadUnits(from));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(to + count - kVector), last);
    } else if (count >= kVector / 2) {
        const __m128i last = loadBytes(from + count - kVector / 2);
        storeBytes(loadBytes(from), to);
        storeBytes(last, to + count - kVector / 2);
    } else {
        storeFirstBytes(loadBytes(from), count, to);
    }
}

/// Encodes up to `kMaxWritten` units and writes nothing past their bytes. Encodes nothing if these bytes exceed the
/// capacity, which is less than `kMaxWritten`.
VOREL_NOINLINE Progress encodeLast(const unsigned char* units, std::size_t left, unsigned char* out,
                                   std::size_t capacity, bool paired) noexcept {
    unsigned char buffer[4 * kMaxWritten];
    const Progress all = encodeBlocks(units, atMost(kMaxWritten, left), buffer, sizeof buffer, paired);
    if (all.read == 0 || all.written > capacity) {
        return kNoProgress;
    }
    copyBytes(buffer, all.written, out);
    return all;
}

/// Whether the text has no zero before the next page. Fewer than two blocks of the page must be left.
VOREL_ALWAYS_INLINE bool hasNoZeroInPage(const unsigned char* units) noexcept {
    const std::size_t before = kPairBytes - (kPageBytes - offsetInPage(units));
    const unsigned char* const last = units - before;
    const std::uint64_t zeros = std::uint64_t{zerosOf(loadUnits(last + kBlockBytes))} << 32 | zerosOf(loadUnits(last));
    return zeros >> before == 0;
}

/// Encodes units below 0x800 at the start of a text, in pairs of blocks, at most up to the end of the second page.
/// Then, if the text ends or probably ends in the next pair of blocks, encodes the ASCII at the start of this pair and
/// writes zeros after this ASCII. The text ends in the pair if fewer than two blocks of the text are left. The text
/// probably ends in the pair if the pair contains no unit from 0x80 to 0x7FFF. If the pair does not lie in one page, or
/// if the output has space for fewer than `kPairUnits` bytes, nothing of the pair is encoded.
VOREL_ALWAYS_INLINE Progress encodeShortStart(const unsigned char* units, std::size_t left, unsigned char* out,
                                              std::size_t capacity) noexcept {
    const Constants& k = hidden(kConstants);
    const unsigned char* const textEnd = units + 2 * left;
    const unsigned char* const pageEnd = units + (kPageBytes - offsetInPage(units));
    const unsigned char* const limit = out + capacity;
    const unsigned char* end = textEnd < pageEnd ? textEnd : pageEnd;
    const auto encodeAsciiPairs = [&](Positions at) {
        const std::size_t room = 2 * static_cast<std::size_t>(limit - at.out);
        return encodeAscii(at, static_cast<std::size_t>(end - at.units) < room ? end : at.units + room);
    };
    Positions at = encodeAsciiPairs({units, out});
    if (capacity >= kMaxWritten) {
        at = encodeShort(at, end, limit - kMaxWritten, k);
        // If the units have odd addresses, one unit crosses the page border.
        const bool isAtBorder = end != textEnd && pageEnd - at.units < std::ptrdiff_t{kPairBytes};
        if (isAtBorder && offsetInPage(units) % 2 == 0 && (at.units == pageEnd || hasNoZeroInPage(at.units))) {
            end = textEnd - pageEnd < std::ptrdiff_t{kPageBytes} ? textEnd : pageEnd + kPageBytes;
            at = encodeShort(at, end, limit - kMaxWritten, k);
        }
    }
    if (end - at.units >= std::ptrdiff_t{kPairBytes}) {
        at = encodeAsciiPairs(at);
    }
    const std::size_t rest = static_cast<std::size_t>(textEnd - at.units) / 2;
    if (rest != 0 && static_cast<std::size_t>(limit - at.out) >= kPairUnits && isInPage(at.units, kPairBytes)) {
        const PackedAscii pair(at.units);
        // If the whole pair belongs to the text and contains units from 0x80 to 0x7FFF, `encodeBlocks` encodes it
        // faster.
        if (rest < kPairUnits || pair.hasOnlyZeros()) {
            at = storeStart(at, pair, rest);
        }
    }
    return {static_cast<unsigned int>((at.units - units) / 2), static_cast<unsigned int>(at.out - out)};
}

Progress encode(const void* units, std::size_t left, unsigned char* out, std::size_t capacity, bool paired) noexcept {
    left = atMost(kMaxProgress, left);
    const auto* const bytes = static_cast<const unsigned char*>(units);
    // Many texts consist of units below 0x800, or begin with such units.
    const bool startsShort = left != 0 && bytes[1] < 8;
    const Progress start = startsShort ? encodeShortStart(bytes, left, out, capacity) : kNoProgress;
    unsigned int read = start.read;
    unsigned int written = start.written;
    while (read != left && !isZero(bytes + 2 * std::size_t{read})) {
        const unsigned char* const next = bytes + 2 * std::size_t{read};
        Progress step = kNoProgress;
        if (capacity - written >= kMaxWritten) {
            step = encodeBlocks(next, left - read, out + written, capacity - written, paired);
        } else {
            step = encodeLast(next, left - read, out + written, capacity - written, paired);
            if (step.read == 0 && isInPage(next, kBlockBytes)) {
                step = encodePart(next, left - read, out + written, capacity - written, paired);
            }
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
