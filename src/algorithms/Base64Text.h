/// \file
/// Base64 (RFC 4648, section 4) in text of either width. The encoder writes padding; the decoder skips white space.
#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <type_traits>

#include "algorithms/PageReads.h"
#include "algorithms/Processor.h"
#include "algorithms/Sextets.h"
#include "algorithms/SimdBlocks.h"

namespace vorel::algorithms {

/// Table value of a character that has no Base64 value.
inline constexpr int kInvalidBase64 = -128;

/// Encodes `count` bytes: every three bytes become four characters. If one or two bytes remain, `pad` completes the
/// last four characters. `alphabet` has the characters of Base64. Returns the end of the text.
template <class T>
T* encodeBase64(const unsigned char* bytes, std::size_t count, const char* alphabet, char pad, T* out) noexcept {
    out = encodeAllGroups(bytes, count, {alphabet, SextetOrder::Base64}, out);
    if (const std::size_t rest = count % 3; rest != 0) {
        std::fill(out + rest - 3, out, static_cast<T>(pad));
    }
    return out;
}

/// Why the decoder stopped.
enum class Base64End {
    None,         ///< it did not stop
    Text,         ///< terminator at the start of a group, or padding as third or fourth character
    Invalid,      ///< character without a value, or terminator within a group
    NonByteUnit,  ///< unit above 255
};

/// Skips white space and returns the next character as a number. Does not move past the terminator or a unit above 255.
template <class T>
unsigned int consumeBase64Character(const T*& cursor) noexcept {
    while (*cursor == '\t' || *cursor == '\n' || *cursor == '\r' || *cursor == ' ') {
        ++cursor;
    }
    const unsigned int character = static_cast<std::make_unsigned_t<T>>(*cursor);
    cursor += character != 0 && character <= 0xFF ? 1 : 0;
    return character;
}

/// Writes the three bytes of four characters to `out`. If the third character is padding, writes only one byte. If only
/// the fourth character is padding, writes two bytes. `written` receives the number of bytes.
inline Base64End writeBase64Group(const unsigned int (&characters)[4], const int (&values)[4], char pad,
                                  unsigned char* out, std::size_t& written) noexcept {
    const auto sextet = [&](std::size_t at) { return static_cast<unsigned int>(values[at]); };
    const auto isPad = [&](std::size_t at) { return characters[at] == static_cast<unsigned char>(pad); };
    unsigned char bytes[3];
    decodeFour(sextet(0), sextet(1), sextet(2), sextet(3), bytes);
    written = isPad(2) ? 1 : isPad(3) ? 2 : 3;
    std::copy_n(bytes, written, out);
    return written < 3 ? Base64End::Text : Base64End::None;
}

/// Decodes a group of four characters to at most three bytes in `out`. `written` receives the number of bytes; if no
/// bytes are written, it is unchanged.
template <class T>
Base64End parseBase64Group(const T*& cursor, const int* table, char pad, unsigned char* out,
                           std::size_t& written) noexcept {
    unsigned int characters[4] = {};
    int values[4] = {};
    if (isInPage(cursor, sizeof(T) * std::size(values))) {
        // Most groups have no white space. White space and the terminator have no value, so the second loop reads the
        // groups that contain them.
        int all = 0;
        for (std::size_t at = 0; at < std::size(values); ++at) {
            characters[at] = static_cast<std::make_unsigned_t<T>>(cursor[at]);
            values[at] = characters[at] <= 0xFF ? table[characters[at]] : kInvalidBase64;
            all |= values[at];
        }
        if (all >= 0) {
            cursor += std::size(values);
            return writeBase64Group(characters, values, pad, out, written);
        }
    }
    for (std::size_t at = 0; at < std::size(values); ++at) {
        characters[at] = consumeBase64Character(cursor);
        if (characters[at] > 0xFF) {
            return Base64End::NonByteUnit;
        }
        if (at == 0 && characters[0] == 0) {
            return Base64End::Text;
        }
        values[at] = table[characters[at]];
    }
    if (std::find(std::begin(values), std::end(values), kInvalidBase64) != std::end(values)) {
        return Base64End::Invalid;
    }
    return writeBase64Group(characters, values, pad, out, written);
}

// ---- In steps -------------------------------------------------------------------------------------------------------

inline constexpr std::size_t kBase64BlockGroups = kSextetBlockCharacters / 4;
inline constexpr std::size_t kBase64Overhang = 8;  // zeros that AVX2 writes past the output of the last block

/// With AVX2: decodes at most `blocks` blocks of 32 characters. Stops before the first group of four characters that
/// has a character outside the alphabet, such as padding, and before a block that may extend into a page after the end
/// of the text. Returns the number of decoded groups. May write zeros after their bytes; they end at most eight bytes
/// after the space for the bytes of `blocks` blocks. The text ends with a zero and may be shorter than a block.
std::size_t decodeBase64Avx2(const char* text, std::size_t blocks, unsigned char* out) noexcept;
std::size_t decodeBase64Avx2(const WideUnit* text, std::size_t blocks, unsigned char* out) noexcept;

/// Result of one decoder step.
struct Base64Step {
    std::size_t written;
    Base64End end;
};

/// Output capacity that a step needs, in bytes.
inline constexpr std::size_t kBase64StepCapacity = kSextetBlockBytes + kBase64Overhang;

/// Decodes text from `cursor` on. Writes at least one block (24 bytes), unless the decoder stops; then `end` is the
/// reason. Moves `cursor` past the characters read. If the decoder does not stop, the step writes a multiple of 24
/// bytes. Zeros may be written after the decoded bytes. `capacity` is the size of `out` in bytes, at least
/// `kBase64StepCapacity`. The text ends with a zero. `table` holds the Base64 value of each of the 256 characters: 0
/// for `pad`, and `kInvalidBase64` for characters without a value.
template <class T>
Base64Step decodeBase64Step(const T*& cursor, const int* table, char pad, unsigned char* out,
                            std::size_t capacity) noexcept {
    const std::size_t blocks = (capacity - kBase64Overhang) / kSextetBlockBytes;
    std::size_t groups = Processor::usesAvx2() ? decodeBase64Avx2(cursor, blocks, out) : 0;
    cursor += 4 * groups;
    std::size_t done = 3 * groups;
    if (groups != 0 && *cursor == 0) {
        return {done, Base64End::Text};
    }
    if (groups == blocks * kBase64BlockGroups) {
        return {done, Base64End::None};
    }
    // Decodes the rest of the current block. The AVX2 version may have decoded the first groups of this block.
    do {
        std::size_t written = 0;
        const Base64End end = parseBase64Group(cursor, table, pad, out + done, written);
        done += written;
        if (end != Base64End::None) {
            return {done, end};
        }
        ++groups;
    } while (groups % kBase64BlockGroups != 0);
    return {done, Base64End::None};
}

}  // namespace vorel::algorithms
