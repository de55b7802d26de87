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

/// Of eight bytes, of which a bit for each and for the next one says whether it is a trailing byte: a unit for each
/// other byte, with the trailing byte in its lower half and the lead byte in its upper half, or with a byte of ASCII.
struct PairShuffles {
    unsigned char order[512][16];
};

constexpr PairShuffles pairBytes() noexcept {
    PairShuffles shuffles = {};
    for (unsigned int trailing = 0; trailing < 512; ++trailing) {
        unsigned int to = 0;
        for (unsigned char byte = 0; byte < 8; ++byte) {
            if ((trailing >> byte & 1) == 0) {
                const bool isLead = (trailing >> (byte + 1) & 1) != 0;
                shuffles.order[trailing][to++] = static_cast<unsigned char>(isLead ? byte + 1 : byte);
                shuffles.order[trailing][to++] = isLead ? byte : 0x80;
            }
        }
        while (to < 16) {
            shuffles.order[trailing][to++] = 0x80;
        }
    }
    return shuffles;
}

constexpr PairShuffles kPairBytes = pairBytes();

constexpr unsigned int kBytes = 16;  // per block
constexpr unsigned int kDoubleBlock = 32;
constexpr std::size_t kReadBytes = 32;    // at a block
constexpr std::size_t kReadDouble = 40;   // at a double block: sixteen bytes at each eighth byte
constexpr std::size_t kThreesBlock = 24;  // eight characters

/// Constants of thirty-two bytes. They are read from memory, because the compiler would build them again in each round.
struct Constants {
    std::uint16_t firstOfThree[16], firstOfFour[16], lastTrailing[16];
    std::uint16_t lowerOfTwo[16], upperOfTwo[16];
    std::uint16_t threes[16], bitsOfThree[16], scaleOfTrailing[16], scaleOfLead[16];
    std::uint16_t lane[16];
};

constexpr Constants constants() noexcept {
    Constants all = {};
    constexpr unsigned char kThrees[16] = {2, 1, 0, 0x80, 5, 4, 3, 0x80, 8, 7, 6, 0x80, 11, 10, 9, 0x80};
    for (unsigned int unit = 0; unit < 16; ++unit) {
        const bool isLower = unit % 2 == 0;
        all.firstOfThree[unit] = 0xE0E0;
        all.firstOfFour[unit] = 0xF0F0;
        all.lastTrailing[unit] = 0xBFBF;
        all.lowerOfTwo[unit] = 0x007F;
        all.upperOfTwo[unit] = 0x1F00;
        all.threes[unit] = static_cast<std::uint16_t>(kThrees[unit % 8 * 2] | kThrees[unit % 8 * 2 + 1] << 8);
        all.bitsOfThree[unit] = isLower ? 0x3F3F : 0x000F;
        all.scaleOfTrailing[unit] = isLower ? 0x4001 : 0x0001;
        all.scaleOfLead[unit] = isLower ? 0x0001 : 0x1000;
        all.lane[unit] = static_cast<std::uint16_t>(1u << unit);
    }
    return all;
}

alignas(32) constexpr Constants kConstants = constants();

[[gnu::always_inline]] inline __m256i load32(const void* position) noexcept {
    return _mm256_loadu_si256(static_cast<const __m256i*>(position));
}

[[gnu::always_inline]] inline __m256i everyUnit(std::uint32_t value) noexcept {
    return _mm256_set1_epi16(static_cast<short>(value));
}

/// The kinds of sixteen bytes, one bit each.
struct Bytes {
    [[gnu::always_inline]] explicit Bytes(__m128i block) noexcept
        : zeros(maskOf(_mm_cmpeq_epi8(block, _mm_setzero_si128()))) {
        // As signed numbers, trailing bytes are below 0xC0, leads of two bytes below 0xE0, of three below 0xF0, and of
        // four are 0xF0 here.
        const unsigned int notAscii = maskOf(block);
        const auto below = [&](int limit) {
            return maskOf(_mm_cmpgt_epi8(_mm_set1_epi8(static_cast<char>(limit)), block));
        };
        trailing = below(0xC0);
        leads = notAscii & ~trailing;
        threes = leads & ~below(0xE0);
        fours = leads & ~below(0xF0);
        others = leads & ~below(0xF1);
    }

