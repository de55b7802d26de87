/// \file
/// Parses numbers in zero-terminated text of either width: at its start, or as the whole text.
#pragma once

#include "kernels/DecimalScanner.h"
#include "kernels/NumberScanner.h"

namespace vorel::kernels {

/// Stores where a scan stopped unless `end` is null.
template <class T, class End>
void storeEnd(const T* place, End** end) noexcept {
    if (end) {
        *end = const_cast<End*>(place);  // NOLINT(cppcoreguidelines-pro-type-const-cast): the caller's own text
    }
}

/// Runs `scan` on a text and stores where it stopped.
template <class T, class End, class Scan>
auto scanned(const T* text, End** end, Scan&& scan) noexcept {
    using Value = decltype(scan(text));
    const Value value = text ? scan(text) : Value{};
    storeEnd(text, end);
    return value;
}

/// Parses an integer (see `parseInteger`) and stores where it ends unless `end` is null. A null text is 0.
template <class Value, class T, class End>
Value readInteger(const T* text, End** end, bool skipTrailingSpace) noexcept {
    return scanned(text, end, [=](const T*& place) { return takeInteger<Value>(place, skipTrailingSpace); });
}

/// Parses a hexadecimal number (see `parseHex`).
template <class T>
int readHex(const T* text, T** end) noexcept {
    return scanned(text, end, [](const T*& place) { return static_cast<int>(takeHex(place)); });
}

/// Parses a number with a fraction and an exponent, character by character.
template <class T>
[[gnu::noinline]] double readDecimalStepByStep(const T* text, T** end) noexcept {
    return scanned(text, end, [](const T*& place) {
        const T* const start = place;
        skipSpaces(place);
        const bool negative = takeSign(place);
        const Mantissa mantissa = takeMantissa(place);
        if (mantissa.digits == 0) {
            place = start;
            return negative ? -0.0 : 0.0;
        }
        return scaled(mantissa, takeExponent(place), negative);
    });
}

/// Parses a number with a fraction and an exponent, in blocks if it has the usual length.
template <class T>
[[gnu::always_inline]] inline double readDecimal(const T* text, T** end) noexcept {
    double value = 0;
    if (text && takeShortDecimal(text, value)) {
        storeEnd(text, end);
        return value;
    }
    return readDecimalStepByStep(text, end);
}

/// Parses an integer and returns whether it is the whole text. `value` is unchanged only for a null text.
template <class T>
bool tryReadInteger(const T* text, int& value) noexcept {
    if (!text) {
        return false;
    }
    skipSpaces(text);
    const bool negative = takeSign(text);
    const T* const digits = text;
    value = static_cast<int>(negatedIf(negative, takeDigits<unsigned int>(text)));
    const bool hasDigits = text != digits;
    takeZeroFraction(text);
    skipSpaces(text);
    return hasDigits && !*text;
}

/// Parses a number and returns whether it is the whole text. `value` is unchanged without digits. With an
/// exponent of zero, `value` is the mantissa and the result is false.
template <class T>
bool tryReadDouble(const T* text, double& value) noexcept {
    if (!text) {
        return false;
    }
    skipSpaces(text);
    const bool negative = takeSign(text);
    const Mantissa mantissa = takeMantissa(text);
    if (mantissa.digits == 0) {
        return false;
    }
    value = mantissaValue(mantissa.used);
    const Exponent exponent = takeExponent(text);
    if (exponent.hasMarker && exponent.value == 0) {
        return false;
    }
    skipSpaces(text);
    value = scaled(mantissa, exponent, negative);
    return !*text;
}

/// Whether the whole text is an integer, with white space around it allowed.
template <class T>
bool coercesToInteger(const T* text, bool allowLeadingZeros) noexcept {
    if (!text) {
        return false;
    }
    skipSpaces(text);
    takeSign(text);
    const DigitRun digits = takeDigitRun(text);
    if (!takeZeroFraction(text) && digits.hasLeadingZero && !allowLeadingZeros) {
        return false;
    }
    skipSpaces(text);
    return digits.any && !*text;
}

/// Whether the whole text is a number, with white space around it allowed.
template <class T>
bool coercesToDouble(const T* text, bool allowLeadingZeros) noexcept {
    if (!text) {
        return false;
    }
    skipSpaces(text);
    takeSign(text);
    const DigitRun digits = takeDigitRun(text);
    const bool hasPoint = *text == '.';
    text += hasPoint ? 1 : 0;
    const bool hasFraction = hasPoint && takeDigitRun(text).any;
    if (!digits.any && !hasFraction) {
        return false;
    }
    const Exponent exponent = takeExponent(text);
    if (exponent.hasMarker && !exponent.hasDigits) {
        return false;
    }
    skipSpaces(text);
    const bool refused = digits.hasLeadingZero && !hasPoint && !exponent.hasMarker && !allowLeadingZeros;
    return !refused && !*text;
}

}  // namespace vorel::kernels
