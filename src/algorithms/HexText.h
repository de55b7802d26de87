/// \file
/// Hexadecimal text (RFC 4648, section 8) of either width. Bytes are encoded, and valid digits are decoded, in blocks.
/// Other pairs of characters are decoded one by one, by one of two rules for invalid characters. SSE2 is part of every
/// 64-bit x86 processor; for longer inputs, the AVX2 versions are called if the processor has AVX2 (see Processor.h).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "algorithms/Ascii.h"
#include "algorithms/Processor.h"
#include "algorithms/SimdBlocks.h"
#include "algorithms/Sse2.h"

namespace vorel::algorithms {

enum class HexCase {
    Upper,
    Lower,
};

/// Distance between the character after '9' and the first letter.
constexpr char hexLetterGap(HexCase letters) noexcept {
    return static_cast<char>((letters == HexCase::Upper ? 'A' : 'a') - '9' - 1);
}

/// The digit of a value from 0 to 15.
constexpr char hexDigit(unsigned int value, HexCase letters) noexcept {
    return static_cast<char>('0' + value + (value > 9 ? static_cast<unsigned int>(hexLetterGap(letters)) : 0));
}

/// The values of hexadecimal digits of either case, 0xFF for every other byte.
inline constexpr auto kHexDigitValues = [] {
    std::array<std::uint8_t, 256> values = {};
    for (unsigned int byte = 0; byte != 256; ++byte) {
        const unsigned int value = hexDigitValue(byte);
        values[byte] = value < 16 ? static_cast<std::uint8_t>(value) : 0xFF;
    }
    return values;
}();

inline unsigned int hexDigitOf(char c) noexcept {
    return kHexDigitValues[static_cast<unsigned char>(c)];
}

/// Writes two digits for each of `count` bytes and returns the end.
template <class T>
T* encodeHexScalar(const unsigned char* bytes, std::size_t count, HexCase letters, T* out) noexcept {
    for (const unsigned char* byte = bytes; byte != bytes + count; ++byte) {
        *out++ = static_cast<T>(hexDigit(*byte >> 4, letters));
        *out++ = static_cast<T>(hexDigit(*byte & 15u, letters));
    }
    return out;
}

/// Writes the digits of the first eight bytes of a register.
template <class T>
void encodeHexEight(__m128i bytes, HexCase letters, T* out) noexcept {
    const __m128i pairs = _mm_unpacklo_epi8(_mm_srli_epi16(bytes, 4), bytes);  // the upper four bits before the lower
    const __m128i values = _mm_and_si128(pairs, _mm_set1_epi8(15));
    const __m128i isLetter = _mm_cmpgt_epi8(values, _mm_set1_epi8(9));
    const __m128i gap = _mm_and_si128(isLetter, _mm_set1_epi8(hexLetterGap(letters)));
    storeCharacters(_mm_add_epi8(_mm_add_epi8(values, _mm_set1_epi8('0')), gap), out);
}

/// With AVX2: writes two digits for each of `count` bytes. `count` must be at least 16.
void encodeHexAvx2(const unsigned char* bytes, std::size_t count, HexCase letters, char* out) noexcept;
void encodeHexAvx2(const unsigned char* bytes, std::size_t count, HexCase letters, WideUnit* out) noexcept;

/// Writes two digits for each of `count` bytes and returns the end.
template <class T>
T* encodeHex(const unsigned char* bytes, std::size_t count, HexCase letters, T* out) noexcept {
    constexpr std::size_t kBlock = 8;
    constexpr std::size_t kMinAvx2 = 16;
    if (count < kBlock) {
        return encodeHexScalar(bytes, count, letters, out);
    }
    T* const end = out + 2 * count;
    if (count >= kMinAvx2 && Processor::usesAvx2()) {
        encodeHexAvx2(bytes, count, letters, out);
        return end;
    }
    const auto encodeEight = [&](std::size_t at) {
        encodeHexEight(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(bytes + at)), letters, out + 2 * at);
    };
    for (std::size_t at = 0; at + kBlock < count; at += kBlock) {
        encodeEight(at);
    }
    encodeEight(count - kBlock);  // some of these bytes may be encoded twice
    return end;
}

