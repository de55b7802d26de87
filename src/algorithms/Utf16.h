/// \file
/// UTF-16 (RFC 2781): surrogates, surrogate pairs, and units as bytes in either byte order. The bytes may begin at an
/// odd address, so they are never accessed through a pointer to units.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vorel::algorithms {

inline constexpr std::uint32_t kFirstHighSurrogate = 0xD800;
inline constexpr std::uint32_t kFirstLowSurrogate = 0xDC00;

/// The bits that distinguish surrogates from other units, and high surrogates from low surrogates.
inline constexpr std::uint32_t kSurrogateMask = 0xF800;
inline constexpr std::uint32_t kSurrogateKindMask = 0xFC00;

/// The bits of a value that the low surrogate contains.
inline constexpr std::uint32_t kLowSurrogateBits = 0x3FF;

/// The first value that needs a pair.
inline constexpr std::uint32_t kFirstPairedValue = 0x10000;

/// The difference between a high surrogate and the upper bits of the value that the pair encodes.
inline constexpr std::uint32_t kHighSurrogateOffset = kFirstHighSurrogate - (kFirstPairedValue >> 10);

/// Replaces a surrogate that is not part of a pair.
inline constexpr std::uint32_t kLoneSurrogateReplacement = '?';

template <class Unit>
constexpr bool isSurrogate(Unit unit) noexcept {
    return (unit & kSurrogateMask) == kFirstHighSurrogate;
}

template <class Unit>
constexpr bool isHighSurrogate(Unit unit) noexcept {
    return (unit & kSurrogateKindMask) == kFirstHighSurrogate;
}

template <class Unit>
constexpr bool isLowSurrogate(Unit unit) noexcept {
    return (unit & kSurrogateKindMask) == kFirstLowSurrogate;
}

/// The value of a pair.
constexpr std::uint32_t pairedValue(std::uint32_t high, std::uint32_t low) noexcept {
    constexpr std::uint32_t kFirstPair = (kFirstHighSurrogate << 10) + kFirstLowSurrogate;
    return (high << 10) + low - (kFirstPair - kFirstPairedValue);
}

/// The high and the low surrogate of a value from 0x10000 on. For a value above 0x10FFFF, the first function does not
/// return a high surrogate, and its result may exceed 16 bits.
constexpr std::uint32_t highSurrogateOf(std::uint32_t value) noexcept {
    return kHighSurrogateOffset + (value >> 10);
}

constexpr std::uint32_t lowSurrogateOf(std::uint32_t value) noexcept {
    return kFirstLowSurrogate | (value & kLowSurrogateBits);
}

/// Writes `value` as one unit, or from 0x10000 on as a surrogate pair, and returns the number of units. Values above
/// 0x10FFFF are not rejected; the first unit is then the result of `highSurrogateOf`, converted to `Unit`.
template <class Unit>
constexpr unsigned int writeUnits(std::uint32_t value, Unit* out) noexcept {
    if (value < kFirstPairedValue) {
        out[0] = static_cast<Unit>(value);
        return 1;
    }
    out[0] = static_cast<Unit>(highSurrogateOf(value));
    out[1] = static_cast<Unit>(lowSurrogateOf(value));
    return 2;
}

// ---- Bytes ----------------------------------------------------------------------------------------------------------

/// The number of whole units in `length` bytes before the first zero unit.
inline std::size_t unitsBeforeZero(const unsigned char* bytes, std::size_t length) noexcept {
    std::size_t units = 0;
    while (units < length / 2 && (bytes[2 * units] | bytes[2 * units + 1]) != 0) {
        ++units;
    }
    return units;
}

/// Writes the two bytes of each of `count` units.
template <class Unit>
void writeUtf16Bytes(const Unit* units, std::size_t count, bool littleEndian, unsigned char* out) noexcept {
    static_assert(sizeof(Unit) == 2);
    for (const Unit* unit = units; unit != units + count; ++unit, out += 2) {
        out[littleEndian ? 0 : 1] = static_cast<unsigned char>(*unit);
        out[littleEndian ? 1 : 0] = static_cast<unsigned char>(*unit >> 8);
    }
}

}  // namespace vorel::algorithms
