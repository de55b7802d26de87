/// \file
/// Base64 and Daylight over the kernels of six bits: the fastest that the processor has, and the plain one for what is
/// left.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/StringAccess.h"
#include "kernels/Processor.h"
#include "kernels/SixBits.h"
#include "kernels/SixBitsAvx2.h"
#include "vorel/core/BaseString.h"
#include "vorel/core/Protocol.h"

namespace vorel::text {

/// Makes a string empty, with room for `units`, and returns its buffer.
template <class T>
T* roomFor(std::uint64_t units, BaseString<T>& string) {
    if (units >= BaseString<T>::kUnknownLength) {
        detail::throwMemory(BaseString<T>::kUnknownLength, sizeof(T));
    }
    T* const buffer = string.reserve(static_cast<unsigned int>(units), true);
    string.clear();
    return buffer;
}

/// Says where the text ends that was written into a string's buffer.
template <class T>
void endAt(const T* end, BaseString<T>& string) noexcept {
    detail::StringAccess<T>::setLength(string, static_cast<unsigned int>(end - string.data()));
}

/// Encodes the whole groups of three among `count` bytes, and returns the end of the text.
template <class T>
T* encodeWholeGroups(const unsigned char* bytes, std::size_t count, const char* alphabet, T* out) noexcept {
    const std::size_t done = kernels::s_useAvx2 ? kernels::encodeSixBitsAvx2(bytes, count, alphabet, out) : 0;
    return kernels::encodeGroups(bytes + done, count - done, alphabet, out + done / 3 * 4);
}

inline constexpr std::size_t kBlockCharacters = 32;
inline constexpr std::size_t kBlockBytes = 24;
inline constexpr std::size_t kBlockOverhang = 8;  // bytes that are written behind the last block

/// Decodes whole blocks while there are some and `room` bytes hold them, and returns how many.
template <class T>
std::size_t decodeWholeBlocks(const T* text, const kernels::SixBitRows& rows, kernels::Strangers strangers,
                              unsigned char* out, std::size_t room) noexcept {
    if (!kernels::s_useAvx2 || room < kBlockBytes + kBlockOverhang) {
        return 0;
    }
    return kernels::decodeSixBitsAvx2(text, (room - kBlockOverhang) / kBlockBytes, rows, strangers, out);
}

}  // namespace vorel::text
