/// \file
/// The codec of Base64 and Daylight: the fastest available algorithm, then the scalar one for the remaining groups.
#pragma once

#include <cstddef>

#include "algorithms/Processor.h"
#include "algorithms/SixBits.h"
#include "algorithms/SixBitsAvx2.h"

namespace vorel::algorithms {

/// Encodes the whole groups of three among `count` bytes. Returns the end of the text.
template <class T>
T* encodeWholeGroups(const unsigned char* bytes, std::size_t count, const char* alphabet, T* out) noexcept {
    const std::size_t done = s_useAvx2 ? encodeSixBitsAvx2(bytes, count, alphabet, out) : 0;
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

inline constexpr std::size_t kSixBitCharacters = 32;  // per block
inline constexpr std::size_t kSixBitBytes = 24;
inline constexpr std::size_t kSixBitOverhang = 8;  // bytes written past the last block

/// Decodes whole blocks as far as the text and `capacity` allow. Returns their number.
template <class T>
std::size_t decodeWholeBlocks(const T* text, const SixBitRows& rows, InvalidCharacters rule, unsigned char* out,
                              std::size_t capacity) noexcept {
    if (!s_useAvx2 || capacity < kSixBitBytes + kSixBitOverhang) {
        return 0;
    }
    return decodeSixBitsAvx2(text, (capacity - kSixBitOverhang) / kSixBitBytes, rows, rule, out);
}

}  // namespace vorel::algorithms
