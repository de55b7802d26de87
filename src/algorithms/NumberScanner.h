/// \file
/// Functions that parse the parts of a number in zero-terminated text of either width. Each function with a cursor
/// moves the cursor past the characters that it consumes, and stops at the first character that it does not accept.
#pragma once

#include <cstdint>
#include <type_traits>

#include "algorithms/Ascii.h"
#include "algorithms/Attributes.h"
#include "algorithms/DigitBlock.h"

namespace vorel::algorithms {

template <class T>
constexpr void skipSpaces(const T*& cursor) noexcept {
    while (isSpace(*cursor)) {
        ++cursor;
    }
}

/// Consumes one '-' or '+', if present. Returns whether it was a '-'.
template <class T>
constexpr bool consumeSign(const T*& cursor) noexcept {
    const bool negative = *cursor == '-';
    cursor += negative || *cursor == '+' ? 1 : 0;
    return negative;
}

/// Parses fewer than 32 digits (two blocks) without a branch for each digit. Returns false and consumes nothing if
/// there are 32 or more digits, or if the blocks around the cursor do not lie in one page. The digits must then be
/// parsed one by one.
template <class Value, class T>
VOREL_ALWAYS_INLINE bool parseShortDigits(const T*& cursor, Value& value) noexcept {
    static_assert(std::is_unsigned_v<Value>);
    if (!areDigitBlocksInPage(cursor)) [[unlikely]] {
        return false;
    }
    std::uint64_t count = leadingDigits(digitMask(cursor));
    value = static_cast<Value>(valueOfDigits(cursor, count));
    if (count == kDigitBlock) [[unlikely]] {
        const std::uint64_t more = leadingDigits(digitMask(cursor + kDigitBlock));
        if (more == kDigitBlock) {
            return false;
        }
        value = static_cast<Value>(value * kIntegerPowersOfTen[more] + valueOfDigits(cursor + kDigitBlock, more));
        count += more;
    }
    cursor += count;
    return true;
}

/// Parses decimal digits one by one. Returns their value, which wraps around if it exceeds the type.
template <class Value, class T>
constexpr Value parseDigitsStepByStep(const T*& cursor) noexcept {
    Value value = 0;
    for (; isDigit(*cursor); ++cursor) {
        value = value * 10 + static_cast<Value>(*cursor - '0');
    }
    return value;
}

/// Parses decimal digits. Returns their value, which wraps around if it exceeds the type.
template <class Value, class T>
VOREL_ALWAYS_INLINE Value parseDigits(const T*& cursor) noexcept {
    Value value = 0;
    return parseShortDigits(cursor, value) ? value : parseDigitsStepByStep<Value>(cursor);
}

/// Consumes a point and the zeros after it, if present. Returns whether there was a point.
template <class T>
constexpr bool consumeZeroFraction(const T*& cursor) noexcept {
    if (*cursor != '.') {
        return false;
    }
    do {
        ++cursor;
    } while (*cursor == '0');
    return true;
}

/// A run of digits whose value is not needed.
struct DigitRun {
    bool any = false;
    bool hasLeadingZero = false;  ///< begins with a zero and contains a digit other than 0
};

template <class T>
constexpr DigitRun consumeDigitRun(const T*& cursor) noexcept {
    const T* const start = cursor;
    bool nonZero = false;
    for (; isDigit(*cursor); ++cursor) {
        nonZero = nonZero || *cursor != '0';
    }
    return {cursor != start, nonZero && *start == '0'};
}

/// Returns `value`, negated in two's complement if `negative` is true. Does not branch.
template <class Value>
constexpr Value negatedIf(bool negative, Value value) noexcept {
    return (value ^ (Value{0} - Value{negative})) + Value{negative};
}

/// Consumes the sign of an integer. Returns whether it was a '-'. For an unsigned type, a '-' is not consumed.
template <class Value, class T>
constexpr bool consumeIntegerSign(const T*& cursor) noexcept {
    return (std::is_signed_v<Value> || *cursor != '-') && consumeSign(cursor);
}

/// Parses spaces, an optional sign, digits and, if `skipTrailingSpaces` is true, the spaces after the digits. Returns
/// false and consumes nothing if `parseShortDigits` returns false.
template <class Value, class T>
VOREL_ALWAYS_INLINE bool parseShortInteger(const T*& start, bool skipTrailingSpaces, Value& value) noexcept {
    const T* cursor = start;
    skipSpaces(cursor);
    const bool negative = consumeIntegerSign<Value>(cursor);
    std::make_unsigned_t<Value> magnitude = 0;
    if (!parseShortDigits(cursor, magnitude)) [[unlikely]] {
        return false;
    }
    if (skipTrailingSpaces) {
        skipSpaces(cursor);
    }
    value = static_cast<Value>(negatedIf(negative, magnitude));
    start = cursor;
    return true;
}

/// Like `parseShortInteger`, but parses digits one by one, so the number may have any length.
template <class Value, class T>
Value parseIntegerStepByStep(const T*& cursor, bool skipTrailingSpaces) noexcept {
    skipSpaces(cursor);
    const bool negative = consumeIntegerSign<Value>(cursor);
    const auto value =
        static_cast<Value>(negatedIf(negative, parseDigitsStepByStep<std::make_unsigned_t<Value>>(cursor)));
    if (skipTrailingSpaces) {
        skipSpaces(cursor);
    }
    return value;
}

/// Parses a number of any length. Parses the digits one by one only if `parseShortInteger` returns false.
template <class Value, class T>
Value parseInteger(const T*& cursor, bool skipTrailingSpaces) noexcept {
    Value value = 0;
    return parseShortInteger(cursor, skipTrailingSpaces, value)
               ? value
               : parseIntegerStepByStep<Value>(cursor, skipTrailingSpaces);
}

/// The maximum number of hexadecimal digits that are parsed. By design, the limits for the two widths differ. If more
/// than eight digits are parsed, the last eight parsed digits determine the value. This happens only in narrow text.
template <class T>
inline constexpr unsigned int kMaxHexDigits = sizeof(T) == 1 ? 16 : 8;

/// Parses hexadecimal digits one by one. Returns their value modulo 2^32.
template <class T>
std::uint32_t parseHexDigitsStepByStep(const T*& cursor) noexcept {
    std::uint32_t value = 0;
    for (unsigned int digits = 0; digits < kMaxHexDigits<T>; ++digits, ++cursor) {
        const unsigned int digit = hexDigitValue(*cursor);
        if (digit >= 16) {
            break;
        }
        value = value << 4 | digit;
    }
    return value;
}

/// Like `parseHexDigitsStepByStep`, but parses one block at once if the block lies in one page.
template <class T>
VOREL_ALWAYS_INLINE std::uint32_t parseHexDigits(const T*& cursor) noexcept {
    static_assert(kHexBlock<T> == kMaxHexDigits<T>);
    if (!isInPage(cursor, kHexBlock<T> * sizeof(T))) [[unlikely]] {
        return parseHexDigitsStepByStep(cursor);
    }
    const HexDigits digits(hexBlock(cursor));
    const std::uint64_t count = leadingDigits(digits.mask);
    cursor += count;
    return static_cast<std::uint32_t>(valueOfHexDigits(digits, count));
}

/// Parses spaces, hexadecimal digits, and the spaces after them.
template <class T>
VOREL_ALWAYS_INLINE std::uint32_t parseHex(const T*& cursor) noexcept {
    skipSpaces(cursor);
    const std::uint32_t value = parseHexDigits(cursor);
    skipSpaces(cursor);
    return value;
}

}  // namespace vorel::algorithms
