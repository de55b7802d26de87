/// \file
/// Base64 (RFC 4648, section 4) of either width: encodes with padding, decodes and skips white space anywhere.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <type_traits>

#include "algorithms/Sextets.h"

namespace vorel::algorithms {

/// Table value of a character that has no Base64 value.
inline constexpr int kInvalidBase64 = -128;

/// Encodes `count` bytes as four characters for each group of three, the last group padded. Returns the end.
template <class T>
T* encodeBase64(const unsigned char* bytes, std::size_t count, const char* alphabet, char pad, T* out) noexcept {
    out = encodeAllGroups(bytes, count, alphabet, out);
    if (const std::size_t rest = count % 3; rest != 0) {
        std::fill(out + rest - 3, out, static_cast<T>(pad));
    }
    return out;
}

/// Why the decoder stopped.
enum class Base64End {
    None,         ///< it did not stop
    Text,         ///< terminator or padding
    Invalid,      ///< character without a value
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

/// Decodes a group of four characters into `out`, which has space for three bytes. `written` stays unchanged if the
/// group yields none.
template <class T>
Base64End parseBase64Group(const T*& cursor, const int* table, char pad, unsigned char* out,
                           std::size_t& written) noexcept {
    unsigned int characters[4] = {};
    int values[4] = {};
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
    const auto sextets = [&](std::size_t at) { return static_cast<unsigned int>(values[at]); };
    unsigned char bytes[3];
    decodeFour(sextets(0), sextets(1), sextets(2), sextets(3), bytes);
    const auto isPad = [&](std::size_t at) { return characters[at] == static_cast<unsigned char>(pad); };
    written = isPad(2) ? 1 : isPad(3) ? 2 : 3;
    std::copy_n(bytes, written, out);
    return written < 3 ? Base64End::Text : Base64End::None;
}

/// Result of one decoder step.
struct Base64Step {
    std::size_t written;
    Base64End end;
};

/// Output capacity that a step needs, in bytes.
inline constexpr std::size_t kBase64StepCapacity = kSextetBlockBytes + kSextetOverhang;

/// Decodes whole blocks, or otherwise a few groups, from `cursor` and moves it past what was read. Up to eight zeros
/// may be written after the decoded bytes. The text ends with a zero. `table` holds the values of all 256 characters.
template <class T>
Base64Step decodeBase64Step(const T*& cursor, const int* table, char pad, unsigned char* out,
                            std::size_t capacity) noexcept {
    const std::size_t blocks = decodeWholeBlocks(cursor, kBase64Rows, InvalidCharacters::Stop, out, capacity);
    if (blocks != 0) {
        cursor += blocks * kSextetBlockCharacters;
        std::memset(out + blocks * kSextetBlockBytes, 0, kSextetOverhang);
        return {blocks * kSextetBlockBytes, *cursor == 0 ? Base64End::Text : Base64End::None};
    }
    constexpr std::size_t kGroupsBetweenBlocks = 8;
    static_assert(3 * kGroupsBetweenBlocks <= kBase64StepCapacity);
    std::size_t done = 0;
    for (std::size_t group = 0; group < kGroupsBetweenBlocks; ++group) {
        std::size_t written = 0;
        const Base64End end = parseBase64Group(cursor, table, pad, out + done, written);
        done += written;
        if (end != Base64End::None) {
            return {done, end};
        }
    }
    return {done, Base64End::None};
}

}  // namespace vorel::algorithms
