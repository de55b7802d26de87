/// \file
/// Compares zero-terminated texts of either width, and versions. Texts are compared in blocks of sixteen bytes, except
/// where digits are numbers.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>

#include <emmintrin.h>

#include "algorithms/Ascii.h"
#include "algorithms/NumberScanner.h"
#include "algorithms/PageReads.h"

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

/// A difference of lengths, limited to values that an int can hold and negate.
constexpr int boundedDifference(std::ptrdiff_t difference) noexcept {
    constexpr std::ptrdiff_t kMax = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp(difference, -kMax, kMax));
}

/// Compares two runs of digits as numbers. Moves both cursors past the runs if they are equal.
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

/// Whether two characters are identical, or two cases of a letter where case is ignored. This decides most equal
/// characters early.
template <class T>
constexpr bool areSame(T a, T b, OrderRules rules) noexcept {
    const auto difference = static_cast<unsigned int>(a ^ b);
    return difference == 0 || (difference == kCaseBit && rules.ignoreCase && isLetter(a));
}

/// `compareTexts` of texts that are not null, character by character.
template <class T>
int compareStepByStep(const T* a, const T* b, OrderRules rules) noexcept {
    for (;;) {
        if (rules.numeric && isDigit(*a) && isDigit(*b)) {
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

/// Blocks of text with equal characters made identical: one case of the letters, one kind of slash.
template <class T>
class FoldedBlocks {
public:
    static constexpr std::size_t kUnits = 16 / sizeof(T);

    explicit FoldedBlocks(OrderRules rules) noexcept
        : m_caseBit(rules.ignoreCase ? all(kCaseBit) : _mm_setzero_si128()), m_slashesEqual(rules.slashesEqual) {}

    /// The number of characters at the start of two blocks that are the same and not a terminator, at most `kUnits`.
    [[nodiscard, gnu::no_sanitize_address]] std::size_t sameUnits(const T* a, const T* b) const noexcept {
        const __m128i first = _mm_loadu_si128(reinterpret_cast<const __m128i*>(a));
        const __m128i second = _mm_loadu_si128(reinterpret_cast<const __m128i*>(b));
        const __m128i ends = areEqual(first, _mm_setzero_si128());
        const __m128i same = _mm_andnot_si128(ends, areEqual(folded(first), folded(second)));
        const auto others = ~static_cast<std::uint32_t>(_mm_movemask_epi8(same));  // the bits above sixteen are set
        return static_cast<std::size_t>(std::countr_zero(others)) / sizeof(T);
    }

private:
    static constexpr bool kNarrow = sizeof(T) == 1;

    static __m128i all(unsigned int unit) noexcept {
        return kNarrow ? _mm_set1_epi8(static_cast<char>(unit)) : _mm_set1_epi16(static_cast<short>(unit));
    }

    static __m128i areEqual(__m128i a, __m128i b) noexcept {
        return kNarrow ? _mm_cmpeq_epi8(a, b) : _mm_cmpeq_epi16(a, b);
    }

    /// All ones in the units from A to Z: moved to the lowest signed numbers, they are those below a limit.
    static __m128i areUpperCase(__m128i units) noexcept {
        constexpr unsigned int kLowest = kNarrow ? 0x80 : 0x8000;
        const __m128i move = all(kLowest - 'A');
        const __m128i limit = all(kLowest + ('Z' - 'A' + 1));
        return kNarrow ? _mm_cmplt_epi8(_mm_add_epi8(units, move), limit)
                       : _mm_cmplt_epi16(_mm_add_epi16(units, move), limit);
    }

    [[nodiscard]] __m128i folded(__m128i units) const noexcept {
        const __m128i lowerCase = _mm_or_si128(units, _mm_and_si128(areUpperCase(units), m_caseBit));
        if (!m_slashesEqual) {
            return lowerCase;
        }
        return _mm_xor_si128(lowerCase, _mm_and_si128(areEqual(units, all('\\')), all('/' ^ '\\')));
    }

    __m128i m_caseBit;
    bool m_slashesEqual;
};

/// Moves both cursors past the characters that are the same, without the rule for numbers.
template <class T>
[[gnu::always_inline]] inline void skipSame(const T*& a, const T*& b, OrderRules rules) noexcept {
    const FoldedBlocks<T> blocks(rules);
    constexpr std::size_t kUnits = FoldedBlocks<T>::kUnits;
    for (;;) {
        if (isInPage(a, 16) && isInPage(b, 16)) [[likely]] {
            const std::size_t same = blocks.sameUnits(a, b);
            a += same;
            b += same;
            if (same < kUnits) {
                return;
            }
        } else if (*a && (areSame(*a, *b, rules) || (rules.slashesEqual && isSlash(*a) && isSlash(*b)))) {
            ++a;
            ++b;
        } else {
            return;
        }
    }
}

/// Below 0, 0, or above 0, as `a` sorts before, equal to, or after `b`. Null sorts before every text.
template <class T>
[[gnu::always_inline]] inline int compareTexts(const T* a, const T* b, OrderRules rules) noexcept {
    if (!a || !b) {
        return (a ? 1 : 0) - (b ? 1 : 0);
    }
    if (!rules.numeric) {
        skipSame(a, b, rules);
    }
    return compareStepByStep(a, b, rules);
}

/// Whether `version` is at least `required`, compared number by number. Any single character separates two numbers.
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
