/// \file
/// Compares zero-terminated texts of either width, and versions.
#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>

#include "algorithms/Ascii.h"
#include "algorithms/NumberScanner.h"

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

/// Below 0, 0, or above 0, as `a` sorts before, equal to, or after `b`. Null sorts before every text.
template <class T>
[[gnu::always_inline]] inline int compareTexts(const T* a, const T* b, OrderRules rules) noexcept {
    if (!a || !b) {
        return (a ? 1 : 0) - (b ? 1 : 0);
    }
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
