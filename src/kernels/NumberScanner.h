/// \file
/// Reading numbers from zero-terminated text of either width, step by step. A step takes the place where it starts and
/// moves it behind what it read; it stops at the first character that is not its own, and never fails.
#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "kernels/Characters.h"

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
constexpr Value takeDigits(const T*& place, Value value = 0) noexcept {
    static_assert(std::is_unsigned_v<Value>);
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

/// Negates in two's complement.
template <class Value>
constexpr Value negatedIf(bool negative, Value value) noexcept {
    return negative ? Value{0} - value : value;
}

/// Takes spaces, a sign and digits, and the spaces behind them if asked to. An unsigned number has no sign but '+': a
/// '-' stops the scan.
template <class Value, class T>
constexpr Value takeInteger(const T*& place, bool skipTrailingSpaces) noexcept {
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

/// The mantissa of a decimal number. Only its first 18 digits count, leading zeros among them.
struct Mantissa {
    std::uint64_t used = 0;      ///< the value of the digits that count
    std::uint32_t digits = 0;    ///< all digits, the point not among them
    std::uint32_t exponent = 0;  ///< the decimal exponent of the last digit that counts, as 32 bits that wrap around
};

inline constexpr std::uint32_t kMantissaDigits = 18;

/// Takes digits with at most one point among them.
template <class T>
constexpr Mantissa takeMantissa(const T*& place) noexcept {
    Mantissa mantissa;
    const T* const start = place;
    const T* point = nullptr;
    for (;; ++place) {
        if (isDigit(*place)) {
            if (mantissa.digits < kMantissaDigits) {
                mantissa.used = mantissa.used * 10 + static_cast<std::uint64_t>(*place - '0');
            }
            ++mantissa.digits;
        } else if (*place == '.' && !point) {
            point = place;
        } else {
            break;
        }
    }
    const std::uint32_t beforePoint = point ? static_cast<std::uint32_t>(point - start) : mantissa.digits;
    const std::uint32_t counted = mantissa.digits < kMantissaDigits ? mantissa.digits : kMantissaDigits;
    mantissa.exponent = beforePoint - counted;
    return mantissa;
}

/// The digits that count as a double, from two halves of nine digits. It is rounded twice, and is to be: other programs
/// follow the same steps, and every bit has to agree.
constexpr double mantissaValue(const Mantissa& mantissa) noexcept {
    constexpr std::uint64_t kHalf = 1000000000;
    const std::uint64_t high = mantissa.used / kHalf;
    const std::uint64_t low = mantissa.used % kHalf;
    return static_cast<double>(high) * 1.0e9 + static_cast<double>(low);
}

/// An exponent as it was read: 'e' or 'E', a sign, and digits. Marker and sign are taken without digits, too.
struct Exponent {
    std::uint32_t value = 0;  ///< without its sign; wraps around
    bool negative = false;
    bool hasMarker = false;
    bool hasDigits = false;
};

template <class T>
constexpr Exponent takeExponent(const T*& place) noexcept {
    Exponent exponent;
    if (*place == 'e' || *place == 'E') {
        ++place;
        exponent.hasMarker = true;
        exponent.negative = takeSign(place);
        const T* const digits = place;
        exponent.value = takeDigits<std::uint32_t>(place);
        exponent.hasDigits = place != digits;
    }
    return exponent;
}

inline constexpr std::uint32_t kLargestScale = 511;

/// Powers of ten from 0 to 511, each the product of 1e1, 1e2, 1e4 … 1e256 for its bits, from the lowest up, so that the
/// rounding of each step is that of the rule. From 309 on they are infinite.
inline constexpr auto kScaleFactors = [] {
    constexpr std::array<double, 9> kSquares = {1.0e1, 1.0e2, 1.0e4, 1.0e8, 1.0e16, 1.0e32, 1.0e64, 1.0e128, 1.0e256};
    std::array<double, kLargestScale + 1> factors = {};
    for (std::uint32_t power = 0; power <= kLargestScale; ++power) {
        double factor = 1.0;
        for (std::uint32_t bit = 0; bit < kSquares.size(); ++bit) {
            if ((power >> bit & 1) == 0) {
                continue;
            }
            const bool fits = factor <= std::numeric_limits<double>::max() / kSquares[bit];
            factor = fits ? factor * kSquares[bit] : std::numeric_limits<double>::infinity();
        }
        factors[power] = factor;
    }
    return factors;
}();

/// A mantissa under an exponent, with its sign.
constexpr double scaled(const Mantissa& mantissa, const Exponent& exponent, bool negative) noexcept {
    const std::uint32_t total = mantissa.exponent + negatedIf(exponent.negative, exponent.value);
    const bool divide = static_cast<std::int32_t>(total) < 0;
    const std::uint32_t magnitude = negatedIf(divide, total);
    const double factor = kScaleFactors[magnitude < kLargestScale ? magnitude : kLargestScale];
    const double value = divide ? mantissaValue(mantissa) / factor : mantissaValue(mantissa) * factor;
    return negative ? -value : value;
}

}  // namespace vorel::kernels
