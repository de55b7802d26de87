#include "vorel/values/NumberParsing.h"

#include "kernels/DecimalScanner.h"
#include "kernels/NumberScanner.h"

namespace vorel::util {

namespace {

using kernels::DigitRun;
using kernels::Exponent;
using kernels::Mantissa;
using kernels::mantissaValue;
using kernels::negatedIf;
using kernels::scaled;
using kernels::skipSpaces;
using kernels::takeDigitRun;
using kernels::takeDigits;
using kernels::takeExponent;
using kernels::takeHex;
using kernels::takeInteger;
using kernels::takeMantissa;
using kernels::takeShortDecimal;
using kernels::takeSign;
using kernels::takeZeroFraction;

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

template <class Value, class T, class End>
Value integer(const T* text, End** end, bool skipTrailingSpace) noexcept {
    return scanned(text, end, [=](const T*& place) { return takeInteger<Value>(place, skipTrailingSpace); });
}

template <class T>
int hex(const T* text, T** end) noexcept {
    return scanned(text, end, [](const T*& place) { return static_cast<int>(takeHex(place)); });
}

template <class T>
[[gnu::noinline]] double decimalStepByStep(const T* text, T** end) noexcept {
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

template <class T>
double decimal(const T* text, T** end) noexcept {
    double value = 0;
    if (text && takeShortDecimal(text, value)) {
        storeEnd(text, end);
        return value;
    }
    return decimalStepByStep(text, end);
}

template <class T>
bool tryInteger(const T* text, int& value) noexcept {
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

template <class T>
bool tryDouble(const T* text, double& value) noexcept {
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

}  // namespace

int stringToInteger(const char* text, const char** end, bool skipTrailingSpace) noexcept {
    return integer<int>(text, end, skipTrailingSpace);
}

int stringToInteger(const wchar_t* text, const wchar_t** end, bool skipTrailingSpace) noexcept {
    return integer<int>(text, end, skipTrailingSpace);
}

long long stringToInteger64(const char* text, const char** end, bool skipTrailingSpace) noexcept {
    return integer<long long>(text, end, skipTrailingSpace);
}

long long stringToInteger64(const wchar_t* text, const wchar_t** end, bool skipTrailingSpace) noexcept {
    return integer<long long>(text, end, skipTrailingSpace);
}

unsigned long long stringToUnsignedInteger64(const char* text, const char** end, bool skipTrailingSpace) noexcept {
    return integer<unsigned long long>(text, end, skipTrailingSpace);
}

unsigned long long stringToUnsignedInteger64(const wchar_t* text, const wchar_t** end,
                                             bool skipTrailingSpace) noexcept {
    return integer<unsigned long long>(text, end, skipTrailingSpace);
}

int stringToInt(const char* text, char** end) noexcept {
    return integer<int>(text, end, true);
}

int stringToInt(const wchar_t* text, wchar_t** end) noexcept {
    return integer<int>(text, end, true);
}

unsigned int stringToUInt(const char* text, char** end) noexcept {
    return integer<unsigned int>(text, end, true);
}

unsigned int stringToUInt(const wchar_t* text, wchar_t** end) noexcept {
    return integer<unsigned int>(text, end, true);
}

long long stringToInt64(const char* text, char** end) noexcept {
    return integer<long long>(text, end, true);
}

long long stringToInt64(const wchar_t* text, wchar_t** end) noexcept {
    return integer<long long>(text, end, true);
}

unsigned long long stringToUInt64(const char* text, char** end) noexcept {
    return integer<unsigned long long>(text, end, true);
}

unsigned long long stringToUInt64(const wchar_t* text, wchar_t** end) noexcept {
    return integer<unsigned long long>(text, end, true);
}

int hexToInteger(const char* text, char** end) noexcept {
    return hex(text, end);
}

int hexToInteger(const wchar_t* text, wchar_t** end) noexcept {
    return hex(text, end);
}

int hexToInt(const char* text, char** end) noexcept {
    return hex(text, end);
}

int hexToInt(const wchar_t* text, wchar_t** end) noexcept {
    return hex(text, end);
}

double stringToDouble(const char* text, char** end) noexcept {
    return decimal(text, end);
}

double stringToDouble(const wchar_t* text, wchar_t** end) noexcept {
    return decimal(text, end);
}

bool tryStringToInteger(const char* text, int& value) noexcept {
    return tryInteger(text, value);
}

bool tryStringToInteger(const wchar_t* text, int& value) noexcept {
    return tryInteger(text, value);
}

bool tryStringToDouble(const char* text, double& value) noexcept {
    return tryDouble(text, value);
}

bool tryStringToDouble(const wchar_t* text, double& value) noexcept {
    return tryDouble(text, value);
}

bool canCoerceToInteger(const char* text, bool allowLeadingZeros) noexcept {
    return coercesToInteger(text, allowLeadingZeros);
}

bool canCoerceToInteger(const wchar_t* text, bool allowLeadingZeros) noexcept {
    return coercesToInteger(text, allowLeadingZeros);
}

bool canCoerceToDouble(const char* text, bool allowLeadingZeros) noexcept {
    return coercesToDouble(text, allowLeadingZeros);
}

bool canCoerceToDouble(const wchar_t* text, bool allowLeadingZeros) noexcept {
    return coercesToDouble(text, allowLeadingZeros);
}

}  // namespace vorel::util
