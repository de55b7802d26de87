/// \file
/// Converts short texts, such as names or words. These functions have no setup; the setup of the conversion for long
/// texts (Utf8Streams.h) would take longer than the conversion of a short text. A text is converted eight characters at
/// a time if it has at least eight characters, all of them from 0x01 to 0x7F, and it lies in one page. Any other text
/// is converted one character at a time. The results follow the rules of the codec (Utf8.h). If a text contains input
/// that these functions do not handle, such as an unpaired surrogate, the conversion for long texts converts the whole
/// text.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "algorithms/Ascii.h"
#include "algorithms/AsciiRuns.h"
#include "algorithms/PageReads.h"
#include "algorithms/Sse2.h"
#include "algorithms/Utf16.h"
#include "algorithms/Utf8.h"

namespace vorel::algorithms {

/// The maximum number of elements of a short text.
inline constexpr std::size_t kShortText = 48;

/// The result for a text that is left to the conversion for long texts.
inline constexpr std::size_t kNotShort = kShortText + 1;

/// The length of a short text, or `kNotShort`.
///
/// - If `length` is below 0, the result is the number of elements before the first zero. It is `kNotShort` if the first
///   `kShortText` elements contain no zero or do not lie in one page.
/// - Otherwise, the result is `length`, even if a zero ends the text earlier. It is `kNotShort` if `length` is above
///   `kShortText`.
template <class Element>
std::size_t shortTextLength(const Element* text, int length) noexcept {
    constexpr std::size_t kPerVector = sizeof(__m128i) / sizeof(Element);
    if (length >= 0) {
        return std::min(static_cast<std::size_t>(length), kNotShort);
    }
    if (!isInPage(text, kShortText * sizeof(Element))) {
        return kNotShort;
    }
    const __m128i zero = _mm_setzero_si128();
    std::uint64_t zeros = 0;
    for (std::size_t at = 0; at != kShortText; at += kPerVector) {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text + at));
        const __m128i found =
            sizeof(Element) == 1 ? _mm_cmpeq_epi8(block, zero) : _mm_packs_epi16(_mm_cmpeq_epi16(block, zero), zero);
        zeros |= static_cast<std::uint64_t>(_mm_movemask_epi8(found)) << at;
    }
    return zeros != 0 ? static_cast<std::size_t>(std::countr_zero(zeros)) : kNotShort;
}

/// Decodes characters of four bytes. The byte at `byte` must start such a character, and `out` must not be above
/// `lastPair`. Stops at a byte that does not start such a character, at the end of the text, or if the capacity may be
/// too small for another surrogate pair. This is a loop, because such characters mostly occur in runs. Returns false at
/// an overlong sequence.
template <class Unit>
bool decodeFours(const unsigned char*& byte, const unsigned char* end, Unit*& out, const Unit* lastPair) noexcept {
    const auto trailing = [&](unsigned int index) { return byte[index] & 0x3Fu; };
    do {
        const std::uint32_t value = (*byte & 0x0Fu) << 18 | trailing(1) << 12 | trailing(2) << 6 | trailing(3);
        if (value < kFirstPairedValue) {
            return false;
        }
        const std::uint32_t pair = highSurrogateOf(value) | lowSurrogateOf(value) << 16;
        std::memcpy(out, &pair, sizeof pair);
        out += 2;
        byte += 4;
    } while (byte < end && out <= lastPair && (*byte & 0xF1) == 0xF0);
    return true;
}

