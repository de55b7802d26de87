#include "vorel/values/Comparing.h"

#include <cstddef>
#include <utility>

#include "kernels/NumberScanner.h"

namespace vorel::util {

namespace {

using kernels::foldCase;
using kernels::isDigit;

template <class T>
std::ptrdiff_t digitsAt(const T* place) noexcept {
    const T* end = place;
    while (isDigit(*end)) {
        ++end;
    }
    return end - place;
}

template <class T>
void skipZeros(const T*& place) noexcept {
    while (*place == '0') {
        ++place;
    }
}

int signOf(std::ptrdiff_t difference) noexcept {
    return (difference > 0 ? 1 : 0) - (difference < 0 ? 1 : 0);
}

/// Compares two runs of digits as numbers, and moves both places behind them when they are equal.
template <class T>
int compareNumbers(const T*& a, const T*& b) noexcept {
    skipZeros(a);
    skipZeros(b);
    const std::ptrdiff_t digits = digitsAt(a);
    if (const std::ptrdiff_t difference = digits - digitsAt(b)) {
        return signOf(difference);
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

template <class T>
int compare(const T* a, const T* b, strcmpAdvFlag flags) noexcept {
    if (flags & SCMP_Reverse) {
        std::swap(a, b);
    }
    if (!a || !b) {
        return (a ? 1 : 0) - (b ? 1 : 0);
    }
    for (;;) {
        if ((flags & SCMP_Numeric) && isDigit(*a) && isDigit(*b)) {
            if (const int difference = compareNumbers(a, b)) {
                return difference;
            }
            continue;
        }
        const T first = flags & SCMP_IgnoreCase ? foldCase(*a) : *a;
        const T second = flags & SCMP_IgnoreCase ? foldCase(*b) : *b;
        const bool equal = first == second || ((flags & SCMP_SlashesEqual) && isSlash(first) && isSlash(second));
        if (!equal) {
            return first - second;
        }
        if (!first) {
            return 0;
        }
        ++a;
        ++b;
    }
}

}  // namespace

int strcmpAdvanced(const char* a, const char* b, strcmpAdvFlag flags) noexcept {
    // Signed, as the number parsers read it, whatever the compiler takes a plain char for.
    return compare(reinterpret_cast<const signed char*>(a), reinterpret_cast<const signed char*>(b), flags);
}

int strcmpAdvanced(const wchar_t* a, const wchar_t* b, strcmpAdvFlag flags) noexcept {
    return compare(a, b, flags);
}

bool stringVersionAtLeast(const wchar_t* version, const wchar_t* required) noexcept {
    if (!version || !required || !*version) {
        return false;
    }
    while (*required) {
        const int found = kernels::takeInteger<int>(version, true);
        const int needed = kernels::takeInteger<int>(required, true);
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

}  // namespace vorel::util
