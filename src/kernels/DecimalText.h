/// \file
/// Writing decimal digits as text. Texts are written from left to right, and each step returns the place behind what it
/// wrote; none writes a terminator.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "kernels/DecimalDigits.h"

namespace vorel::kernels {

/// The two digits of 0 to 99.
inline constexpr auto kDigitPairs = [] {
    std::array<char, 200> pairs = {};
    for (unsigned int number = 0; number < 100; ++number) {
        pairs[2 * std::size_t{number}] = static_cast<char>('0' + number / 10);
        pairs[2 * std::size_t{number} + 1] = static_cast<char>('0' + number % 10);
    }
    return pairs;
}();

/// The most digits of a 64-bit number.
inline constexpr std::size_t kMostIntegerDigits = 20;

/// Writes `value` so that it ends at `end`, and returns where it begins.
template <class T>
constexpr T* writeIntegerBackwards(std::uint64_t value, T* end) noexcept {
    while (value >= 100) {
        const std::size_t pair = 2 * static_cast<std::size_t>(value % 100);
        value /= 100;
        *--end = static_cast<T>(kDigitPairs[pair + 1]);
        *--end = static_cast<T>(kDigitPairs[pair]);
    }
    if (value >= 10) {
        *--end = static_cast<T>(kDigitPairs[2 * static_cast<std::size_t>(value) + 1]);
    }
    *--end =
        static_cast<T>(value >= 10 ? kDigitPairs[2 * static_cast<std::size_t>(value)] : '0' + static_cast<char>(value));
    return end;
}

/// The most characters of a double's text before its exponent is widened: a sign, a digit, a point, 14 digits, and
/// "e-308"; as a fraction from 0.1 on it has a sign, a zero, a point, and 15 digits.
inline constexpr std::size_t kMostDoubleCharacters = 22;

/// A double's fifteen digits as characters, and how many of them are left without the zeros at the end.
struct DigitText {
    constexpr explicit DigitText(std::uint64_t digits) noexcept {
        writeIntegerBackwards(digits, characters + 15);
        while (significant > 1 && characters[significant - 1] == '0') {
            --significant;
        }
    }

    char characters[15] = {};
    int significant = 15;
};

constexpr char* copyDigits(const char* from, int count, char* out) noexcept {
    for (int digit = 0; digit < count; ++digit) {
        *out++ = from[digit];
    }
    return out;
}

/// Whether a mantissa of a single digit has a point behind it.
enum class LonelyPoint {
    Kept,
    Dropped,
};

/// Writes "d.ddde+xx", with two digits of exponent at least.
constexpr char* writeWithExponent(const DigitText& text, int exponent, LonelyPoint point, char* out) noexcept {
    *out++ = text.characters[0];
    if (text.significant > 1 || point == LonelyPoint::Kept) {
        *out++ = '.';
    }
    out = copyDigits(text.characters + 1, text.significant - 1, out);
    *out++ = 'e';
    *out++ = exponent < 0 ? '-' : '+';
    const auto magnitude = static_cast<unsigned int>(exponent < 0 ? -exponent : exponent);
    if (magnitude >= 100) {
        *out++ = static_cast<char>('0' + magnitude / 100);
    }
    *out++ = kDigitPairs[2 * std::size_t{magnitude % 100}];
    *out++ = kDigitPairs[2 * std::size_t{magnitude % 100} + 1];
    return out;
}

/// Writes "ddd.ddd" or "ddd" for an exponent from -1 to 14.
constexpr char* writeFixed(const DigitText& text, int exponent, char* out) noexcept {
    if (exponent < 0) {
        *out++ = '0';
        *out++ = '.';
        return copyDigits(text.characters, text.significant, out);
    }
    const int whole = exponent + 1;
    out = copyDigits(text.characters, whole, out);
    if (text.significant > whole) {
        *out++ = '.';
        out = copyDigits(text.characters + whole, text.significant - whole, out);
    }
    return out;
}

/// Writes a finite value other than 0 with fifteen significant digits: from a magnitude of 0.1 on as "%.15g" does,
/// below it with an exponent always, and with its point kept.
constexpr char* writeDouble(double value, char* out) noexcept {
    if (value < 0) {
        *out++ = '-';
        value = -value;
    }
    const bool isSmall = value < 0.1;
    const DecimalDigits decimal = decimalDigits(value, isSmall ? Tie::AwayFromZero : Tie::ToEven);
    const DigitText text(decimal.digits);
    if (isSmall) {
        return writeWithExponent(text, decimal.exponent, LonelyPoint::Kept, out);
    }
    if (decimal.exponent > kFractionDigits) {
        return writeWithExponent(text, decimal.exponent, LonelyPoint::Dropped, out);
    }
    return writeFixed(text, decimal.exponent, out);
}

}  // namespace vorel::kernels
