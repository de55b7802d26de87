/// \file
/// Formats integers, and doubles with fifteen significant digits, as decimal text of either width. Sixteen digits are
/// computed in one register. The functions at the end of the file truncate the text to the size of the caller's buffer.
#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "algorithms/Attributes.h"
#include "algorithms/DecimalDigits.h"
#include "algorithms/DigitBlock.h"
#include "algorithms/SimdBlocks.h"
#include "algorithms/Sse2.h"

namespace vorel::algorithms {

// ---- Integers -------------------------------------------------------------------------------------------------------

/// The sixteen digits of a number below 10^16, with leading zeros.
inline __m128i sixteenDigits(std::uint64_t number) noexcept {
    constexpr std::uint64_t kHalf = 100000000;
    const std::uint64_t upper = number / kHalf;
    const __m128i eights =
        _mm_set_epi64x(static_cast<std::int64_t>(number - upper * kHalf), static_cast<std::int64_t>(upper));
    // Division by multiplication (Granlund and Montgomery, "Division by Invariant Integers using Multiplication"): for
    // x below 2^32, x / 10,000 is x * 3518437209 / 2^45. For x below 10,000, x / 100 is x * 5243 / 2^19. For x below
    // 100, x / 10 is x * 6554 / 2^16. All results are rounded down.
    const __m128i tenThousands = _mm_srli_epi64(_mm_mul_epu32(eights, _mm_set1_epi64x(3518437209)), 45);
    const __m128i belowTenThousand = _mm_sub_epi64(eights, _mm_mul_epu32(tenThousands, _mm_set1_epi64x(10000)));
    const __m128i fours = _mm_or_si128(tenThousands, _mm_slli_epi64(belowTenThousand, 32));
    const __m128i hundreds = _mm_srli_epi16(_mm_mulhi_epu16(fours, _mm_set1_epi32(5243)), 3);
    const __m128i belowHundred = _mm_sub_epi16(fours, _mm_mullo_epi16(hundreds, _mm_set1_epi32(100)));
    const __m128i twos = _mm_or_si128(hundreds, _mm_slli_epi32(belowHundred, 16));
    const __m128i tens = _mm_mulhi_epu16(twos, _mm_set1_epi16(6554));
    const __m128i ones = _mm_sub_epi16(twos, _mm_mullo_epi16(tens, _mm_set1_epi16(10)));
    return _mm_add_epi8(_mm_or_si128(tens, _mm_slli_epi16(ones, 8)), _mm_set1_epi8('0'));
}

/// A mask with one bit for each of sixteen characters, set if the character is not '0'. The lowest bit belongs to the
/// first character.
inline std::uint32_t nonZeroMask(__m128i digits) noexcept {
    const int zeros = _mm_movemask_epi8(_mm_cmpeq_epi8(digits, _mm_set1_epi8('0')));
    return static_cast<std::uint32_t>(zeros) ^ 0xFFFF;
}

/// The number of decimal digits; 0 has one digit.
constexpr std::uint64_t countDigits(std::uint64_t number) noexcept {
    // 0 has no highest bit. The lowest bit does not change how many digits a number has, because 10, 100 … are even.
    number |= 1;
    const auto highestBit = static_cast<std::uint64_t>(63 ^ std::countl_zero(number));
    // A number of b bits has b * log10(2) digits, rounded down, or one digit more. 1233 / 2^12 is slightly less than
    // log10(2).
    const std::uint64_t fewest = (highestBit * 1233 + 1233) >> 12;
    return fewest + (number >= kIntegerPowersOfTen[fewest] ? 1 : 0);
}

/// The length of a number's text.
constexpr std::uint64_t integerLength(std::uint64_t magnitude, bool negative) noexcept {
    return countDigits(magnitude) + std::uint64_t{negative};
}

/// How a function treats the units after the text, in the memory that it may access.
enum class Rest {
    Unspecified,  ///< they may be overwritten
    Unchanged,    ///< they keep their values, but may be overwritten with the same values, which avoids a branch
};

/// Writes the characters at the positions where `kept` is 0. At all other positions, `kept` must be 0xFF and
/// `characters` must be 0, and the units of `out` keep their values.
VOREL_ALWAYS_INLINE void mergeCharacters(__m128i characters, __m128i kept, char* out) noexcept {
    auto* const block = reinterpret_cast<__m128i*>(out);
    _mm_storeu_si128(block, _mm_or_si128(characters, _mm_and_si128(_mm_loadu_si128(block), kept)));
}

VOREL_ALWAYS_INLINE void mergeCharacters(__m128i characters, __m128i kept, WideUnit* out) noexcept {
    auto* const blocks = reinterpret_cast<__m128i*>(out);
    const __m128i zero = _mm_setzero_si128();
    const __m128i keptFirst = _mm_and_si128(_mm_loadu_si128(blocks), _mm_unpacklo_epi8(kept, kept));
    const __m128i keptSecond = _mm_and_si128(_mm_loadu_si128(blocks + 1), _mm_unpackhi_epi8(kept, kept));
    _mm_storeu_si128(blocks, _mm_or_si128(_mm_unpacklo_epi8(characters, zero), keptFirst));
    _mm_storeu_si128(blocks + 1, _mm_or_si128(_mm_unpackhi_epi8(characters, zero), keptSecond));
}

/// Writes the first `count` characters, at most sixteen. Accesses sixteen units.
template <Rest rest, class T>
VOREL_ALWAYS_INLINE void storeFirst(__m128i characters, std::uint64_t count, T* out) noexcept {
    if constexpr (rest == Rest::Unspecified) {
        storeCharacters(characters, out);
    } else {
        const __m128i kept = lastBytes(kDigitBlock - count);
        mergeCharacters(_mm_andnot_si128(kept, characters), kept, out);
    }
}

/// Writes the first `count` characters, at most fifteen, and a terminator. Accesses sixteen units. Returns the
/// terminator's position.
template <Rest rest, class T>
VOREL_ALWAYS_INLINE T* storeText(__m128i characters, std::uint64_t count, T* out) noexcept {
    if constexpr (rest == Rest::Unspecified) {
        storeCharacters(characters, out);
        out[count] = 0;
    } else {
        // The terminator is stored together with the text. If it had its own store, the next call for the same buffer
        // would be slower, because its load would have to wait for that store, too.
        const __m128i text = _mm_andnot_si128(lastBytes(kDigitBlock - count), characters);
        mergeCharacters(text, lastBytes(kDigitBlock - 1 - count), out);
    }
    return out + count;
}

/// Like `storeText`, but for up to sixteen characters. Accesses at most seventeen units.
template <Rest rest, class T>
VOREL_ALWAYS_INLINE T* storeLongText(__m128i characters, std::uint64_t count, T* out) noexcept {
    if (rest == Rest::Unchanged && count < kDigitBlock) {
        return storeText<rest>(characters, count, out);
    }
    storeCharacters(characters, out);
    out[count] = 0;
    return out + count;
}

/// Writes a number below 10,000. Each leading zero is overwritten by the next digit. Accesses at most four units.
template <class T>
void writeFewDigits(unsigned int number, T* out) noexcept {
    *out = static_cast<T>('0' + number / 1000);
    out += number >= 1000 ? 1 : 0;
    *out = static_cast<T>('0' + number / 100 % 10);
    out += number >= 100 ? 1 : 0;
    *out = static_cast<T>('0' + number / 10 % 10);
    out += number >= 10 ? 1 : 0;
    *out = static_cast<T>('0' + number % 10);
}

/// Writes a number whose text has `length` characters, at least sixteen, then a terminator, and no other unit. Returns
/// `out`.
template <class T>
VOREL_NOINLINE T* writeLongInteger(std::uint64_t magnitude, bool negative, std::uint64_t length, T* out) noexcept {
    constexpr std::uint64_t kSixteenDigits = kIntegerPowersOfTen[kDigitBlock];
    writeFewDigits(static_cast<unsigned int>(magnitude / kSixteenDigits), out + (negative ? 1 : 0));
    storeCharacters(sixteenDigits(magnitude % kSixteenDigits), out + length - kDigitBlock);
    if (negative) {
        *out = '-';  // written last: if the number has fifteen digits, the store above writes a leading zero here
    }
    out[length] = 0;
    return out;
}

/// Writes a number whose text has `length` characters, then a terminator. Accesses sixteen units, or `length + 1` if
/// that is more. Returns `out`.
template <Rest rest, class T>
VOREL_ALWAYS_INLINE T* writeInteger(std::uint64_t magnitude, bool negative, std::uint64_t length, T* out) noexcept {
    constexpr int kZeroToMinus = '0' - '-';
    if (length >= kDigitBlock) {
        return writeLongInteger(magnitude, negative, length, out);
    }
    // The multiplication appends zeros, which moves the digits to the front. If the number is negative, one zero
    // remains before the digits and becomes the sign.
    const __m128i digits = sixteenDigits(magnitude * kIntegerPowersOfTen[kDigitBlock - length]);
    storeText<rest>(_mm_sub_epi8(digits, _mm_cvtsi32_si128(negative ? kZeroToMinus : 0)), length, out);
    return out;
}

/// The longest text of a 64-bit number: twenty digits, or a sign and nineteen digits.
inline constexpr std::size_t kMaxIntegerCharacters = 20;

/// The absolute value, even of the lowest number.
constexpr std::uint64_t magnitudeOf(std::int64_t value) noexcept {
    const auto bits = static_cast<std::uint64_t>(value);
    return value < 0 ? 0 - bits : bits;
}

// ---- Doubles --------------------------------------------------------------------------------------------------------

/// The form of mantissa and exponent.
enum class DoubleForm {
    Raw,    ///< "1e+20", "1.5e-07", "1.e-07": at least two exponent digits
    Plain,  ///< as `Raw`, with at least three exponent digits
    Json,   ///< as `Plain`, but a mantissa before an exponent has a digit after its point: "1.0e+020"
};

/// Capacity for the text of any double and its terminator, including the units after them that are accessed.
inline constexpr std::size_t kDoubleCapacity = 32;

/// Fifteen digits as characters, and the number of digits before the trailing zeros.
struct DigitText {
    explicit DigitText(std::uint64_t digits) noexcept
        : characters(sixteenDigits(digits * 10)),
          significant(static_cast<int>(std::bit_width(nonZeroMask(characters)))) {}

