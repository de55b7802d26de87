// Compiled for AVX2. Do not use standard library functions that are emitted out of line, because the linker could use
// the AVX2 copy of such a function in the whole program.

#include "algorithms/Utf8Avx2.h"

#include <cstdint>

#include "algorithms/Attributes.h"
#include "algorithms/PageReads.h"
#include "algorithms/SimdBlocks.h"
#include "algorithms/Utf8DecodeAvx2.h"

namespace vorel::algorithms::decoding {

namespace {

/// Decodes the characters among the next sixteen bytes, up to a zero, a byte above 0xF0, or the end of the text.
/// Decodes nothing if a character is ill-formed or the units exceed the capacity. Unlike the functions for blocks, this
/// function writes nothing past the decoded units.
VOREL_NOINLINE Progress decodePart(const unsigned char* bytes, std::size_t left, unsigned char* out,
                                   std::size_t capacity) noexcept {
    const Bytes found(loadBytes(bytes), kConstants);
    const unsigned int size = atMost(lowestBit(found.zeros | found.others | 1u << kBytes), left);
    const unsigned int leads = found.leads & lowBits(size);
    const unsigned int announced = leads << 1 | (found.threes & leads) << 2 | (found.fours & leads) << 3;
    if (((announced ^ found.trailing) & lowBits(size)) != 0) {
        return kNoProgress;
    }
    // A character that extends past these bytes is not decoded.
    const unsigned int last = bitsFrom(leads << 3, size);  // the lead bytes among the last three bytes
    const unsigned int cut = (last & 4) != 0 ? 1 : (last & 2) != 0 ? 2 : 3;
    const unsigned int whole = bitsFrom(announced, size) == 0 ? size : size - cut;
    const unsigned int thirds = (found.fours & leads) << 2;
    const unsigned int kept = (~found.trailing | thirds) & lowBits(whole);
    const unsigned int count = countBits(kept);
    Units units(bytes, kConstants);
    if (count > capacity || (thirds != 0 && !units.splitFours(thirds, kConstants))) {
        return kNoProgress;
    }
    const unsigned int inFirst = countBits(kept & 0xFF);
    storeFirstBytes(units.lower(kept), std::size_t{2} * inFirst, out);
    storeFirstBytes(units.upper(kept), std::size_t{2} * (count - inFirst), out + std::size_t{2} * inFirst);
    return {whole, count};
}

/// Stores the units of a register and the zeros after these units.
VOREL_ALWAYS_INLINE void storeUnits(__m128i units, unsigned char* out) noexcept {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), units);
}

/// The position in the bytes and in the output. The last character before the position may be incomplete, that is, some
/// of its bytes may follow the position. The bits of `expected` are set for these bytes; bit 0 belongs to the byte at
/// the position. The first unit of an incomplete character is already written, because this unit is computed from bytes
/// that are read ahead. A character of four bytes has a second unit. If its third byte follows the position, the bit of
/// `thirds` for this byte is set; otherwise, the second unit is already written, too.
struct Decoding {
    const unsigned char* bytes;
    unsigned char* out;
    unsigned int expected;
    unsigned int thirds;
};

/// Decodes thirty-two bytes: the rest of the incomplete character, if there is one, and characters of one or two bytes.
/// `trailing` has a bit for each trailing byte among these bytes, and for the byte after them if that byte must be a
/// trailing byte.
VOREL_ALWAYS_INLINE void decodeUpToTwo(Decoding& at, std::uint64_t trailing, const Constants& k) noexcept {
    const auto half = [&](unsigned int first) {
        const auto load = [](const unsigned char* lower, const unsigned char* upper) {
            return _mm256_inserti128_si256(_mm256_castsi128_si256(loadBytes(lower)), loadBytes(upper), 1);
        };
        const __m256i pairs = _mm256_shuffle_epi8(
            load(at.bytes + first, at.bytes + first + 8),
            load(kPairBytes.order[trailing >> first & 0x1FF], kPairBytes.order[trailing >> (first + 8) & 0x1FF]));
        // The masks drop the upper three bits of a lead byte and the top bit of a trailing byte.
        return _mm256_or_si256(_mm256_and_si256(pairs, load32(k.lowerOfTwo)),
                               _mm256_srli_epi16(_mm256_and_si256(pairs, load32(k.upperOfTwo)), 2));
    };
    const auto end = [&](unsigned int count) {
        const auto before = static_cast<unsigned int>(trailing & ((std::uint64_t{1} << count) - 1));
        return at.out + 2 * std::size_t{count - countBits(before)};
    };
    const __m256i lower = half(0);
    const __m256i upper = half(16);
    storeUnits(_mm256_castsi256_si128(lower), at.out);
    storeUnits(_mm256_extracti128_si256(lower, 1), end(8));
    storeUnits(_mm256_castsi256_si128(upper), end(16));
    storeUnits(_mm256_extracti128_si256(upper, 1), end(24));
    at = {at.bytes + kDoubleBlock, end(32), static_cast<unsigned int>(trailing >> kDoubleBlock), 0};
}

