/// \file
/// Reference implementations of the binary-to-text encodings: Base64 and Daylight bit by bit, and hexadecimal digits.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace test {

using Bytes = std::vector<unsigned char>;

inline constexpr std::string_view kBase64Characters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
inline constexpr std::string_view kDaylightCharacters =
    ".+0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";

/// The bits of the bytes as the characters '0' and '1', the highest bit of each byte first.
inline std::string bitsOf(const Bytes& bytes) {
    std::string bits;
    for (const unsigned char byte : bytes) {
        for (int bit = 7; bit >= 0; --bit) {
            bits += (byte >> bit & 1) != 0 ? '1' : '0';
        }
    }
    return bits;
}

/// One character for each group of six bits. The last group is padded with zero bits.
inline std::string charactersOf(std::string bits, std::string_view alphabet) {
    std::string text;
    bits.resize((bits.size() + 5) / 6 * 6, '0');
    for (std::size_t at = 0; at < bits.size(); at += 6) {
        text += alphabet[std::stoul(bits.substr(at, 6), nullptr, 2)];
    }
    return text;
}

inline std::string base64Of(const Bytes& bytes) {
    std::string text = charactersOf(bitsOf(bytes), kBase64Characters);
    while (text.size() % 4 != 0) {
        text += '=';
    }
    return text;
}

inline std::string daylightOf(const Bytes& bytes) {
    const std::size_t rest = bytes.size() % 3;
    Bytes filled = bytes;
    filled.resize((bytes.size() + 2) / 3 * 3);
    return charactersOf(bitsOf(filled), kDaylightCharacters) + std::to_string(rest == 0 ? 3 : rest);
}

/// The index of a unit in an alphabet, or npos. In the Daylight alphabet, the comma is equivalent to '+'.
inline std::size_t valueIn(std::string_view alphabet, unsigned int unit) {
    const unsigned int character = alphabet == kDaylightCharacters && unit == ',' ? '+' : unit;
    return character < 128 ? alphabet.find(static_cast<char>(character)) : std::string_view::npos;
}

/// Concatenates six bits per unit and returns the complete bytes. A unit outside the alphabet counts as 0.
inline Bytes bytesOfCharacters(const std::vector<unsigned int>& units, std::string_view alphabet) {
    Bytes bytes;
    std::uint64_t bits = 0;
    unsigned int count = 0;
    for (const unsigned int unit : units) {
        const std::size_t value = valueIn(alphabet, unit);
        bits = bits << 6 | (value == std::string_view::npos ? 0 : value);
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes.push_back(static_cast<unsigned char>(bits >> count));
        }
    }
    return bytes;
}

/// The outcome of a decoder: bytes, return value, and whether it threw because of a unit above 255.
struct Decoding {
    Bytes bytes;
    int result = 0;
    bool threw = false;
};

/// Removes white space, then decodes four characters at a time. `units` does not include the terminator.
inline Decoding fromBase64(const std::vector<unsigned int>& units) {
    Decoding decoding;
    std::vector<unsigned int> rest;
    for (const unsigned int unit : units) {
        if (unit != '\t' && unit != '\n' && unit != '\r' && unit != ' ') {
            rest.push_back(unit);
        }
    }
    for (std::size_t at = 0; at < rest.size(); at += 4) {
        std::string bits;
        bool valid = true;
        for (std::size_t character = at; character < at + 4; ++character) {
            const unsigned int unit = character < rest.size() ? rest[character] : 0;
            if (unit > 255) {
                decoding.threw = true;
                return decoding;
            }
            const std::size_t value = unit == '=' ? 0 : kBase64Characters.find(static_cast<char>(unit));
            valid = valid && unit < 128 && value != std::string_view::npos && unit != 0;
            for (int bit = 5; bit >= 0; --bit) {
                bits += (value >> bit & 1) != 0 ? '1' : '0';
            }
        }
        if (!valid) {
            decoding.result = 1;
            return decoding;
        }
        const std::size_t count = rest[at + 2] == '=' ? 1 : rest[at + 3] == '=' ? 2 : 3;
        for (std::size_t byte = 0; byte < count; ++byte) {
            decoding.bytes.push_back(static_cast<unsigned char>(std::stoul(bits.substr(8 * byte, 8), nullptr, 2)));
        }
        if (count < 3) {
            return decoding;
        }
    }
    return decoding;
}

inline std::string hexOf(const Bytes& bytes, bool upperCase) {
    const std::string_view digits = upperCase ? "0123456789ABCDEF" : "0123456789abcdef";
    std::string text;
    for (const unsigned char byte : bytes) {
        text += digits[byte / 16u];
        text += digits[byte % 16u];
    }
    return text;
}

}  // namespace test