    unsigned int zeros;
    unsigned int trailing;
    unsigned int leads;
    unsigned int threes;  ///< leads of three bytes or more
    unsigned int fours;   ///< leads of four bytes, and others
    unsigned int others;  ///< other leads of four bytes or more, and bytes that do not start a sequence
};

/// The units that begin at each of sixteen bytes, as if each were a lead byte, up to three bytes.
struct Units {
    [[gnu::always_inline]] explicit Units(const unsigned char* bytes) noexcept
        : lead(_mm256_cvtepu8_epi16(loadBytes(bytes))),
          second(_mm256_and_si256(_mm256_cvtepu8_epi16(loadBytes(bytes + 1)), everyUnit(0x3F))),
          third(_mm256_and_si256(_mm256_cvtepu8_epi16(loadBytes(bytes + 2)), everyUnit(0x3F))) {
        const __m256i two = _mm256_or_si256(_mm256_slli_epi16(_mm256_and_si256(lead, everyUnit(0x1F)), 6), second);
        // The shift drops the upper bits of the lead of three bytes.
        const __m256i three =
            _mm256_or_si256(_mm256_or_si256(_mm256_slli_epi16(lead, 12), _mm256_slli_epi16(second, 6)), third);
        const __m256i isLead = _mm256_cmpgt_epi16(lead, everyUnit(0x7F));
        const __m256i isLeadOfThree = _mm256_cmpgt_epi16(lead, everyUnit(0xDF));
        units = _mm256_blendv_epi8(_mm256_blendv_epi8(lead, two, isLead), three, isLeadOfThree);
    }

    /// Puts the surrogates of characters that begin with 0xF0 at their first and third bytes. `thirds` has a bit for
    /// each third byte. Returns false if one of `fours` is overlong.
    [[gnu::always_inline]] bool splitFours(unsigned int thirds, const Constants& k) noexcept {
        const __m256i isFour = _mm256_cmpgt_epi16(lead, everyUnit(0xEF));
        const __m256i high =
            _mm256_add_epi16(_mm256_or_si256(_mm256_slli_epi16(second, 2), _mm256_srli_epi16(third, 4)),
                             everyUnit(kHighSurrogateOffset));
        const __m256i low =
            _mm256_or_si256(_mm256_or_si256(_mm256_slli_epi16(_mm256_and_si256(lead, everyUnit(0x0F)), 6), second),
                            everyUnit(kFirstLowSurrogate));
        const __m256i lanes = load32(k.lane);
        const __m256i isThird = _mm256_cmpeq_epi16(_mm256_and_si256(everyUnit(thirds), lanes), lanes);
        const __m256i isOverlong = _mm256_and_si256(isFour, _mm256_cmpgt_epi16(everyUnit(kFirstHighSurrogate), high));
        units = _mm256_blendv_epi8(_mm256_blendv_epi8(units, high, isFour), low, isThird);
        return _mm256_testz_si256(isOverlong, isOverlong) != 0;
    }

    [[nodiscard]] __m128i lower(unsigned int kept) const noexcept {
        return shuffled(_mm256_castsi256_si128(units), kKeepUnits, kept & 0xFF);
    }
    [[nodiscard]] __m128i upper(unsigned int kept) const noexcept {
        return shuffled(_mm256_extracti128_si256(units, 1), kKeepUnits, kept >> 8);
    }

    __m256i lead;
    __m256i second;
    __m256i third;
    __m256i units;
};

