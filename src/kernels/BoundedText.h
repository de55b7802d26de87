/// \file
/// Texts in a caller's buffer, cut where it ends.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "kernels/IntegerText.h"

namespace vorel::kernels {

/// Copies as much of a text as fits into `size` characters, the last of which becomes a terminator.
template <class T>
void copyCut(const T* text, std::size_t length, T* buffer, unsigned long long size) noexcept {
    if (size == 0) {
        return;
    }
    const std::size_t copied = std::min<unsigned long long>(length, size - 1);
    std::copy_n(text, copied, buffer);
    buffer[copied] = 0;
    buffer[size - 1] = 0;
}

/// Writes a 64-bit number at a place with room for `kMostIntegerCharacters`, and returns the end.
template <class T>
T* writeSigned(std::uint64_t magnitude, bool negative, T* out) noexcept {
    *out = '-';
    return writeInteger(magnitude, out + (negative ? 1 : 0));
}

/// A number without its sign; that of the lowest one has no other form.
constexpr std::uint64_t magnitudeOf(std::int64_t value) noexcept {
    const auto bits = static_cast<std::uint64_t>(value);
    return value < 0 ? 0 - bits : bits;
}

/// Writes a number and a terminator into `size` characters, as much of it as they hold, and a terminator in the last of
/// them. Returns the buffer, which may be null.
template <class T>
T* writeBoundedInteger(std::uint64_t magnitude, bool negative, T* buffer, unsigned long long size) noexcept {
    if (!buffer) {
        return nullptr;
    }
    if (size > kMostIntegerCharacters) {
        *writeSigned(magnitude, negative, buffer) = 0;
        buffer[size - 1] = 0;
    } else {
        T text[kMostIntegerCharacters];
        const T* const end = writeSigned(magnitude, negative, text);
        copyCut(text, static_cast<std::size_t>(end - text), buffer, size);
    }
    return buffer;
}

}  // namespace vorel::kernels
