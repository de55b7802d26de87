/// \file
/// The parts of the UTF-8 codec that convert single values. The codec converts between bytes and 16-bit units. It uses
/// the original form of UTF-8 (RFC 2279), in which a value up to 0x7FFFFFFF takes one to six bytes.
///
/// The codec validates little, and callers rely on each of the following rules. The lead-byte masks are 0xF1 and 0xFD
/// instead of the usual 0xF8 and 0xFC. So the odd bytes from 0xF1 to 0xFB do not start a sequence, 0xF8, 0xFA, 0xFC and
/// 0xFE start a sequence of four bytes, and no byte starts a sequence of five. In a sequence of six bytes, the decoder
/// uses only four bits of the second and of the third byte instead of six. Trailing bytes are not checked. Overlong
/// forms and encoded surrogates are accepted.
#pragma once

#include <cstdint>

#include "algorithms/Utf16.h"

namespace vorel::algorithms {

/// The maximum number of bytes that encode one value, and the maximum number that encode one unit of a text.
inline constexpr unsigned int kLongestUtf8Sequence = 6;
inline constexpr unsigned int kMaxUtf8BytesPerUnit = 3;

/// A decoded sequence: its value and its number of bytes, 0 if the first byte does not start a sequence.
struct Utf8Sequence {
    std::uint32_t value;
    unsigned int bytes;
};

/// Decodes the sequence at `lead`, whose first byte is 0x80 or more. Trailing bytes are not checked.
constexpr Utf8Sequence decodeUtf8Sequence(const unsigned char* lead) noexcept {
    const auto low = [lead](unsigned int position, unsigned int mask, unsigned int shift) {
        return (std::uint32_t{lead[position]} & mask) << shift;
    };
    if ((lead[0] & 0xE0) == 0xC0) {
        return {low(0, 0x1F, 6) | low(1, 0x3F, 0), 2};
    }
    if ((lead[0] & 0xF0) == 0xE0) {
        return {low(0, 0x0F, 12) | low(1, 0x3F, 6) | low(2, 0x3F, 0), 3};
    }
    if ((lead[0] & 0xF1) == 0xF0) {
        return {low(0, 0x0F, 18) | low(1, 0x3F, 12) | low(2, 0x3F, 6) | low(3, 0x3F, 0), 4};
    }
    if ((lead[0] & 0xFD) == 0xF8) {  // never true after the test above; kept for symmetry
        return {low(0, 0x0F, 24) | low(1, 0x0F, 18) | low(2, 0x3F, 12) | low(3, 0x3F, 6) | low(4, 0x3F, 0), 5};
    }
    if ((lead[0] & 0xFE) == 0xFC) {
        return {low(0, 0xFF, 30) | low(1, 0x0F, 24) | low(2, 0x0F, 18) | low(3, 0x3F, 12) | low(4, 0x3F, 6) |
                    low(5, 0x3F, 0),
                6};
    }
    return {0, 0};
}

/// The number of bytes that encode `value`.
constexpr unsigned int utf8SequenceLength(std::uint32_t value) noexcept {
    if (value < 0x80) {
        return 1;
    }
    if (value < 0x800) {
        return 2;
    }
    if (value < 0x10000) {
        return 3;
    }
    if (value < 0x200000) {
        return 4;
    }
    return value < 0x4000000 ? 5 : 6;
}

/// Writes the bytes of `value` (up to six) to `out` and returns their number.
constexpr unsigned int encodeUtf8Sequence(std::uint32_t value, unsigned char* out) noexcept {
    constexpr unsigned char kLeads[kLongestUtf8Sequence + 1] = {0, 0, 0xC0, 0xE0, 0xF0, 0xF8, 0xFC};
    const unsigned int length = utf8SequenceLength(value);
    for (unsigned int position = length - 1; position != 0; --position) {
        out[position] = static_cast<unsigned char>(0x80 | (value & 0x3F));
        value >>= 6;
    }
    out[0] = static_cast<unsigned char>(kLeads[length] | value);
    return length;
}

/// How the encoder treats surrogates.
enum class Surrogates {
    Paired,  ///< a pair is one value, an unpaired surrogate becomes "?"
    Single,  ///< every unit is a value, so a pair takes six bytes
};

/// Reads one value and moves `cursor` past it. With `Paired`, the unit after a high surrogate is read even if it is
/// past the end of the text, so a pair is always read whole.
template <Surrogates Rule, class Unit>
constexpr std::uint32_t consumeValue(const Unit*& cursor) noexcept {
    const std::uint32_t unit{static_cast<std::uint16_t>(*cursor++)};
    if constexpr (Rule == Surrogates::Paired) {
        if (isSurrogate(unit)) {
            if (!isHighSurrogate(unit) || !isLowSurrogate(*cursor)) {
                return kLoneSurrogateReplacement;
            }
            return pairedValue(unit, static_cast<std::uint16_t>(*cursor++));
        }
    }
    return unit;
}

}  // namespace vorel::algorithms
