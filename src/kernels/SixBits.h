/// \file
/// Three bytes as four characters of an alphabet of 64, six bits each, and back: what Base64 and Daylight share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vorel::kernels {

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

/// Encodes the whole groups of three among `count` bytes, and returns the end of the text.
template <class T>
constexpr T* encodeGroups(const unsigned char* bytes, std::size_t count, const char* alphabet, T* out) noexcept {
    for (; count >= 3; count -= 3, bytes += 3, out += 4) {
        encodeThree(bytes[0], bytes[1], bytes[2], alphabet, out);
    }
    return out;
}

/// Writes the three bytes of four values of six bits. What is above six bits is cut off.
constexpr void decodeFour(unsigned int a, unsigned int b, unsigned int c, unsigned int d, unsigned char* out) noexcept {
    out[0] = static_cast<unsigned char>(a << 2 | b >> 4);
    out[1] = static_cast<unsigned char>(b << 4 | c >> 2);
    out[2] = static_cast<unsigned char>(c << 6 | d);
}

/// The values of the characters below 128, for decoding many at a time: a character that is plain, and needs no second
/// look, has its value and the bit `kPlain`; every other is 0.
struct SixBitValues {
    static constexpr std::uint8_t kPlain = 0x40;

    std::uint8_t values[128] = {};
};

constexpr SixBitValues sixBitValues(std::string_view alphabet) noexcept {
    SixBitValues table;
    for (std::size_t value = 0; value < alphabet.size(); ++value) {
        table.values[static_cast<unsigned char>(alphabet[value])] =
            static_cast<std::uint8_t>(value | SixBitValues::kPlain);
    }
    return table;
}

inline constexpr SixBitValues kBase64Values = sixBitValues(kBase64Alphabet);

/// In Daylight every character has a value: the comma that of '+', and one outside of the alphabet that of '.', which
/// is 0. That is meant.
inline constexpr SixBitValues kDaylightValues = [] {
    SixBitValues table = sixBitValues(kDaylightAlphabet);
    for (std::uint8_t& value : table.values) {
        value |= SixBitValues::kPlain;
    }
    table.values[','] = table.values['+'];
    return table;
}();

}  // namespace vorel::kernels
