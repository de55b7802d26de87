/// \file
/// Numbers in zero-terminated text of either width: at its begin, or as all of it.
#pragma once

#include "kernels/DecimalScanner.h"
#include "kernels/NumberScanner.h"

namespace vorel::kernels {

/// Stores where a scan stopped, unless nobody asks.
template <class T, class End>
void storeEnd(const T* place, End** end) noexcept {
    if (end) {
        *end = const_cast<End*>(place);  // NOLINT(cppcoreguidelines-pro-type-const-cast): the caller's own text
    }
}

/// Runs `scan` over a text, and stores where it stopped.
template <class T, class End, class Scan>
auto scanned(const T* text, End** end, Scan&& scan) noexcept {
    using Value = decltype(scan(text));
    const Value value = text ? scan(text) : Value{};
    storeEnd(text, end);
    return value;
}

/// Reads an integer (see `takeInteger`), and stores where it ends unless `end` is null. A null text is 0.
template <class Value, class T, class End>
Value readInteger(const T* text, End** end, bool skipTrailingSpace) noexcept {
    return scanned(text, end, [=](const T*& place) { return takeInteger<Value>(place, skipTrailingSpace); });
}

/// Reads a hexadecimal number (see `takeHex`).
template <class T>
int readHex(const T* text, T** end) noexcept {
    return scanned(text, end, [](const T*& place) { return static_cast<int>(takeHex(place)); });
}

/// Reads a number with a fraction and an exponent by going through its characters.
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

/// Reads a number with a fraction and an exponent, in one go when it has the usual length.
template <class T>
[[gnu::always_inline]] inline double readDecimal(const T* text, T** end) noexcept {
    double value = 0;
    if (text && takeShortDecimal(text, value)) {
        storeEnd(text, end);
        return value;
    }
    return readDecimalStepByStep(text, end);
}

/// Reads an integer, and says whether it is all of the text. `value` is untouched for a null text only.
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

/// Reads a number, and says whether it is all of the text. `value` is untouched where there are no digits; under an
/// exponent of zero it is the mantissa, and no number.
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

/// Whether a text is an integer, and nothing else.
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

/// Whether a text is a number, and nothing else.
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
