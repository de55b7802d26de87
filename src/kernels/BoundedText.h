/// \file
/// Texts in a caller's buffer, cut where it ends.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "kernels/IntegerText.h"

namespace vorel::kernels {

/// Copies a short text, which does not overlap the target; calling the runtime would take longer.
template <class T>
void copyShort(const T* text, std::size_t length, T* to) noexcept {
    const auto* const from = reinterpret_cast<const unsigned char*>(text);
    auto* const out = reinterpret_cast<unsigned char*>(to);
    const std::size_t bytes = length * sizeof(T);
    const auto copy = [=](auto block, std::size_t at) {
        std::memcpy(&block, from + at, sizeof block);
        std::memcpy(out + at, &block, sizeof block);
    };
    // The last block may overlap the one before it.
    const auto copyBlocks = [&](auto block) {
        for (std::size_t at = 0; at + sizeof block < bytes; at += sizeof block) {
            copy(block, at);
        }
        copy(block, bytes - sizeof block);
    };
    if (bytes >= sizeof(std::uint64_t)) {
        copyBlocks(std::uint64_t{});
    } else if (bytes >= sizeof(std::uint32_t)) {
        copyBlocks(std::uint32_t{});
    } else {
        std::copy_n(from, bytes, out);
    }
}

/// Copies as much of a text as fits into `size` characters, the last of which becomes a terminator.
template <class T>
void copyCut(const T* text, std::size_t length, T* buffer, unsigned long long size) noexcept {
    if (size == 0) {
        return;
    }
    const std::size_t copied = std::min<unsigned long long>(length, size - 1);
    copyShort(text, copied, buffer);
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
    // Not straight into the buffer: its units after the terminator stay as they are.
    T text[kMostIntegerCharacters];
    const T* const end = writeSigned(magnitude, negative, text);
    copyCut(text, static_cast<std::size_t>(end - text), buffer, size);
    return buffer;
}

}  // namespace vorel::kernels
