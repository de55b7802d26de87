/// \file
/// Converts groups of three bytes to four characters of an alphabet of 64 characters, and back. Each character encodes
/// six bits. If the processor has AVX2 (see Processor.h), many groups are converted at once. Short texts, and groups
/// that are left, are converted group by group. Base64 (RFC 4648, section 4) and Daylight share this code. Their
/// decoders for AVX2 are separate, because their rules for invalid characters differ: see Base64Text.h and
/// DaylightText.h.
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
        // NOLINTNEXTLINE(clang-analyzer-core.NullDereference): if `count` is not 0, there are bytes
        encodeThree(bytes[0], bytes[1], bytes[2], alphabet, out);
    }
    return out;
}

/// Writes the three bytes of four values. The values must be below 64.
constexpr void decodeFour(unsigned int a, unsigned int b, unsigned int c, unsigned int d, unsigned char* out) noexcept {
    out[0] = static_cast<unsigned char>(a << 2 | b >> 4);
    out[1] = static_cast<unsigned char>(b << 4 | c >> 2);
    out[2] = static_cast<unsigned char>(c << 6 | d);
}

/// The values of the characters below 128. A character without a value has `kNone`.
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

// ---- Encoding in blocks ---------------------------------------------------------------------------------------------

/// The order of the characters of an alphabet.
enum class SextetOrder {
    Base64,    ///< A to Z, a to z, 0 to 9, and two other characters
    Daylight,  ///< two other characters, 0 to 9, A to Z, a to z (the same range lengths in reverse order)
};

struct SextetAlphabet {
    const char* characters;
    SextetOrder order;
};

/// The index of the range that a value belongs to, from 0 to 13. All values of a range have the same distance to their
/// characters.
constexpr unsigned int sextetRange(SextetOrder order, unsigned int value) noexcept {
    const unsigned int position = order == SextetOrder::Base64 ? value : 63 - value;
    return (position > 51 ? position - 51 : 0) + (position > 25 ? 1 : 0);
}

/// The character minus the value, for each range.
struct SextetOffsets {
    std::uint8_t offsets[16];
};

constexpr SextetOffsets sextetOffsets(const SextetAlphabet& alphabet) noexcept {
    SextetOffsets table = {};
    for (unsigned int value = 0; value != 64; ++value) {
        table.offsets[sextetRange(alphabet.order, value)] =
            static_cast<std::uint8_t>(static_cast<unsigned char>(alphabet.characters[value]) - value);
    }
    return table;
}

/// With AVX2: encodes the whole groups of three among `count` bytes. If the whole groups have fewer than
/// `kMinSextetBytes` bytes, encodes nothing. Returns the number of bytes encoded. Four characters are written for each
/// group.
std::size_t encodeSextetsAvx2(const unsigned char* bytes, std::size_t count, SextetOrder order, char* out) noexcept;
std::size_t encodeSextetsAvx2(const unsigned char* bytes, std::size_t count, SextetOrder order, WideUnit* out) noexcept;

inline constexpr std::size_t kMinSextetBytes = 12;

// ---- Whole texts ----------------------------------------------------------------------------------------------------

/// Encodes all bytes. Missing bytes in the last group count as zeros. Returns the end of the text.
template <class T>
T* encodeAllGroups(const unsigned char* bytes, std::size_t count, const SextetAlphabet& alphabet, T* out) noexcept {
    const std::size_t done =
        Processor::usesAvx2() && count >= kMinSextetBytes ? encodeSextetsAvx2(bytes, count, alphabet.order, out) : 0;
    out = encodeGroups(bytes + done, count - done, alphabet.characters, out + done / 3 * 4);
    if (const std::size_t rest = count % 3; rest != 0) {
        const unsigned char* const tail = bytes + (count - rest);
        encodeThree(tail[0], rest == 2 ? tail[1] : 0u, 0u, alphabet.characters, out);
        out += 4;
    }
    return out;
}

inline constexpr std::size_t kSextetBlockCharacters = 32;  // per block of the decoders
inline constexpr std::size_t kSextetBlockBytes = 24;

}  // namespace vorel::algorithms
