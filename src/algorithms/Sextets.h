/// \file
/// Converts three bytes to four characters of an alphabet of 64, six bits each, and back: with AVX2 where the processor
/// has it (see Processor.h), and group by group. Base64 (RFC 4648, section 4) and Daylight share it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "algorithms/Processor.h"
#include "algorithms/SimdBlocks.h"

namespace vorel::algorithms {

inline constexpr std::string_view kBase64Alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
inline constexpr std::string_view kDaylightAlphabet =
    ".+0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";

/// Writes the four characters of three bytes.
template <class T>
constexpr void encodeThree(unsigned int a, unsigned int b, unsigned int c, const char* alphabet, T* out) noexcept {
    out[0] = static_cast<T>(alphabet[a >> 2]);
    out[1] = static_cast<T>(alphabet[(a & 3) << 4 | b >> 4]);
    out[2] = static_cast<T>(alphabet[(b & 15) << 2 | c >> 6]);
    out[3] = static_cast<T>(alphabet[c & 63]);
}

/// Encodes the whole groups of three among `count` bytes. Returns the end of the text.
template <class T>
constexpr T* encodeGroups(const unsigned char* bytes, std::size_t count, const char* alphabet, T* out) noexcept {
    for (; count >= 3; count -= 3, bytes += 3, out += 4) {
        // NOLINTNEXTLINE(clang-analyzer-core.NullDereference): where there is a count, there are bytes
        encodeThree(bytes[0], bytes[1], bytes[2], alphabet, out);
    }
    return out;
}

/// Writes the three bytes of four six-bit values. Higher bits are dropped.
constexpr void decodeFour(unsigned int a, unsigned int b, unsigned int c, unsigned int d, unsigned char* out) noexcept {
    out[0] = static_cast<unsigned char>(a << 2 | b >> 4);
    out[1] = static_cast<unsigned char>(b << 4 | c >> 2);
    out[2] = static_cast<unsigned char>(c << 6 | d);
}

/// The values of the characters below 128, `kNone` if they have none.
struct SextetValues {
    static constexpr std::uint8_t kNone = 0xFF;

    std::uint8_t values[128];
};

constexpr SextetValues sextetValues(std::string_view alphabet) noexcept {
    SextetValues table = {};
    for (std::uint8_t& value : table.values) {
        value = SextetValues::kNone;
    }
    for (std::size_t value = 0; value != alphabet.size(); ++value) {
        table.values[static_cast<unsigned char>(alphabet[value])] = static_cast<std::uint8_t>(value);
    }
    return table;
}

inline constexpr SextetValues kBase64Values = sextetValues(kBase64Alphabet);

/// In Daylight the comma has the value of '+', by design.
inline constexpr SextetValues kDaylightValues = [] {
    SextetValues table = sextetValues(kDaylightAlphabet);
    table.values[static_cast<unsigned char>(',')] = table.values[static_cast<unsigned char>('+')];
    return table;
}();

/// The same table for lookups of many characters at once: the upper four bits of a character select a row, the lower
/// four a column. In all rows but one, values increase with the characters. See Wojciech Muła, "SIMDized check which
/// bytes are in a set".
struct SextetRows {
    static constexpr unsigned int kIrregularRow = 2;  // ! to /

    std::uint8_t rowsOfColumn[16];     ///< one bit for each row in which the column has a value
    std::uint8_t offsetOfRow[16];      ///< the value minus the character
    std::uint8_t irregularOffset[16];  ///< the same for each column of the irregular row
};

constexpr SextetRows sextetRows(const SextetValues& table) noexcept {
    SextetRows rows = {};
    for (unsigned int character = 0; character != 128; ++character) {
        if (table.values[character] == SextetValues::kNone) {
            continue;
        }
        const unsigned int row = character / 16;
        const unsigned int column = character % 16;
        const auto offset = static_cast<std::uint8_t>(table.values[character] - character);
        rows.rowsOfColumn[column] = static_cast<std::uint8_t>(rows.rowsOfColumn[column] | 1u << row);
        (row == SextetRows::kIrregularRow ? rows.irregularOffset[column] : rows.offsetOfRow[row]) = offset;
    }
    return rows;
}

inline constexpr SextetRows kBase64Rows = sextetRows(kBase64Values);
inline constexpr SextetRows kDaylightRows = sextetRows(kDaylightValues);

/// How a character without a value is handled.
enum class InvalidCharacters {
    Stop,    ///< the block with it is not decoded
    AsZero,  ///< it counts as 0
};

// ---- Blocks
// ------------------------------------------------------------------------------------------------------------

/// With AVX2: encodes groups of three among `count` bytes while whole blocks can be read. Returns the number of bytes
/// encoded; four characters are written for each three of them.
std::size_t encodeSextetsAvx2(const unsigned char* bytes, std::size_t count, const char* alphabet, char* out) noexcept;
std::size_t encodeSextetsAvx2(const unsigned char* bytes, std::size_t count, const char* alphabet,
                              WideUnit* out) noexcept;

/// With AVX2: decodes at most `blocks` blocks of 32 characters. Stops at the first block that cannot be read without
/// touching the page after the end of the text, and, with `InvalidCharacters::Stop`, at a block with an invalid
/// character. Returns the number of blocks decoded. Eight more bytes are written after the 24 bytes of the last block.
/// The text ends with a zero and may be shorter than a block.
std::size_t decodeSextetsAvx2(const char* text, std::size_t blocks, const SextetRows& rows, InvalidCharacters rule,
                              unsigned char* out) noexcept;
std::size_t decodeSextetsAvx2(const WideUnit* text, std::size_t blocks, const SextetRows& rows, InvalidCharacters rule,
                              unsigned char* out) noexcept;

/// Encodes the whole groups of three among `count` bytes. Returns the end of the text.
template <class T>
T* encodeWholeGroups(const unsigned char* bytes, std::size_t count, const char* alphabet, T* out) noexcept {
    const std::size_t done = Processor::usesAvx2() ? encodeSextetsAvx2(bytes, count, alphabet, out) : 0;
    return encodeGroups(bytes + done, count - done, alphabet, out + done / 3 * 4);
}

/// Encodes all bytes, with zeros for those missing in the last group. Returns the end of the text.
template <class T>
T* encodeAllGroups(const unsigned char* bytes, std::size_t count, const char* alphabet, T* out) noexcept {
    out = encodeWholeGroups(bytes, count, alphabet, out);
    if (const std::size_t rest = count % 3; rest != 0) {
        const unsigned char* const tail = bytes + (count - rest);
        encodeThree(tail[0], rest == 2 ? tail[1] : 0u, 0u, alphabet, out);
        out += 4;
    }
    return out;
}

inline constexpr std::size_t kSextetBlockCharacters = 32;  // per block
inline constexpr std::size_t kSextetBlockBytes = 24;
inline constexpr std::size_t kSextetOverhang = 8;  // bytes written past the last block

/// Decodes whole blocks as far as the text and `capacity` allow. Returns their number.
template <class T>
std::size_t decodeWholeBlocks(const T* text, const SextetRows& rows, InvalidCharacters rule, unsigned char* out,
                              std::size_t capacity) noexcept {
    if (!Processor::usesAvx2() || capacity < kSextetBlockBytes + kSextetOverhang) {
        return 0;
    }
    return decodeSextetsAvx2(text, (capacity - kSextetOverhang) / kSextetBlockBytes, rows, rule, out);
}

}  // namespace vorel::algorithms
