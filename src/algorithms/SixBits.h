/// \file
/// Converts three bytes to four characters of an alphabet of 64, six bits each, and back. Base64 (RFC 4648, section 4)
/// and Daylight share it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

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
struct SixBitValues {
    static constexpr std::uint8_t kNone = 0xFF;

    std::uint8_t values[128];
};

constexpr SixBitValues sixBitValues(std::string_view alphabet) noexcept {
    SixBitValues table = {};
    for (std::uint8_t& value : table.values) {
        value = SixBitValues::kNone;
    }
    for (std::size_t value = 0; value != alphabet.size(); ++value) {
        table.values[static_cast<unsigned char>(alphabet[value])] = static_cast<std::uint8_t>(value);
    }
    return table;
}

inline constexpr SixBitValues kBase64Values = sixBitValues(kBase64Alphabet);

/// In Daylight the comma has the value of '+', by design.
inline constexpr SixBitValues kDaylightValues = [] {
    SixBitValues table = sixBitValues(kDaylightAlphabet);
    table.values[static_cast<unsigned char>(',')] = table.values[static_cast<unsigned char>('+')];
    return table;
}();

/// The same table for lookups of many characters at once: the upper four bits of a character select a row, the lower
/// four a column. In all rows but one, values increase with the characters. See Wojciech Muła, "SIMDized check which
/// bytes are in a set".
struct SixBitRows {
    static constexpr unsigned int kIrregularRow = 2;  // ! to /

    std::uint8_t rowsOfColumn[16];     ///< one bit for each row in which the column has a value
    std::uint8_t offsetOfRow[16];      ///< the value minus the character
    std::uint8_t irregularOffset[16];  ///< the same for each column of the irregular row
};

constexpr SixBitRows sixBitRows(const SixBitValues& table) noexcept {
    SixBitRows rows = {};
    for (unsigned int character = 0; character != 128; ++character) {
        if (table.values[character] == SixBitValues::kNone) {
            continue;
        }
        const unsigned int row = character / 16;
        const unsigned int column = character % 16;
        const auto offset = static_cast<std::uint8_t>(table.values[character] - character);
        rows.rowsOfColumn[column] = static_cast<std::uint8_t>(rows.rowsOfColumn[column] | 1u << row);
        (row == SixBitRows::kIrregularRow ? rows.irregularOffset[column] : rows.offsetOfRow[row]) = offset;
    }
    return rows;
}

inline constexpr SixBitRows kBase64Rows = sixBitRows(kBase64Values);
inline constexpr SixBitRows kDaylightRows = sixBitRows(kDaylightValues);

/// How a character without a value is handled.
enum class InvalidCharacters {
    Stop,    ///< the block with it is not decoded
    AsZero,  ///< it counts as 0
};

}  // namespace vorel::algorithms
