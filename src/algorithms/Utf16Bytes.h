/// \file
/// Reads and writes UTF-16 as bytes in either order. The address may be odd, so bytes are never accessed as units in
/// place.
#pragma once

#include <cstddef>

namespace vorel::algorithms {

/// The number of whole units in `length` bytes before the first zero unit.
inline std::size_t countUtf16Units(const unsigned char* bytes, std::size_t length) noexcept {
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