/// Decodes characters at the end of the text or of the capacity: up to a zero, or the end of the `left` bytes. Writes
/// nothing past the decoded units.
[[gnu::noinline]] Progress decodePart(const unsigned char* bytes, std::size_t left, unsigned char* out,
                                      std::size_t capacity) noexcept {
    const Bytes found(loadBytes(bytes));
    const unsigned int size = atMost(lowestBit(found.zeros | found.others | 1u << kBytes), left);
    const unsigned int leads = found.leads & lowBits(size);
    const unsigned int announced = leads << 1 | (found.threes & leads) << 2 | (found.fours & leads) << 3;
    if (((announced ^ found.trailing) & lowBits(size)) != 0) {
        return kNoProgress;
    }
    // A character that is cut off at the end of these bytes is left.
    const unsigned int last = bitsFrom(leads << 3, size);  // of the last three bytes
    const unsigned int cut = (last & 4) != 0 ? 1 : (last & 2) != 0 ? 2 : 3;
    const unsigned int whole = bitsFrom(announced, size) == 0 ? size : size - cut;
    const unsigned int thirds = (found.fours & leads) << 2;
    const unsigned int kept = (~found.trailing | thirds) & lowBits(whole);
    const unsigned int count = countBits(kept);
    Units units(bytes);
    if (count > capacity || (thirds != 0 && !units.splitFours(thirds, kConstants))) {
        return kNoProgress;
    }
    const unsigned int inFirst = countBits(kept & 0xFF);
    storeFirstBytes(units.lower(kept), std::size_t{2} * inFirst, out);
    storeFirstBytes(units.upper(kept), std::size_t{2} * (count - inFirst), out + std::size_t{2} * inFirst);
    return {whole, count};
}

/// Stores units and zeros after them.
[[gnu::always_inline]] inline void storeUnits(__m128i units, unsigned char* out) noexcept {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), units);
}

/// The position in the bytes and in the output. The first unit of an incomplete character is written already; bits say
/// which of the next bytes are its trailing bytes, and which is the third byte of four.
struct Decoding {
    const unsigned char* bytes;
    unsigned char* out;
    unsigned int expected;
    unsigned int thirds;
};

