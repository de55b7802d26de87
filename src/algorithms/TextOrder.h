/// \file
/// Compares zero-terminated texts of either width, and versions. Texts are compared in blocks of sixteen bytes, unless
/// runs of digits are compared as numbers.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "algorithms/Ascii.h"
#include "algorithms/Attributes.h"
#include "algorithms/NumberScanner.h"
#include "algorithms/PageReads.h"
#include "algorithms/Sse2.h"

namespace vorel::algorithms {

/// How two texts are compared.
struct OrderRules {
    bool ignoreCase;    ///< A to Z equal a to z
    bool numeric;       ///< runs of digits are compared as numbers
    bool slashesEqual;  ///< '/' and '\' are equal
};

template <class T>
std::ptrdiff_t digitsAt(const T* cursor) noexcept {
    const T* end = cursor;
    while (isDigit(*end)) {
        ++end;
    }
    return end - cursor;
}

template <class T>
void skipZeros(const T*& cursor) noexcept {
    while (*cursor == '0') {
        ++cursor;
    }
}

/// A difference of lengths, limited to values that an `int` can represent and negate.
constexpr int boundedDifference(std::ptrdiff_t difference) noexcept {
    constexpr std::ptrdiff_t kMax = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp(difference, -kMax, kMax));
}

/// Compares two runs of digits as numbers. Moves both cursors past the runs if the numbers are equal.
template <class T>
int compareNumbers(const T*& a, const T*& b) noexcept {
    skipZeros(a);
    skipZeros(b);
    const std::ptrdiff_t digits = digitsAt(a);
    if (const std::ptrdiff_t difference = digits - digitsAt(b)) {
        return boundedDifference(difference);
    }
    for (const T* const end = a + digits; a != end; ++a, ++b) {
        if (*a != *b) {
            return *a - *b;
        }
    }
    return 0;
}

template <class T>
constexpr bool isSlash(T c) noexcept {
    return c == '/' || c == '\\';
}

/// Whether two characters are identical, or the two cases of a letter if case is ignored. This quick test does not
/// consider `slashesEqual`.
template <class T>
constexpr bool areSame(T a, T b, OrderRules rules) noexcept {
    const auto difference = static_cast<unsigned int>(a ^ b);
    return difference == 0 || (difference == kCaseBit && rules.ignoreCase && isLetter(a));
}

/// Units per block.
template <class T>
inline constexpr std::size_t kOrderBlock = 16 / sizeof(T);

/// Compares two blocks, and counts the characters before the first difference or terminator. The result is at most
/// `kOrderBlock`.
template <class T>
VOREL_NO_SANITIZE_ADDRESS inline std::size_t sameInBlock(const T* a, const T* b, bool ignoreCase) noexcept {
    constexpr bool kNarrow = sizeof(T) == 1;
    const auto all = [](unsigned int unit) {
        return kNarrow ? _mm_set1_epi8(static_cast<char>(unit)) : _mm_set1_epi16(static_cast<short>(unit));
    };
    const auto areEqual = [](__m128i x, __m128i y) { return kNarrow ? _mm_cmpeq_epi8(x, y) : _mm_cmpeq_epi16(x, y); };
    const __m128i zero = _mm_setzero_si128();
    const __m128i first = _mm_loadu_si128(reinterpret_cast<const __m128i*>(a));
    const __m128i difference = _mm_xor_si128(first, _mm_loadu_si128(reinterpret_cast<const __m128i*>(b)));
    // If case matters, the case bit is 0, so that only identical characters are the same.
    const __m128i caseBit = ignoreCase ? all(kCaseBit) : zero;
    // Adding an offset moves the letters to the lowest signed numbers, so one comparison with a limit finds them.
    constexpr unsigned int kLowest = kNarrow ? 0x80 : 0x8000;
    const __m128i folded = _mm_or_si128(first, caseBit);
    const __m128i letters =
        kNarrow ? _mm_cmplt_epi8(_mm_add_epi8(folded, all(kLowest - 'a')), all(kLowest + ('z' - 'a' + 1)))
                : _mm_cmplt_epi16(_mm_add_epi16(folded, all(kLowest - 'a')), all(kLowest + ('z' - 'a' + 1)));
    const __m128i otherCase = _mm_and_si128(letters, areEqual(difference, caseBit));
    const __m128i same = _mm_or_si128(areEqual(difference, zero), otherCase);
    const auto mask = static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_andnot_si128(areEqual(first, zero), same)));
    return static_cast<std::size_t>(std::countr_zero((mask ^ 0xFFFF) | 0x10000)) / sizeof(T);
}

/// Moves both cursors past characters that are the same, while whole blocks lie in one page.
template <class T>
VOREL_ALWAYS_INLINE void skipSameBlocks(const T*& a, const T*& b, bool ignoreCase) noexcept {
    while (isInPage(a, 16) && isInPage(b, 16)) {
        const std::size_t same = sameInBlock(a, b, ignoreCase);
        a += same;
        b += same;
        if (same != kOrderBlock<T>) {
            return;
        }
    }
}

/// Whether equal characters are skipped unit by unit or block by block.
enum class Steps { Units, Blocks };

/// `compareTexts` for texts that are not null. `Blocks` requires that digits are not compared as numbers.
template <Steps steps, class T>
VOREL_ALWAYS_INLINE int compareNonNull(const T* a, const T* b, OrderRules rules) noexcept {
    for (;;) {
        if (steps == Steps::Blocks) {
            skipSameBlocks(a, b, rules.ignoreCase);
        } else if (rules.numeric && isDigit(*a) && isDigit(*b)) {
            if (const int difference = compareNumbers(a, b)) {
                return difference;
            }
            continue;
        }
        if (*a && areSame(*a, *b, rules)) {
            ++a;
            ++b;
            continue;
        }
        const T first = rules.ignoreCase ? foldCase(*a) : *a;
        const T second = rules.ignoreCase ? foldCase(*b) : *b;
        if (first != second && !(rules.slashesEqual && isSlash(first) && isSlash(second))) {
            return first - second;
        }
        if (!first) {
            return 0;
        }
        ++a;
        ++b;
    }
}

/// The result is below 0, 0, or above 0 if `a` is before, equal to, or after `b`. Null is before every text.
template <class T>
VOREL_ALWAYS_INLINE int compareTexts(const T* a, const T* b, OrderRules rules) noexcept {
    if (!a || !b) {
        return (a ? 1 : 0) - (b ? 1 : 0);
    }
    return rules.numeric ? compareNonNull<Steps::Units>(a, b, rules) : compareNonNull<Steps::Blocks>(a, b, rules);
}

/// Whether `version` is at least `required`, compared number by number. Any single character separates two numbers.
/// False if either text is null or empty. If no numbers at the same position differ, the result is true only if
/// `required` has no more numbers than `version` and does not end with a separator.
template <class T>
bool versionAtLeast(const T* version, const T* required) noexcept {
    if (!version || !required || !*version) {
        return false;
    }
    while (*required) {
        const int found = parseInteger<int>(version, true);
        const int needed = parseInteger<int>(required, true);
        if (found != needed) {
            return found > needed;
        }
        if (!*required++) {
            return true;
        }
        if (!*version || !*++version) {
            return false;
        }
    }
    return false;
}

}  // namespace vorel::algorithms
