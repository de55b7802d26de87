/// \file
/// Base64 of either width: bytes as text with padding, and back with white space anywhere in between.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <type_traits>

#include "kernels/SixBitBlocks.h"
#include "kernels/SixBits.h"

namespace vorel::kernels {

/// What the table of a decoder has for a character without a value.
inline constexpr int kInvalidBase64 = -128;

/// Writes the characters of `count` bytes, four for each three of them and four for what is left, and returns the end.
template <class T>
T* encodeBase64(const unsigned char* bytes, std::size_t count, const char* alphabet, char pad, T* out) noexcept {
    out = encodeAllGroups(bytes, count, alphabet, out);
    if (const std::size_t rest = count % 3; rest != 0) {
        std::fill(out + rest - 3, out, static_cast<T>(pad));
    }
    return out;
}

/// Why a decoder stopped.
enum class Base64End {
    None,     ///< it did not
    Text,     ///< the terminator, or padding
    Invalid,  ///< a character without a value
    Foreign,  ///< a unit above 255
};

/// The next character behind white space as a number. The terminator and a unit above 255 are not passed.
template <class T>
unsigned int takeBase64Character(const T*& place) noexcept {
    while (*place == '\t' || *place == '\n' || *place == '\r' || *place == ' ') {
        ++place;
    }
    const unsigned int character = static_cast<std::make_unsigned_t<T>>(*place);
    place += character != 0 && character <= 0xFF ? 1 : 0;
    return character;
}

/// Takes a group of four characters, and writes its bytes at `out`, which has room for three; without any, `written`
/// stays as it is.
template <class T>
Base64End takeBase64Group(const T*& place, const int* table, char pad, unsigned char* out,
                          std::size_t& written) noexcept {
    unsigned int characters[4] = {};
    int values[4] = {};
    for (std::size_t at = 0; at < std::size(values); ++at) {
        characters[at] = takeBase64Character(place);
        if (characters[at] > 0xFF) {
            return Base64End::Foreign;
        }
        if (at == 0 && characters[0] == 0) {
            return Base64End::Text;
        }
        values[at] = table[characters[at]];
    }
    if (std::find(std::begin(values), std::end(values), kInvalidBase64) != std::end(values)) {
        return Base64End::Invalid;
    }
    const auto sixBits = [&](std::size_t at) { return static_cast<unsigned int>(values[at]); };
    unsigned char bytes[3];
    decodeFour(sixBits(0), sixBits(1), sixBits(2), sixBits(3), bytes);
    const auto isPad = [&](std::size_t at) { return characters[at] == static_cast<unsigned char>(pad); };
    written = isPad(2) ? 1 : isPad(3) ? 2 : 3;
    std::copy_n(bytes, written, out);
    return written < 3 ? Base64End::Text : Base64End::None;
}

/// What a step of a decoder did.
struct Base64Step {
    std::size_t written;
    Base64End end;
};

/// The room that a step needs.
inline constexpr std::size_t kBase64StepRoom = kSixBitBytes + kSixBitOverhang;

/// Decodes whole blocks, or else a few groups, from `place` on, and moves it behind what it read. Behind the bytes that
/// count a few zeros may be written. The text ends in a zero; `table` has the values of all 256 characters.
template <class T>
Base64Step decodeBase64Step(const T*& place, const int* table, char pad, unsigned char* out,
                            std::size_t room) noexcept {
    const std::size_t blocks = decodeWholeBlocks(place, kBase64Rows, Strangers::Stop, out, room);
    if (blocks != 0) {
        place += blocks * kSixBitCharacters;
        std::memset(out + blocks * kSixBitBytes, 0, kSixBitOverhang);
        return {blocks * kSixBitBytes, *place == 0 ? Base64End::Text : Base64End::None};
    }
    constexpr std::size_t kGroupsBetweenBlocks = 8;
    static_assert(3 * kGroupsBetweenBlocks <= kBase64StepRoom);
    std::size_t done = 0;
    for (std::size_t group = 0; group < kGroupsBetweenBlocks; ++group) {
        std::size_t written = 0;
        const Base64End end = takeBase64Group(place, table, pad, out + done, written);
        done += written;
        if (end != Base64End::None) {
            return {done, end};
        }
    }
    return {done, Base64End::None};
}

}  // namespace vorel::kernels
