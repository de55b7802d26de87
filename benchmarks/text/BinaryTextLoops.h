/// \file
/// Peers for Base64 and hexadecimal text: simple table loops. All functions are static. Otherwise the linker could
/// replace all copies of a function by the copy that was compiled for AVX2.
#pragma once

#include <array>
#include <cstddef>

namespace bench {

inline constexpr char kBase64Alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

inline constexpr auto kBase64Values = [] {
    std::array<int, 256> values = {};
    for (int& value : values) {
        value = -1;
    }
    for (int value = 0; value < 64; ++value) {
        values[static_cast<unsigned char>(kBase64Alphabet[value])] = value;
    }
    values['='] = 0;
    return values;
}();

inline constexpr auto kHexValues = [] {
    std::array<unsigned char, 256> values = {};
    for (unsigned char value = 0; value < 16; ++value) {
        values[static_cast<unsigned char>("0123456789ABCDEF"[value])] = value;
        values[static_cast<unsigned char>("0123456789abcdef"[value])] = value;
    }
    return values;
}();

/// Encodes `count` bytes. Returns the number of characters written.
template <class T>
static inline std::size_t encodeBase64(const unsigned char* bytes, std::size_t count, T* out) {
    const T* const start = out;
    for (; count >= 3; count -= 3, bytes += 3, out += 4) {
        out[0] = static_cast<T>(kBase64Alphabet[bytes[0] >> 2]);
        out[1] = static_cast<T>(kBase64Alphabet[(bytes[0] & 3) << 4 | bytes[1] >> 4]);
        out[2] = static_cast<T>(kBase64Alphabet[(bytes[1] & 15) << 2 | bytes[2] >> 6]);
        out[3] = static_cast<T>(kBase64Alphabet[bytes[2] & 63]);
    }
    if (count != 0) {
        const unsigned int second = count == 2 ? bytes[1] : 0u;
        out[0] = static_cast<T>(kBase64Alphabet[bytes[0] >> 2]);
        out[1] = static_cast<T>(kBase64Alphabet[(bytes[0] & 3u) << 4 | second >> 4]);
        out[2] = static_cast<T>(count == 2 ? kBase64Alphabet[(second & 15) << 2] : '=');
        out[3] = static_cast<T>('=');
        out += 4;
    }
    return static_cast<std::size_t>(out - start);
}

/// Decodes `length` characters; `length` must be a multiple of four. Uses only the low byte of a wide character. Stops
/// before a group of four characters that contains an invalid character, and after a group that ends in '='. Returns
/// the number of bytes decoded. A group that ends in "==" has one byte, but two bytes are written.
template <class T>
static inline std::size_t decodeBase64(const T* text, std::size_t length, unsigned char* out) {
    const unsigned char* const start = out;
    for (const T* const end = text + length; text != end; text += 4, out += 3) {
        const int a = kBase64Values[static_cast<unsigned char>(text[0])];
        const int b = kBase64Values[static_cast<unsigned char>(text[1])];
        const int c = kBase64Values[static_cast<unsigned char>(text[2])];
        const int d = kBase64Values[static_cast<unsigned char>(text[3])];
        if ((a | b | c | d) < 0) {
            break;
        }
        out[0] = static_cast<unsigned char>(a << 2 | b >> 4);
        if (text[3] == '=') {
            out[1] = static_cast<unsigned char>(b << 4 | c >> 2);
            return static_cast<std::size_t>(out - start) + (text[2] == '=' ? 1 : 2);
        }
        out[1] = static_cast<unsigned char>(b << 4 | c >> 2);
        out[2] = static_cast<unsigned char>(c << 6 | d);
    }
    return static_cast<std::size_t>(out - start);
}

template <class T>
static inline std::size_t encodeHex(const unsigned char* bytes, std::size_t count, T* out) {
    for (std::size_t at = 0; at < count; ++at) {
        out[2 * at] = static_cast<T>("0123456789ABCDEF"[bytes[at] >> 4]);
        out[2 * at + 1] = static_cast<T>("0123456789ABCDEF"[bytes[at] & 15]);
    }
    return 2 * count;
}

template <class T>
static inline std::size_t decodeHex(const T* text, std::size_t length, unsigned char* out) {
    for (std::size_t at = 0; at < length / 2; ++at) {
        out[at] = static_cast<unsigned char>(kHexValues[static_cast<unsigned char>(text[2 * at])] << 4 |
                                             kHexValues[static_cast<unsigned char>(text[2 * at + 1])]);
    }
    return length / 2;
}

}  // namespace bench