/// Decodes a short text. The bytes of the last sequence are read even past the end of the text. Returns the number of
/// units. Returns `kNotShort` for any of the following reasons:
///
/// - `shortTextLength` returns `kNotShort`: the text is too long, or no length is given and its first `kShortText`
///   elements do not lie in one page.
/// - The capacity may be too small.
/// - A byte does not start a sequence, or starts a sequence of six bytes.
/// - A sequence of four bytes is overlong.
/// - No length is given, and a zero is part of a sequence.
template <class Unit>
std::size_t decodeShortText(const unsigned char* text, int length, Unit* out, std::size_t capacity) noexcept {
    const std::size_t bytes = shortTextLength(text, length);
    if (bytes == kNotShort || capacity < 2) {
        return kNotShort;
    }
    if (bytes <= capacity && copyShortAscii(text, bytes, out)) {
        return bytes;
    }
    const unsigned char* byte = text;
    const unsigned char* const end = text + bytes;
    const Unit* const start = out;
    const Unit* const lastPair = out + (capacity - 2);
    const auto trailing = [&](unsigned int index) { return byte[index] & 0x3Fu; };
    while (byte < end) {
        const std::uint32_t lead = *byte;
        if (out > lastPair) {
            return kNotShort;
        }
        if (isAsciiText(lead)) {
            *out++ = static_cast<Unit>(lead);
            ++byte;
        } else if (lead >= 0xC0 && lead < 0xE0) {
            *out++ = static_cast<Unit>((lead & 0x1F) << 6 | trailing(1));
            byte += 2;
        } else if (lead >= 0xE0 && lead < 0xF0) {
            *out++ = static_cast<Unit>(lead << 12 | trailing(1) << 6 | trailing(2));
            byte += 3;
        } else if ((lead & 0xF1) == 0xF0) {
            if (!decodeFours(byte, end, out, lastPair)) {
                return kNotShort;
            }
        } else if (lead == 0) {
            break;
        } else {
            return kNotShort;
        }
    }
    // If no length is given, a zero within a sequence does not end the input. The conversion for long texts then reads
    // the rest.
    return byte > end && length < 0 ? kNotShort : static_cast<std::size_t>(out - start);
}

/// Encodes a short text. With `Surrogates::Paired`, if the last unit of the text is a high surrogate, the unit after
/// the end is read too. Returns the number of bytes. Returns `kNotShort` if `shortTextLength` does, if the capacity may
/// be too small, or, with `Surrogates::Paired`, if a surrogate is unpaired.
template <Surrogates Rule, class Unit>
std::size_t encodeShortText(const Unit* text, int length, unsigned char* out, std::size_t capacity) noexcept {
    const std::size_t units = shortTextLength(text, length);
    if (units == kNotShort || capacity < 4) {
        return kNotShort;
    }
    if (units <= capacity && copyShortAscii(text, units, out)) {
        return units;
    }
    const Unit* unit = text;
    const Unit* const end = text + units;
    const unsigned char* const start = out;
    const unsigned char* const lastFour = out + (capacity - 4);
    const auto put = [&](std::uint32_t bits) { *out++ = static_cast<unsigned char>(bits); };
    const auto putTrailing = [&](std::uint32_t bits) { put(0x80 | (bits & 0x3F)); };
    while (unit < end) {
        const std::uint32_t value{static_cast<std::uint16_t>(*unit)};
        if (out > lastFour) {
            return kNotShort;
        }
        if (isAsciiText(value)) {
            put(value);
        } else if (value - 0x80 < 0x800 - 0x80) {
            put(0xC0 | value >> 6);
            putTrailing(value);
            // cppcheck-suppress knownConditionTrueFalse; in unsigned arithmetic, zero minus 0x80 is large
        } else if (value == 0) {
            break;
        } else if (Rule == Surrogates::Single || !isSurrogate(value)) {
            put(0xE0 | value >> 12);
            putTrailing(value >> 6);
            putTrailing(value);
        } else if (isHighSurrogate(value) && isLowSurrogate(unit[1])) {
            const std::uint32_t code = pairedValue(value, static_cast<std::uint16_t>(*++unit));
            put(0xF0 | code >> 18);
            putTrailing(code >> 12);
            putTrailing(code >> 6);
            putTrailing(code);
        } else {
            return kNotShort;
        }
        ++unit;
    }
    return static_cast<std::size_t>(out - start);
}

}  // namespace vorel::algorithms
