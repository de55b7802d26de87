/// \file
/// Joins items. An item that contains the delimiter or a double quote is put in double quotes, so that splitting can
/// restore the item. If the delimiter has several characters, some items that contain it are not quoted (see
/// `needsQuotes`).
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "algorithms/SimdBlocks.h"
#include "algorithms/Sse2.h"

namespace vorel::algorithms {

/// Units per block.
inline constexpr std::size_t kUnitBlock = 8;

/// Copies `count` units in whole blocks. Returns whether one of these units is `a` or `b`. The source must be readable,
/// and the target writable, in whole blocks. Units written past `count` are unspecified.
inline bool copyAndFind(const WideUnit* from, std::size_t count, WideUnit a, WideUnit b, WideUnit* to) noexcept {
    const __m128i first = _mm_set1_epi16(static_cast<short>(a));
    const __m128i second = _mm_set1_epi16(static_cast<short>(b));
    __m128i found = _mm_setzero_si128();
    std::size_t done = 0;
    for (; done + kUnitBlock < count; done += kUnitBlock) {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + done));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to + done), block);
        found = _mm_or_si128(found, _mm_or_si128(_mm_cmpeq_epi16(block, first), _mm_cmpeq_epi16(block, second)));
    }
    if (done == count) {
        return false;
    }
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + done));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to + done), block);
    const __m128i last = _mm_or_si128(_mm_cmpeq_epi16(block, first), _mm_cmpeq_epi16(block, second));
    const auto counted = static_cast<unsigned int>(2 * (count - done));  // two bits for each unit
    const std::uint32_t lastMask = static_cast<std::uint32_t>(_mm_movemask_epi8(last)) & ((1u << counted) - 1);
    return (static_cast<std::uint32_t>(_mm_movemask_epi8(found)) | lastMask) != 0;
}

/// Whether an item needs quotes. The search for the delimiter never goes back, so a character that ends a partial match
/// cannot start another match.
template <class T>
bool needsQuotes(std::basic_string_view<T> item, std::basic_string_view<T> delimiter) noexcept {
    std::size_t matched = 0;
    for (const T unit : item) {
        if (unit == '"') {
            return true;
        }
        if (delimiter.empty()) {
            continue;
        }
        matched = unit == delimiter[matched] ? matched + 1 : 0;
        if (matched == delimiter.size()) {
            return true;
        }
    }
    return false;
}

/// Whether an item begins with a quote and ends with another.
template <class T>
constexpr bool isQuotedAlready(std::basic_string_view<T> item) noexcept {
    return item.size() > 1 && item.front() == '"' && item.back() == '"';
}

/// Writes an item in quotes, with its own quotes doubled. Returns the end.
template <class T>
T* writeQuoted(std::basic_string_view<T> item, T* out) noexcept {
    *out++ = '"';
    for (const T unit : item) {
        *out++ = unit;
        if (unit == '"') {
            *out++ = '"';
        }
    }
    *out++ = '"';
    return out;
}

/// The capacity for an item of `units` units, quoted or not. Includes space for units that `copyAndFind` writes past
/// the end of the item.
constexpr std::size_t joinedItemCapacity(std::size_t units) noexcept {
    constexpr std::size_t kQuotes = 2;
    return kQuotes + 2 * units + kUnitBlock;
}

/// Writes an item of wide text, quoted if necessary, and returns the end. The item must be readable in whole blocks
/// (see `copyAndFind`).
template <class T>
T* writeJoinedItem(std::basic_string_view<T> item, std::basic_string_view<T> delimiter, T* out) noexcept {
    const bool isQuoted = delimiter.size() == 1 ? copyAndFind(item.data(), item.size(), T{'"'}, delimiter.front(), out)
                                                : needsQuotes(item, delimiter);
    if (isQuoted) {
        return writeQuoted(item, out);
    }
    return delimiter.size() == 1 ? out + item.size() : std::copy(item.begin(), item.end(), out);
}

}  // namespace vorel::algorithms
