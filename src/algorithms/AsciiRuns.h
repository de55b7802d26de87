/// \file
/// Copies runs of ASCII in text of either width, or from one width to the other. Sixteen or eight elements are copied
/// at a time, because most text is ASCII. SSE2 is part of every 64-bit x86 processor, so no dispatch is needed.
///
/// A zero also ends a run, so the end of zero-terminated text is not searched separately. Reads may extend past the end
/// of the text, but not into another page. Writes never exceed the run.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "algorithms/Ascii.h"
#include "algorithms/PageReads.h"
#include "algorithms/SimdBlocks.h"
#include "algorithms/Sse2.h"

namespace vorel::algorithms {

/// Elements per block.
inline constexpr std::size_t kAsciiBlock = 16;

/// Sixteen elements. The elements before the first element outside 0x01 to 0x7F form a run.
struct AsciiBlock {
    explicit AsciiBlock(__m128i block) noexcept
        : bytes(block),
          // Bytes from 0x80 on have the top bit. The comparison with zero sets the top bit for zeros too.
          stops(static_cast<unsigned int>(
              _mm_movemask_epi8(_mm_or_si128(block, _mm_cmpeq_epi8(block, _mm_setzero_si128()))))) {}

    /// Packs units to bytes with saturation. 0x01 to 0x7F stay as they are; every other unit becomes 0x00 or a byte
    /// from 0x80 on, so it also ends a run.
    static AsciiBlock load(const WideUnit* from) noexcept { return AsciiBlock(loadBlock(from)); }
    static AsciiBlock load(const char* from) noexcept { return AsciiBlock(loadBlock(from)); }
    static AsciiBlock load(const unsigned char* from) noexcept { return load(reinterpret_cast<const char*>(from)); }

    void store(WideUnit* to) const noexcept { storeCharacters(bytes, to); }
    void store(char* to) const noexcept { storeCharacters(bytes, to); }
    void store(unsigned char* to) const noexcept { store(reinterpret_cast<char*>(to)); }

    __m128i bytes;
    unsigned int stops;  ///< one bit for each element outside 0x01 to 0x7F
};

/// Writes the first `count` elements of a block.
inline void storeFirst(const AsciiBlock& block, std::size_t count, unsigned char* to) noexcept {
    storeFirstBytes(block.bytes, count, to);
}

inline void storeFirst(const AsciiBlock& block, std::size_t count, char* to) noexcept {
    storeFirst(block, count, reinterpret_cast<unsigned char*>(to));
}

inline void storeFirst(const AsciiBlock& block, std::size_t count, WideUnit* to) noexcept {
    const __m128i low = _mm_unpacklo_epi8(block.bytes, _mm_setzero_si128());
    const __m128i high = _mm_unpackhi_epi8(block.bytes, _mm_setzero_si128());
    const std::size_t inLow = std::min<std::size_t>(count, 8);
    storeFirstBytes(low, 2 * inLow, to);
    storeFirstBytes(high, 2 * (count - inLow), to + inLow);
}

/// Copies elements up to the first element outside 0x01 to 0x7F, but at most `count` elements. Returns the number of
/// elements copied.
template <class From, class To>
std::size_t copyAsciiRun(const From* from, std::size_t count, To* to) noexcept {
    std::size_t done = 0;
    while (done != count) {
        if (!isInPage(from + done, kAsciiBlock * sizeof(From))) {
            // One element at a time up to the next page.
            if (!isAsciiText(from[done])) {
                break;
            }
            to[done] = static_cast<To>(from[done]);
            ++done;
            continue;
        }
        const AsciiBlock block = AsciiBlock::load(from + done);
        if (block.stops != 0 || count - done < kAsciiBlock) {
            const auto run = static_cast<std::size_t>(std::countr_zero(block.stops | 1u << kAsciiBlock));
            const std::size_t last = std::min(run, count - done);
            storeFirst(block, last, to + done);
            return done + last;
        }
        block.store(to + done);
        done += kAsciiBlock;
    }
    return done;
}

/// Copies eight elements if all of them are from 0x01 to 0x7F. Otherwise returns false and writes nothing.
template <class From, class To>
bool copyEightAscii(const From* from, To* to) noexcept {
    const auto* const position = reinterpret_cast<const __m128i*>(from);
    const __m128i zero = _mm_setzero_si128();
    const AsciiBlock block(sizeof(From) == 1 ? _mm_loadl_epi64(position)
                                             : _mm_packus_epi16(_mm_loadu_si128(position), zero));
    if ((block.stops & 0xFF) != 0) {
        return false;
    }
    if constexpr (sizeof(To) == 1) {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(to), block.bytes);
    } else {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm_unpacklo_epi8(block.bytes, zero));
    }
    return true;
}

/// Copies a text of `count` elements, eight at a time, if all of them are from 0x01 to 0x7F. Returns false if an
/// element outside that range is found or `count` is below eight; some elements may have been copied. A zero may end
/// the text earlier, and the elements after the zero may be unreadable if they are in the next page. So the function
/// also returns false if the `count` elements are not in one page.
template <class From, class To>
bool copyShortAscii(const From* from, std::size_t count, To* to) noexcept {
    if (count < 8 || !isInPage(from, count * sizeof(From))) {
        return false;
    }
    const std::size_t last = count - 8;  // the last eight elements may overlap earlier elements
    for (std::size_t at = 0; at < last; at += 8) {
        if (!copyEightAscii(from + at, to + at)) {
            return false;
        }
    }
    return copyEightAscii(from + last, to + last);
}

/// Widens bytes to units, up to the first byte outside 0x01 to 0x7F, but at most `count` bytes. Returns the number of
/// bytes widened.
template <class Unit>
std::size_t widenAsciiRun(const unsigned char* bytes, std::size_t count, Unit* units) noexcept {
    return copyAsciiRun(bytes, count, units);
}

/// Narrows units to bytes, up to the first unit outside 0x01 to 0x7F, but at most `count` units. Returns the number of
/// units narrowed.
template <class Unit>
std::size_t narrowAsciiRun(const Unit* units, std::size_t count, unsigned char* bytes) noexcept {
    return copyAsciiRun(units, count, bytes);
}

}  // namespace vorel::algorithms
