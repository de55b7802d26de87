/// \file
/// Reading decimal numbers with a fraction and an exponent from zero-terminated text of either width: step by step, and
/// those of the usual length in one go.
///
/// Every program that shares these rules gets the same bits, so the order of the operations is fixed: the digits that
/// count as an integer, to a double, times or divided by one power of ten.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "kernels/Characters.h"
#include "kernels/DigitBlock.h"
#include "kernels/NumberScanner.h"

namespace vorel::kernels {

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

/// Digits that count as a double. The rule makes two halves of nine digits of them, high and low, and takes
/// high * 1e9 + low. That product has 51 bits at most and is exact, and so are the halves: what is left is the one
/// rounding of the sum, which is that of the conversion.
constexpr double mantissaValue(std::uint64_t used) noexcept {
    return static_cast<double>(static_cast<std::int64_t>(used));
}

/// An exponent as it was read: 'e' or 'E', a sign, and digits. Marker and sign are taken without digits, too.
struct Exponent {
    std::uint32_t value = 0;  ///< without its sign; wraps around
    bool negative = false;
    bool hasMarker = false;
    bool hasDigits = false;
};

template <class T>
constexpr bool isExponentMarker(T c) noexcept {
    return c == 'e' || c == 'E';
}

template <class T>
Exponent takeExponent(const T*& place) noexcept {
    Exponent exponent;
    if (isExponentMarker(*place)) {
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

/// `value`, negated or not, without a branch.
constexpr double withSign(double value, bool negative) noexcept {
    return std::bit_cast<double>(std::bit_cast<std::uint64_t>(value) ^ static_cast<std::uint64_t>(negative) << 63);
}

/// Digits that count, under the exponent of the last of them as 32 bits, with their sign. Signs come as they like, so
/// nothing here branches on one: the factor that is not wanted is 1, which changes nothing.
inline double scaled(std::uint64_t used, std::uint32_t exponent, bool negative) noexcept {
    const bool isBelowOne = exponent >> 31 != 0;
    const std::uint32_t magnitude = negatedIf(isBelowOne, exponent);
    const std::uint32_t power = magnitude < kLargestScale ? magnitude : kLargestScale;
    const std::uint32_t down = power & (0 - std::uint32_t{isBelowOne});
    return withSign(mantissaValue(used) * kScaleFactors[power - down] / kScaleFactors[down], negative);
}

inline double scaled(const Mantissa& mantissa, const Exponent& exponent, bool negative) noexcept {
    return scaled(mantissa.used, mantissa.exponent + negatedIf(exponent.negative, exponent.value), negative);
}

/// A mantissa of which all digits count, its last `fraction` ones behind the point.
struct ShortMantissa {
    std::uint64_t used = 0;
    std::uint64_t fraction = 0;
};

/// Takes a mantissa of less than a block of digits before the point and a block behind it at most, and says whether it
/// was one. `place` has to be within a page.
template <class T>
[[gnu::always_inline]] inline bool takeShortMantissa(const T*& place, ShortMantissa& mantissa) noexcept {
    std::uint64_t mask = digitMask(place);
    const std::uint64_t whole = leadingDigits(mask);
    if (whole == kDigitBlock) {
        return false;
    }
    if (place[whole] != '.') {
        mantissa.used = valueOfDigits(place, whole);
        place += whole;
        return whole != 0;
    }
    std::uint64_t fraction = leadingDigits(mask >> whole >> 1);
    if (whole + 1 + fraction < kDigitBlock) {
        mantissa.used = valueAcrossPoint(place, whole, fraction);
    } else {
        mask |= digitMask(place + kDigitBlock) << kDigitBlock;
        fraction = leadingDigits(mask >> whole >> 1);
        if (fraction > kDigitBlock || whole + fraction > kMantissaDigits) {
            return false;
        }
        mantissa.used =
            valueOfDigits(place, whole) * kIntegerPowersOfTen[fraction] + valueOfDigits(place + whole + 1, fraction);
    }
    mantissa.fraction = fraction;
    place += whole + 1 + fraction;
    return whole + fraction != 0;
}

/// Takes a number of the usual length, without a branch that depends on how many digits it has, and says whether it was
/// one. When not, nothing is taken, and it has to be read step by step.
template <class T>
[[gnu::always_inline]] inline bool takeShortDecimal(const T*& start, double& value) noexcept {
    const T* place = start;
    skipSpaces(place);
    const bool negative = takeSign(place);
    ShortMantissa mantissa;
    if (!isWithinPage(place) || !takeShortMantissa(place, mantissa)) {
        return false;
    }
    if (!isExponentMarker(*place)) {
        value = withSign(mantissaValue(mantissa.used) / kScaleFactors[mantissa.fraction], negative);
        start = place;
        return true;
    }
    ++place;
    const bool isBelowOne = takeSign(place);
    if (!isWithinPage(place)) {
        return false;
    }
    const std::uint64_t digits = leadingDigits(digitMask(place));
    if (digits == kDigitBlock) {
        return false;
    }
    const auto exponent = static_cast<std::uint32_t>(valueOfDigits(place, digits));
    const auto fraction = static_cast<std::uint32_t>(mantissa.fraction);
    value = scaled(mantissa.used, negatedIf(isBelowOne, exponent) - fraction, negative);
    start = place + digits;
    return true;
}

}  // namespace vorel::kernels