/// Decodes eight characters of three bytes.
VOREL_ALWAYS_INLINE void decodeThrees(Decoding& at, const Constants& k) noexcept {
    const __m256i bytes =
        _mm256_inserti128_si256(_mm256_castsi128_si256(loadBytes(at.bytes)), loadBytes(at.bytes + 12), 1);
    const __m256i bits = _mm256_and_si256(_mm256_shuffle_epi8(bytes, load32(k.threes)), load32(k.bitsOfThree));
    const __m256i values =
        _mm256_madd_epi16(_mm256_maddubs_epi16(bits, load32(k.scaleOfTrailing)), load32(k.scaleOfLead));
    storeUnits(_mm_packus_epi32(_mm256_castsi256_si128(values), _mm256_extracti128_si256(values, 1)), at.out);
    at.bytes += kThreesBlock;
    at.out += 16;
}

/// Decodes the characters in a block, up to a zero or the end of the text. `left` is the number of bytes left in the
/// text. Returns false and decodes nothing if there are no such characters, if one of them is ill-formed or truncated,
/// if the block contains a byte above 0xF0, or if a byte from 0xC0 on follows the zero or the end of the text in the
/// block.
VOREL_ALWAYS_INLINE bool decodeBlock(Decoding& at, std::size_t left, const Constants& k) noexcept {
    const Bytes found(loadBytes(at.bytes), k);
    const unsigned int size = atMost(lowestBit(found.zeros | found.others | 1u << kBytes), left);
    const unsigned int announced = found.leads << 1 | found.threes << 2 | found.fours << 3 | at.expected;
    // A character may be incomplete only at the end of a whole block.
    if (((announced ^ found.trailing) & lowBits(size)) != 0 || size == 0 ||
        (size != kBytes && bitsFrom(announced, size) != 0)) {
        return false;
    }
    const unsigned int thirds = found.fours << 2 | at.thirds;
    const unsigned int kept = (~found.trailing | thirds) & lowBits(size);
    Units units(at.bytes, k);
    if (thirds != 0 && !units.splitFours(thirds, k)) {
        return false;
    }
    storeUnits(units.lower(kept), at.out);
    storeUnits(units.upper(kept), at.out + std::size_t{2} * countBits(kept & 0xFF));
    const bool whole = size == kBytes;
    at = {at.bytes + size, at.out + std::size_t{2} * countBits(kept), whole ? announced >> kBytes : 0,
          whole ? thirds >> kBytes : 0};
    return true;
}

/// Decodes double blocks of ASCII before `end`, up to the first double block that contains a zero or a non-ASCII byte.
VOREL_ALWAYS_INLINE void decodeAscii(Decoding& at, const unsigned char* end) noexcept {
    for (std::size_t left = static_cast<std::size_t>(end - at.bytes) / kDoubleBlock; left != 0; --left) {
        const __m256i block = load32(at.bytes);
        if (maskOf(_mm256_or_si256(block, _mm256_cmpeq_epi8(block, _mm256_setzero_si256()))) != 0) {
            return;
        }
        storeCharacters(block, reinterpret_cast<WideUnit*>(at.out));
        at.bytes += kDoubleBlock;
        at.out += std::size_t{2} * kDoubleBlock;
    }
}