    __m128i characters;
    int significant;
};

/// The digits with a point after the first `whole` digits (1 to 15), as sixteen characters.
inline __m128i insertDecimalPoint(__m128i digits, int whole) noexcept {
    const auto after = static_cast<std::uint64_t>(15 - whole);
    const __m128i fromPoint = lastBytes(after + 1);
    const __m128i afterPoint = lastBytes(after);
    const __m128i point = _mm_and_si128(_mm_andnot_si128(afterPoint, fromPoint), _mm_set1_epi8('.'));
    const __m128i fraction = _mm_and_si128(_mm_slli_si128(digits, 1), afterPoint);
    return _mm_or_si128(_mm_or_si128(_mm_andnot_si128(fromPoint, digits), point), fraction);
}

/// Writes an exponent such as "e+020". With `Raw`, an exponent from -99 to 99 has two digits.
template <class T>
VOREL_ALWAYS_INLINE T* writeExponent(int exponent, DoubleForm form, T* out) noexcept {
    const auto magnitude = static_cast<unsigned int>(exponent < 0 ? -exponent : exponent);
    out[0] = 'e';
    out[1] = exponent < 0 ? '-' : '+';
    out[2] = static_cast<T>('0' + magnitude / 100);
    out += form == DoubleForm::Raw && magnitude < 100 ? 2 : 3;
    out[0] = static_cast<T>('0' + magnitude / 10 % 10);
    out[1] = static_cast<T>('0' + magnitude % 10);
    return out + 2;
}

/// Writes `value`, which must be finite and not 0, and then a terminator. Returns the terminator's position. For
/// magnitudes of 0.1 and more, the digits are the same as with "%.15g". Smaller magnitudes are always written with an
/// exponent and a point. `out` must have space for `kDoubleCapacity` characters.
template <Rest rest, class T>
VOREL_ALWAYS_INLINE T* writeDouble(double value, DoubleForm form, T* out) noexcept {
    *out = '-';  // overwritten unless the value is negative
    out += std::bit_cast<std::uint64_t>(value) >> 63;
    value = std::fabs(value);
    const bool isSmall = value < 0.1;
    const DecimalDigits decimal = decimalDigits(value, isSmall ? Tie::AwayFromZero : Tie::ToEven);
    const DigitText text(decimal.digits);
    if (isSmall || decimal.exponent > kFractionDigits) {
        const int singleDigitLength = form == DoubleForm::Json ? 3 : isSmall ? 2 : 1;  // "1.0", "1.", "1"
        const int length = text.significant > 1 ? text.significant + 1 : singleDigitLength;
        const __m128i mantissa = insertDecimalPoint(text.characters, 1);
        constexpr int kShortestExponent = 5;  // with its terminator
        if (length + kShortestExponent >= static_cast<int>(kDigitBlock)) {
            storeCharacters(mantissa, out);  // the exponent overwrites the rest of the block
        } else {
            storeFirst<rest>(mantissa, static_cast<std::uint64_t>(length), out);
        }
        out = writeExponent(decimal.exponent, form, out + length);
        *out = 0;
        return out;
    }
    if (decimal.exponent < 0) {
        out[0] = '0';
        out[1] = '.';
        return storeText<rest>(text.characters, static_cast<std::uint64_t>(text.significant), out + 2);
    }
    const int whole = decimal.exponent + 1;
    const int length = text.significant > whole ? text.significant + 1 : whole;
    return storeLongText<rest>(insertDecimalPoint(text.characters, whole), static_cast<std::uint64_t>(length), out);
}

// ---- Buffers of a caller -----------------------------------------------------------------------------------------

/// Copies a short text that does not overlap the target. A call of the runtime's function would take longer.
template <class T>
void copyShortText(const T* text, std::size_t length, T* to) noexcept {
    const auto* const from = reinterpret_cast<const unsigned char*>(text);
    auto* const out = reinterpret_cast<unsigned char*>(to);
    const std::size_t bytes = length * sizeof(T);
    const auto copy = [=](auto block, std::size_t at) {
        std::memcpy(&block, from + at, sizeof block);
        std::memcpy(out + at, &block, sizeof block);
    };
    // The last block may overlap the block before it.
    const auto copyBlocks = [&](auto block) {
        for (std::size_t at = 0; at + sizeof block < bytes; at += sizeof block) {
            copy(block, at);
        }
        copy(block, bytes - sizeof block);
    };
    if (bytes >= sizeof(std::uint64_t)) {
        copyBlocks(std::uint64_t{});
    } else if (bytes >= sizeof(std::uint32_t)) {
        copyBlocks(std::uint32_t{});
    } else {
        std::copy_n(from, bytes, out);
    }
}

/// Copies as much of a text as fits into `size` characters with a terminator. The last of the `size` characters becomes
/// a terminator too. If `size` is 0, writes nothing.
template <class T>
void copyTruncatedText(const T* text, std::size_t length, T* buffer, unsigned long long size) noexcept {
    if (size == 0) {
        return;
    }
    const std::size_t copied = std::min<unsigned long long>(length, size - 1);
    copyShortText(text, copied, buffer);
    buffer[copied] = 0;
    buffer[size - 1] = 0;
}

/// Writes a number to a buffer that may be too small for the number's text. Returns the buffer.
template <class T>
VOREL_COLD T* writeTruncatedInteger(std::uint64_t magnitude, bool negative, T* buffer,
                                    unsigned long long size) noexcept {
    T text[kMaxIntegerCharacters + 1];
    const std::uint64_t length = integerLength(magnitude, negative);
    writeInteger<Rest::Unspecified>(magnitude, negative, length, text);
    copyTruncatedText(text, static_cast<std::size_t>(length), buffer, size);
    return buffer;
}

/// Writes a number, truncated to `size - 1` characters, and a terminator after it. The last of the `size` characters
/// becomes a terminator too. All other units are unchanged. If `size` is 0, writes nothing. Returns the buffer, which
/// may be null.
template <class T>
VOREL_ALWAYS_INLINE T* writeBoundedInteger(std::uint64_t magnitude, bool negative, T* buffer,
                                           unsigned long long size) noexcept {
    if (!buffer) {
        return nullptr;
    }
    const std::uint64_t length = integerLength(magnitude, negative);
    if (size < kDigitBlock || size <= length) [[unlikely]] {
        return writeTruncatedInteger(magnitude, negative, buffer, size);
    }
    buffer[size - 1] = 0;  // written first, so that the next call can be a tail call
    return writeInteger<Rest::Unchanged>(magnitude, negative, length, buffer);
}

}  // namespace vorel::algorithms
