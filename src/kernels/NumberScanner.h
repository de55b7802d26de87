/// \file
/// Reading numbers from zero-terminated text of either width, step by step. A step takes the place where it starts and
/// moves it behind what it read; it stops at the first character that is not its own, and never fails.
#pragma once

#include <cstdint>
#include <type_traits>

#include "kernels/Characters.h"
#include "kernels/DigitBlock.h"

namespace vorel::kernels {

template <class T>
constexpr void skipSpaces(const T*& place) noexcept {
    while (isSpace(*place)) {
        ++place;
    }
}

/// Takes one '-' or '+', if there is one, and says whether it was a '-'.
template <class T>
constexpr bool takeSign(const T*& place) noexcept {
    const bool negative = *place == '-';
    place += negative || *place == '+' ? 1 : 0;
    return negative;
}

/// Takes a run of decimal digits and returns its value behind those of `value`; it wraps around.
template <class Value, class T>
Value takeDigits(const T*& place, Value value = 0) noexcept {
    static_assert(std::is_unsigned_v<Value>);
    while (isWithinPage(place)) {
        const std::uint64_t count = leadingDigits(digitMask(place));
        value = static_cast<Value>(value * kIntegerPowersOfTen[count] + valueOfDigits(place, count));
        place += count;
        if (count < kDigitBlock) {
            return value;
        }
    }
    for (; isDigit(*place); ++place) {
        value = value * 10 + static_cast<Value>(*place - '0');
    }
    return value;
}

/// Takes a point and the zeros behind it, if there is a point, and says whether there was one.
template <class T>
constexpr bool takeZeroFraction(const T*& place) noexcept {
    if (*place != '.') {
        return false;
    }
    do {
        ++place;
    } while (*place == '0');
    return true;
}

/// A run of digits whose value is of no interest.
struct DigitRun {
    bool any = false;
    bool hasLeadingZero = false;  ///< a zero in front, and another digit somewhere behind it
};

template <class T>
constexpr DigitRun takeDigitRun(const T*& place) noexcept {
    const T* const start = place;
    bool nonZero = false;
    for (; isDigit(*place); ++place) {
        nonZero = nonZero || *place != '0';
    }
    return {place != start, nonZero && *start == '0'};
}

/// Negates in two's complement, without a branch.
template <class Value>
constexpr Value negatedIf(bool negative, Value value) noexcept {
    return (value ^ (Value{0} - Value{negative})) + Value{negative};
}

/// Takes spaces, a sign and digits, and the spaces behind them if asked to. An unsigned number has no sign but '+': a
/// '-' stops the scan.
template <class Value, class T>
Value takeInteger(const T*& place, bool skipTrailingSpaces) noexcept {
    skipSpaces(place);
    bool negative = false;
    if (std::is_signed_v<Value> || *place != '-') {
        negative = takeSign(place);
    }
    const auto value = takeDigits<std::make_unsigned_t<Value>>(place);
    if (skipTrailingSpaces) {
        skipSpaces(place);
    }
    return static_cast<Value>(negatedIf(negative, value));
}

/// How many hexadecimal digits are read at most. The limits differ, and are kept: of more than eight digits of narrow
/// text the last eight count.
template <class T>
inline constexpr unsigned int kMostHexDigits = sizeof(T) == 1 ? 16 : 8;

/// Takes spaces, hexadecimal digits, and the spaces behind them.
template <class T>
constexpr std::uint32_t takeHex(const T*& place) noexcept {
    skipSpaces(place);
    std::uint32_t value = 0;
    for (unsigned int digits = 0; digits < kMostHexDigits<T> && hexDigitValue(*place) < 16; ++digits, ++place) {
        value = value << 4 | hexDigitValue(*place);
    }
    skipSpaces(place);
    return value;
}

}  // namespace vorel::kernels