/// Decodes text while at least a double block is left before `end`, up to a zero, a byte above 0xF0, or an ill-formed
/// part. `end` lies in the page of `at.bytes`. An aligned double block lies in one page. So if `at.bytes` is aligned,
/// double blocks of ASCII are also decoded past `end`, up to `last`. A stop at every page border would cost a
/// mispredicted branch. `last` must not be past the end of the text, and the output must have space for one unit for
/// each byte before `last`.
VOREL_ALWAYS_INLINE void decodeWhole(Decoding& at, const unsigned char* end, const unsigned char* last,
                                     const Constants& k) noexcept {
    constexpr unsigned int kLeadsOfThrees = 0x249249;
    while (end - at.bytes >= std::ptrdiff_t{kDoubleBlock}) {
        const __m256i block = load32(at.bytes);
        const unsigned int notAscii = maskOf(block);
        const __m256i isZero = _mm256_cmpeq_epi8(block, _mm256_setzero_si256());
        const __m256i isLong = _mm256_cmpeq_epi8(_mm256_max_epu8(block, load32(k.firstOfThree)), block);
        const __m256i isOther = _mm256_or_si256(isZero, isLong);
        if (at.thirds == 0 && _mm256_testz_si256(isOther, isOther) != 0) {
            if ((notAscii | at.expected) == 0) {
                storeCharacters(block, reinterpret_cast<WideUnit*>(at.out));
                at.bytes += kDoubleBlock;
                at.out += std::size_t{2} * kDoubleBlock;
                decodeAscii(at, offsetInPage(at.bytes) % kDoubleBlock == 0 ? last : end);
                continue;
            }
            const unsigned int leads = notAscii & maskOf(_mm256_cmpgt_epi8(block, load32(k.lastTrailing)));
            const std::uint64_t announced = std::uint64_t{leads} << 1 | at.expected;
            if (static_cast<std::uint32_t>(announced) != (notAscii & ~leads)) {
                return;
            }
            decodeUpToTwo(at, announced, k);
            continue;
        }
        if (at.expected == 0 && (maskOf(isLong) & 0xFFFFFF) == kLeadsOfThrees) {
            const unsigned int trailing = notAscii & ~maskOf(_mm256_cmpgt_epi8(block, load32(k.lastTrailing)));
            const __m256i isFour = _mm256_cmpeq_epi8(_mm256_max_epu8(block, load32(k.firstOfFour)), block);
            if ((trailing & 0xFFFFFF) == (~kLeadsOfThrees & 0xFFFFFF) && (maskOf(isFour) & 0xFFFFFF) == 0) {
                decodeThrees(at, k);
                continue;
            }
        }
        if (!decodeBlock(at, kBytes, k)) {
            return;
        }
    }
}

/// The limit for decoding in double blocks. A double block that ends at or before this limit is in the text and fits
/// into the output. It can be read without leaving the page.
VOREL_ALWAYS_INLINE const unsigned char* endOfWhole(const unsigned char* bytes, std::size_t left,
                                                    std::size_t room) noexcept {
    const std::size_t inPage = kPageBytes - offsetInPage(bytes);
    std::size_t size = inPage < kReadDouble ? 0 : inPage - (kReadDouble - kDoubleBlock);
    size = size < left ? size : left;
    return bytes + (size < room ? size : room);
}

/// Whether `kReadBytes` bytes can be read.
VOREL_ALWAYS_INLINE bool isReadable(const Decoding& at, std::size_t left) noexcept {
    return isInPage(at.bytes, kReadBytes) || continuesInNextPage(at.bytes, left, at.expected);
}

/// Decodes the ASCII up to the end of the page, at most a double block. At the start of the next page, double blocks
/// are aligned. Returns false and decodes nothing if these bytes are not all ASCII or contain a zero, if the text does
/// not contain all of them, or if the last character before them is incomplete.
VOREL_ALWAYS_INLINE bool decodeToPage(Decoding& at, std::size_t left) noexcept {
    const std::size_t inPage = kPageBytes - offsetInPage(at.bytes);
    const unsigned int size = atMost(kDoubleBlock, inPage);
    const __m256i block = load32(at.bytes);
    const unsigned int stops = maskOf(_mm256_or_si256(block, _mm256_cmpeq_epi8(block, _mm256_setzero_si256())));
    if (left < size || at.expected != 0 || lowestBit(stops) < size) {
        return false;
    }
    storeCharacters(block, reinterpret_cast<WideUnit*>(at.out));
    at.bytes += size;
    at.out += std::size_t{2} * size;
    return true;
}

