/// \file
/// Formats a double as decimal text with fifteen significant digits.
#pragma once

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include <emmintrin.h>

#include "algorithms/DecimalDigits.h"
#include "algorithms/DigitBlock.h"
#include "algorithms/IntegerText.h"
#include "algorithms/SimdBlocks.h"

namespace vorel::algorithms {

/// The form of mantissa and exponent.
enum class DoubleForm {
    Raw,    ///< "1e+20", "1.5e-07", "1.e-07": the form of the print functions
    Plain,  ///< as `Raw`, with at least three exponent digits
    Json,   ///< as `Plain`, with at least one digit after the point of every mantissa: "1.0e+020"
};

/// Capacity for the text of any double, including the characters written temporarily after its end.
inline constexpr std::size_t kDoubleCapacity = 32;

/// Fifteen digits as characters, and their number without trailing zeros.
struct DigitText {
    explicit DigitText(std::uint64_t digits) noexcept
        : characters(sixteenDigits(digits * 10)),
          significant(static_cast<int>(std::bit_width(nonZeroMask(characters)))) {}

    __m128i characters;
    int significant;
};

/// Sixteen characters: the digits with a point after the first `whole` of them, 1 to 15.
inline __m128i insertDecimalPoint(__m128i digits, int whole) noexcept {
    const auto after = static_cast<std::uint64_t>(15 - whole);
    const __m128i fromPoint = lastBytes(after + 1);
    const __m128i afterPoint = lastBytes(after);
    const __m128i point = _mm_and_si128(_mm_andnot_si128(afterPoint, fromPoint), _mm_set1_epi8('.'));
    const __m128i fraction = _mm_and_si128(_mm_slli_si128(digits, 1), afterPoint);
    return _mm_or_si128(_mm_or_si128(_mm_andnot_si128(fromPoint, digits), point), fraction);
}

/// Writes "e+020". `Raw` writes two digits if they are enough.
template <class T>
T* writeExponent(int exponent, DoubleForm form, T* out) noexcept {
    const auto magnitude = static_cast<unsigned int>(exponent < 0 ? -exponent : exponent);
    out[0] = 'e';
    out[1] = exponent < 0 ? '-' : '+';
    out[2] = static_cast<T>('0' + magnitude / 100);
    out += form == DoubleForm::Raw && magnitude < 100 ? 2 : 3;
    out[0] = static_cast<T>('0' + magnitude / 10 % 10);
    out[1] = static_cast<T>('0' + magnitude % 10);
    return out + 2;
}

/// Writes a finite value other than 0 without a terminator and returns the end. From a magnitude of 0.1 on, the digits
/// are those of "%.15g". Smaller values always have an exponent and keep the point. `out` has space for
/// `kDoubleCapacity` characters.
template <class T>
T* writeDouble(double value, DoubleForm form, T* out) noexcept {
    *out = '-';
    out += std::signbit(value) ? 1 : 0;
    value = std::fabs(value);
    const bool isSmall = value < 0.1;
    const DecimalDigits decimal = decimalDigits(value, isSmall ? Tie::AwayFromZero : Tie::ToEven);
    const DigitText text(decimal.digits);
    if (isSmall || decimal.exponent > kFractionDigits) {
        const int singleDigitLength = form == DoubleForm::Json ? 3 : isSmall ? 2 : 1;  // "1.0", "1.", "1"
        storeCharacters(insertDecimalPoint(text.characters, 1), out);
        out += text.significant > 1 ? text.significant + 1 : singleDigitLength;
        return writeExponent(decimal.exponent, form, out);
    }
    if (decimal.exponent < 0) {
        out[0] = '0';
        out[1] = '.';
        storeCharacters(text.characters, out + 2);
        return out + 2 + text.significant;
    }
    const int whole = decimal.exponent + 1;
    storeCharacters(insertDecimalPoint(text.characters, whole), out);
    return out + (text.significant > whole ? text.significant + 1 : whole);
}

}  // namespace vorel::algorithms
