/// \file
/// The steps of parsing numbers from zero-terminated text of either width. Each step moves the cursor past what it
/// read, stops at the first character that does not belong to it, and never fails.
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

/// Consumes one '-' or '+', if present. Returns whether it was a '-'.
template <class T>
constexpr bool takeSign(const T*& place) noexcept {
    const bool negative = *place == '-';
    place += negative || *place == '+' ? 1 : 0;
    return negative;
}

/// Parses decimal digits. Returns their value, appended to the digits of `value`, modulo the range of the type.
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

/// Consumes a point and the zeros after it, if present. Returns whether there was a point.
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

/// A run of digits whose value is not needed.
struct DigitRun {
    bool any = false;
    bool hasLeadingZero = false;  ///< a zero first, and a digit other than zero later
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

/// Parses spaces, a sign and digits, and optionally the spaces after them. An unsigned number accepts only '+': a '-'
/// stops the scan.
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

/// The maximum number of hexadecimal digits. The limits differ by design: of more than eight digits of narrow text the
/// last eight determine the value.
template <class T>
inline constexpr unsigned int kMostHexDigits = sizeof(T) == 1 ? 16 : 8;

/// Parses spaces, hexadecimal digits, and the spaces after them.
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
