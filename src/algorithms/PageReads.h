/// \file
/// The rule for reads in blocks, and a function that reads a text in blocks to find its length. A read may extend past
/// either end of a text if it stays in a page that contains a part of the text, because such a read does not fault.
///
/// The functions of the rule are static, because otherwise the rest of the program could call a copy that was compiled
/// for AVX2.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#include "algorithms/Sse2.h"

namespace vorel::algorithms {

inline constexpr std::uintptr_t kPageBytes = 4096;  // the smallest page size

/// The distance of `position` from the start of its page, in bytes.
static inline std::uintptr_t offsetInPage(const void* position) noexcept {
    return reinterpret_cast<std::uintptr_t>(position) % kPageBytes;
}

/// Whether `size` bytes from `position` lie in one page.
static inline bool isInPage(const void* position, std::uintptr_t size) noexcept {
    return offsetInPage(position) <= kPageBytes - size;
}

/// Whether `before` bytes before `position` and `after` bytes from `position` on lie in one page.
static inline bool isInPageAround(const void* position, std::uintptr_t before, std::uintptr_t after) noexcept {
    // If the offset is below `before`, the difference wraps to a large number.
    return offsetInPage(position) - before <= kPageBytes - before - after;
}

/// The number of units before the terminator, for units of one or two bytes. The runtime's functions are slow for short
/// texts.
template <class T>
std::size_t textLength(const T* text) noexcept {
    static_assert(sizeof(T) <= 2);
    constexpr std::uintptr_t kBlock = 16;
    const T* cursor = text;
    for (;;) {
        if (!isInPage(cursor, kBlock)) {
            if (*cursor == 0) {
                return static_cast<std::size_t>(cursor - text);
            }
            ++cursor;
            continue;
        }
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(cursor));
        const __m128i zero = _mm_setzero_si128();
        const __m128i equal = sizeof(T) == 1 ? _mm_cmpeq_epi8(block, zero) : _mm_cmpeq_epi16(block, zero);
        const auto zeros = static_cast<std::uint32_t>(_mm_movemask_epi8(equal));
        if (zeros != 0) {
            const auto bytes = static_cast<std::size_t>(std::countr_zero(zeros));
            return static_cast<std::size_t>(cursor - text) + bytes / sizeof(T);
        }
        cursor += kBlock / sizeof(T);
    }
}

}  // namespace vorel::algorithms
