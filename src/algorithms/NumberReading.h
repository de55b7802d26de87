/// \file
/// Parses a number in a zero-terminated text of either width. The number is at the start of the text, or is the
/// whole text.
#pragma once

#include <cstdint>

#include "algorithms/Attributes.h"
#include "algorithms/DecimalScanner.h"
#include "algorithms/NumberScanner.h"

namespace vorel::algorithms {

/// If `end` is not null, stores in `*end` the position at which a scan stopped.
template <class T, class End>
void storeEnd(const T* cursor, End** end) noexcept {
    if (end) {
        *end = const_cast<End*>(cursor);  // NOLINT(cppcoreguidelines-pro-type-const-cast): the text of the caller
    }
}

/// Slow path of `readInteger`: handles null and numbers of any length.
template <class Value, class T, class End>
VOREL_COLD Value readAnyInteger(const T* text, End** end, bool skipTrailingSpace) noexcept {
    const Value value = text ? parseIntegerStepByStep<Value>(text, skipTrailingSpace) : 0;
    storeEnd(text, end);
    return value;
}

/// Parses an integer (see `parseInteger`). A null text gives 0. If `end` is not null, `*end` receives the position at
/// which parsing stopped, or null for a null text. Numbers that `parseShortInteger` does not parse are parsed in a tail
/// call, so this function needs no stack frame.
template <class Value, class T, class End>
VOREL_ALWAYS_INLINE Value readInteger(const T* text, End** end, bool skipTrailingSpace) noexcept {
    Value value = 0;
    if (!text || !parseShortInteger(text, skipTrailingSpace, value)) [[unlikely]] {
        return readAnyInteger<Value>(text, end, skipTrailingSpace);
    }
    storeEnd(text, end);
    return value;
}

/// Parses a hexadecimal number (see `parseHex`). A null text gives 0.
template <class T>
VOREL_ALWAYS_INLINE int readHex(const T* text, T** end) noexcept {
    const std::uint32_t value = text ? parseHex(text) : 0;
    storeEnd(text, end);
    return static_cast<int>(value);
}

/// Parses a number with a fraction and an exponent, character by character. A null text gives 0. If the text has no
/// digits, the result is 0.0, or -0.0 after a '-', and `*end` receives the start of the text.
template <class T>
VOREL_NOINLINE double readDecimalStepByStep(const T* text, T** end) noexcept {
    const T* const start = text;
    double value = 0;
    if (text) {
        skipSpaces(text);
        const bool negative = consumeSign(text);
        const Mantissa mantissa = parseMantissa(text);
        if (mantissa.digits == 0) {
            text = start;
            value = negative ? -0.0 : 0.0;
        } else {
            value = scaled(mantissa, parseExponent(text), negative);
        }
    }
    storeEnd(text, end);
    return value;
}

/// Parses a number with a fraction and an exponent, in blocks if it has the usual length.
template <class T>
VOREL_ALWAYS_INLINE double readDecimal(const T* text, T** end) noexcept {
    double value = 0;
    if (text && parseShortDecimal(text, value)) {
        storeEnd(text, end);
        return value;
    }
    return readDecimalStepByStep(text, end);
}

/// Parses an integer and returns whether it is the whole text. White space may surround the integer, and a point with
/// any number of zeros may follow its digits. Sets `value` even on failure, except for a null text.
template <class T>
bool tryReadInteger(const T* text, int& value) noexcept {
    if (!text) {
        return false;
    }
    skipSpaces(text);
    const bool negative = consumeSign(text);
    const T* const digits = text;
    value = static_cast<int>(negatedIf(negative, parseDigits<unsigned int>(text)));
    const bool hasDigits = text != digits;
    consumeZeroFraction(text);
    skipSpaces(text);
    return hasDigits && !*text;
}

/// Parses a number and returns whether it is the whole text, except white space around it. `value` is unchanged if the
/// text is null or has no digits; otherwise `value` is set even on failure. An exponent that is zero or has no digits
/// ("1e0", "1e") is rejected by design: the result is false, and `value` is then the first 18 digits of the mantissa as
/// an integer without sign (15 for "-1.5e0").
template <class T>
bool tryReadDouble(const T* text, double& value) noexcept {
    if (!text) {
        return false;
    }
    skipSpaces(text);
    const bool negative = consumeSign(text);
    const Mantissa mantissa = parseMantissa(text);
    if (mantissa.digits == 0) {
        return false;
    }
    value = mantissaValue(mantissa.used);
    const Exponent exponent = parseExponent(text);
    if (exponent.hasMarker && exponent.value == 0) {
        return false;
    }
    skipSpaces(text);
    value = scaled(mantissa, exponent, negative);
    return !*text;
}

/// Whether the whole text has the form of an integer as `tryReadInteger` accepts it. If `allowLeadingZeros` is false,
/// "0123" is rejected, but "00" and "0123.0" are accepted.
template <class T>
bool coercesToInteger(const T* text, bool allowLeadingZeros) noexcept {
    if (!text) {
        return false;
    }
    skipSpaces(text);
    consumeSign(text);
    const DigitRun digits = consumeDigitRun(text);
    if (!consumeZeroFraction(text) && digits.hasLeadingZero && !allowLeadingZeros) {
        return false;
    }
    skipSpaces(text);
    return digits.any && !*text;
}

/// Whether the whole text is a number, which may have white space around it. An exponent must have a digit. If
/// `allowLeadingZeros` is false, "007" is rejected, but "007.5" and "007e1" are accepted.
template <class T>
bool coercesToDouble(const T* text, bool allowLeadingZeros) noexcept {
    if (!text) {
        return false;
    }
    skipSpaces(text);
    consumeSign(text);
    const DigitRun digits = consumeDigitRun(text);
    const bool hasPoint = *text == '.';
    text += hasPoint ? 1 : 0;
    const bool hasFraction = hasPoint && consumeDigitRun(text).any;
    if (!digits.any && !hasFraction) {
        return false;
    }
    const Exponent exponent = parseExponent(text);
    if (exponent.hasMarker && !exponent.hasDigits) {
        return false;
    }
    skipSpaces(text);
    const bool rejected = digits.hasLeadingZero && !hasPoint && !exponent.hasMarker && !allowLeadingZeros;
    return !rejected && !*text;
}

}  // namespace vorel::algorithms