/// Decodes text up to a zero, a byte above 0xF0, or an ill-formed part, while the output has space for `kDoubleBlock`
/// units. Also stops if the next bytes may lie in a page that cannot be read.
VOREL_NOINLINE Progress decodeBlocks(const unsigned char* bytes, std::size_t left, unsigned char* out,
                                     std::size_t capacity) noexcept {
    const Constants& k = hidden(kConstants);
    const unsigned char* const end = bytes + left;
    const unsigned char* const limit = out + 2 * capacity;
    Decoding at = {bytes, out, 0, 0};
    for (;;) {
        const auto room = static_cast<std::size_t>(limit - at.out) / 2;
        const auto rest = static_cast<std::size_t>(end - at.bytes);
        if (rest == 0 || *at.bytes == 0 || room < kDoubleBlock) {
            break;
        }
        const unsigned char* const before = at.bytes;
        decodeWhole(at, endOfWhole(at.bytes, rest, room), at.bytes + (rest < room ? rest : room), k);
        if (at.bytes != before) {
            continue;
        }
        if (!isReadable(at, rest) || (!decodeToPage(at, rest) && !decodeBlock(at, rest, k))) {
            break;
        }
    }
    auto read = static_cast<unsigned int>(at.bytes - bytes);
    auto written = static_cast<unsigned int>((at.out - out) / 2);
    if (at.expected != 0) {  // the last character is incomplete, so the caller must read it again
        const unsigned int cut = bytes[read - 1] >= 0xC0 ? 1 : bytes[read - 2] >= 0xC0 ? 2 : 3;
        read -= cut;
        written -= cut == 3 ? 2 : 1;
    }
    return {read, written};
}

/// Decodes the ASCII at the start of a text, in double blocks, at most up to the end of the page. With `Allowed`, the
/// function then decodes the ASCII at the start of the next double block as well, if this double block is in the page
/// and the output has space for it. In this case, the function may write past the decoded units.
VOREL_ALWAYS_INLINE Progress decodeAsciiStart(const unsigned char* bytes, std::size_t left, unsigned char* out,
                                              std::size_t capacity, Overwrite overwrite) noexcept {
    Decoding at = {bytes, out, 0, 0};
    decodeAscii(at, endOfWhole(bytes, left, capacity));
    auto read = static_cast<unsigned int>(at.bytes - bytes);
    if (overwrite == Overwrite::Allowed && read != left && capacity - read >= kDoubleBlock &&
        isInPage(at.bytes, kDoubleBlock)) {
        const __m256i block = load32(at.bytes);
        const unsigned int stops = maskOf(_mm256_or_si256(block, _mm256_cmpeq_epi8(block, _mm256_setzero_si256())));
        storeCharacters(block, reinterpret_cast<WideUnit*>(at.out));
        read += atMost(lowestBit(stops), left - read);
    }
    return {read, read};
}

/// Decodes the next part of the text with the function that fits `capacity` and `overwrite`.
Progress decodeNext(const unsigned char* bytes, std::size_t left, unsigned char* out, std::size_t capacity,
                    Overwrite overwrite) noexcept {
    if (overwrite == Overwrite::Allowed && capacity >= kDoubleBlock) {
        return decodeBlocks(bytes, left, out, capacity);
    }
    if (*bytes < 0x80 && capacity >= kDoubleBlock) {
        const Progress ascii = decodeAsciiStart(bytes, left, out, capacity, overwrite);
        if (ascii.read != 0) {
            return ascii;
        }
    }
    return isInPage(bytes, kReadBytes) ? decodePart(bytes, left, out, capacity) : kNoProgress;
}

Progress decode(const unsigned char* bytes, std::size_t left, void* out, std::size_t capacity,
                Overwrite overwrite) noexcept {
    left = atMost(kMaxProgress, left);
    auto* const units = static_cast<unsigned char*>(out);
    // Most text begins with ASCII, and much text is only ASCII.
    const bool isAscii = left != 0 && bytes[0] < 0x80;
    const Progress ascii = isAscii ? decodeAsciiStart(bytes, left, units, capacity, overwrite) : kNoProgress;
    unsigned int read = ascii.read;
    unsigned int written = ascii.written;
    while (read != left && bytes[read] != 0) {
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

}  // namespace
}  // namespace vorel::algorithms::decoding

namespace vorel::algorithms {

Progress decodeUtf8Avx2(const unsigned char* bytes, std::size_t left, void* out, std::size_t capacity,
                        Overwrite overwrite) noexcept {
    return decoding::decode(bytes, left, out, capacity, overwrite);
}

}  // namespace vorel::algorithms