/// Decodes thirty-two bytes of characters of one or two bytes. The bits of `trailing` include the byte after them.
[[gnu::always_inline]] inline void decodeUpToTwo(Decoding& at, std::uint64_t trailing, const Constants& k) noexcept {
    const auto half = [&](unsigned int first) {
        const auto load = [](const unsigned char* lower, const unsigned char* upper) {
            return _mm256_inserti128_si256(_mm256_castsi128_si256(loadBytes(lower)), loadBytes(upper), 1);
        };
        const __m256i pairs = _mm256_shuffle_epi8(
            load(at.bytes + first, at.bytes + first + 8),
            load(kPairBytes.order[trailing >> first & 0x1FF], kPairBytes.order[trailing >> (first + 8) & 0x1FF]));
        // The upper two bits of a lead byte and the upper one of a trailing byte are dropped.
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
[[gnu::always_inline]] inline void decodeThrees(Decoding& at, const Constants& k) noexcept {
    const __m256i bytes =
        _mm256_inserti128_si256(_mm256_castsi128_si256(loadBytes(at.bytes)), loadBytes(at.bytes + 12), 1);
    const __m256i bits = _mm256_and_si256(_mm256_shuffle_epi8(bytes, load32(k.threes)), load32(k.bitsOfThree));
    const __m256i values =
        _mm256_madd_epi16(_mm256_maddubs_epi16(bits, load32(k.scaleOfTrailing)), load32(k.scaleOfLead));
    storeUnits(_mm_packus_epi32(_mm256_castsi256_si128(values), _mm256_extracti128_si256(values, 1)), at.out);
    at.bytes += kThreesBlock;
    at.out += 16;
}

/// Decodes the characters that begin in a block, `left` bytes of which belong to the text, up to a zero. Returns false
/// if there are none, or if they are not well-formed.
[[gnu::always_inline]] inline bool decodeBlock(Decoding& at, std::size_t left, const Constants& k) noexcept {
    const Bytes found(loadBytes(at.bytes));
    const unsigned int size = atMost(lowestBit(found.zeros | found.others | 1u << kBytes), left);
    const unsigned int announced = found.leads << 1 | found.threes << 2 | found.fours << 3 | at.expected;
    // Only the end of the block may split a character.
    if (((announced ^ found.trailing) & lowBits(size)) != 0 || size == 0 ||
        (size != kBytes && bitsFrom(announced, size) != 0)) {
        return false;
    }
    const unsigned int thirds = found.fours << 2 | at.thirds;
    const unsigned int kept = (~found.trailing | thirds) & lowBits(size);
    Units units(at.bytes);
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

/// Decodes ASCII up to `end` in double blocks, up to one with anything else.
[[gnu::always_inline]] inline void decodeAscii(Decoding& at, const unsigned char* end) noexcept {
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

/// Decodes double blocks before `end`, up to a zero or an ill-formed part.
[[gnu::always_inline]] inline void decodeWhole(Decoding& at, const unsigned char* end, const Constants& k) noexcept {
    constexpr unsigned int kLeadsOfThrees = 0x249249;
    while (static_cast<std::size_t>(end - at.bytes) >= kDoubleBlock) {
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
                decodeAscii(at, end);
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

/// The end of the double blocks that can be read in this page and that have room in the output.
[[gnu::always_inline]] inline const unsigned char* endOfWhole(const unsigned char* bytes, std::size_t left,
                                                              std::size_t room) noexcept {
    const std::size_t inPage = kPageBytes - offsetInPage(bytes);
    std::size_t size = inPage < kReadDouble ? 0 : inPage - (kReadDouble - kDoubleBlock);
    size = size < left ? size : left;
    return bytes + (size < room ? size : room);
}

/// Whether `kReadBytes` bytes can be read.
[[gnu::always_inline]] inline bool isReadable(const Decoding& at, std::size_t left) noexcept {
    return isInPage(at.bytes, kReadBytes) || continuesInNextPage(at.bytes, left, at.expected);
}

/// Decodes text up to a zero or an ill-formed part, while there is room for `kDoubleBlock` units.
[[gnu::noinline]] Progress decodeBlocks(const unsigned char* bytes, std::size_t left, unsigned char* out,
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
        decodeWhole(at, endOfWhole(at.bytes, rest, room), k);
        if (at.bytes != before) {
            continue;
        }
        if (!isReadable(at, rest) || !decodeBlock(at, rest, k)) {
            break;
        }
    }
    auto read = static_cast<unsigned int>(at.bytes - bytes);
    auto written = static_cast<unsigned int>((at.out - out) / 2);
    if (at.expected != 0) {  // the last character is left to the next step
        const unsigned int cut = bytes[read - 1] >= 0xC0 ? 1 : bytes[read - 2] >= 0xC0 ? 2 : 3;
        read -= cut;
        written -= cut == 3 ? 2 : 1;
    }
    return {read, written};
}

/// Decodes double blocks of ASCII. Writes nothing past them.
[[gnu::noinline]] Progress decodeAsciiOnly(const unsigned char* bytes, std::size_t left, unsigned char* out,
                                           std::size_t capacity) noexcept {
    Decoding at = {bytes, out, 0, 0};
    decodeAscii(at, endOfWhole(bytes, left, capacity));
    const auto count = static_cast<unsigned int>(at.bytes - bytes);
    return {count, count};
}

/// Decodes the next part with the fitting algorithm.
Progress decodeNext(const unsigned char* bytes, std::size_t left, unsigned char* out, std::size_t capacity,
                    Overwrite overwrite) noexcept {
    if (capacity >= kDoubleBlock) {
        const Progress step = overwrite == Overwrite::Allowed ? decodeBlocks(bytes, left, out, capacity)
                                                              : decodeAsciiOnly(bytes, left, out, capacity);
        if (step.read != 0 || overwrite == Overwrite::Allowed) {
            return step;
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

}  // namespace vorel::algorithms