/// Decodes sixteen digits to eight bytes. Returns false and writes nothing if a character is not a digit.
template <class T>
bool decodeHexBlock(const T* text, unsigned char* out) noexcept {
    const __m128i block = loadBlock(text);
    const __m128i decimal = _mm_sub_epi8(block, _mm_set1_epi8('0'));
    const __m128i isDecimal = isAtMost(decimal, 9);
    const __m128i letter = _mm_sub_epi8(_mm_or_si128(block, _mm_set1_epi8(char{kCaseBit})), _mm_set1_epi8('a'));
    const __m128i isLetter = isAtMost(letter, 5);
    if (_mm_movemask_epi8(_mm_or_si128(isDecimal, isLetter)) != 0xFFFF) {
        return false;
    }
    const __m128i values = _mm_or_si128(_mm_and_si128(isDecimal, decimal),
                                        _mm_and_si128(isLetter, _mm_add_epi8(letter, _mm_set1_epi8(10))));
    // The first digit of each pair is in the lower byte of its 16 bits.
    const __m128i pairs = _mm_or_si128(_mm_slli_epi16(values, 4), _mm_srli_epi16(values, 8));
    const __m128i bytes = _mm_packus_epi16(_mm_and_si128(pairs, _mm_set1_epi16(0xFF)), _mm_setzero_si128());
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out), bytes);
    return true;
}

/// With AVX2: decodes at most `blocks` blocks of 32 digits. Stops at the first block that contains a character other
/// than a digit. Returns the number of blocks decoded.
std::size_t decodeHexAvx2(const char* text, std::size_t blocks, unsigned char* out) noexcept;
std::size_t decodeHexAvx2(const WideUnit* text, std::size_t blocks, unsigned char* out) noexcept;

/// Decodes at most `blocks` blocks of sixteen digits. Stops at the first block that contains a character other than a
/// digit. Returns the number of blocks decoded.
template <class T>
std::size_t decodeHex(const T* text, std::size_t blocks, unsigned char* out) noexcept {
    constexpr std::size_t kMinAvx2 = 4;  // for fewer blocks, the call takes longer than it saves
    std::size_t done = blocks >= kMinAvx2 && Processor::usesAvx2() ? 2 * decodeHexAvx2(text, blocks / 2, out) : 0;
    while (done < blocks && decodeHexBlock(text + 16 * done, out + 8 * done)) {
        ++done;
    }
    return done;
}

// ---- Whole texts ----------------------------------------------------------------------------------------------------

/// Decodes whole blocks of digits, and the remaining pairs of characters by `decodePair(first, second, byte)`. If
/// `decodePair` returns false, stops and returns false. If the number of characters is odd, the last character is
/// paired with the terminator.
template <class T, class DecodePair>
bool decodeHexPairs(const T* text, std::size_t length, unsigned char* out, DecodePair&& decodePair) {
    constexpr std::size_t kBlock = 16;  // digits
    for (std::size_t at = 0; at < length;) {
        const std::size_t blocks = decodeHex(text + at, (length - at) / kBlock, out + at / 2);
        at += blocks * kBlock;
        for (std::size_t end = at + kBlock; at < length && at < end; at += 2) {
            if (!decodePair(text[at], text[at + 1], out + at / 2)) {
                return false;
            }
        }
    }
    return true;
}

/// The value of a unit by the rule of the decoder that returns a status. The value is 0 to 15 for a digit, and by
/// design 3 to 9 for ':' to '@'. Any other character has a value outside 0 to 15. Only the lower eight bits of a unit
/// determine the value, except that a unit above 0xFF never counts as a lower-case letter.
template <class T>
int hexValueWithStatus(T unit) noexcept {
    const int character = foldToUpperCase(unit) & 0xFF;
    return character < '9' + 1 ? character - '0' : character - 'A' + 10;
}

/// Decodes up to the first invalid pair. Returns whether all pairs were valid.
template <class T>
bool decodeHexWithStatus(const T* text, std::size_t length, unsigned char* out) noexcept {
    return decodeHexPairs(text, length, out, [](T first, T second, unsigned char* byte) {
        const int high = hexValueWithStatus(first);
        const int low = hexValueWithStatus(second);
        if (high < 0 || high > 15 || low < 0 || low > 15) {
            return false;
        }
        *byte = static_cast<unsigned char>(high * 16 + low);
        return true;
    });
}

/// Decodes an even number of characters. Invalid characters count as 0.
template <class T>
void decodeHexLenient(const T* text, std::size_t length, unsigned char* out) noexcept {
    const auto valueOrZero = [](T c) {
        const unsigned int value = hexDigitValue(c);
        return value < 16 ? value : 0;
    };
    decodeHexPairs(text, length, out, [&](T first, T second, unsigned char* byte) {
        *byte = static_cast<unsigned char>(valueOrZero(first) << 4 | valueOrZero(second));
        return true;
    });
}

}  // namespace vorel::algorithms
