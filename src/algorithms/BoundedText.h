/// \file
/// Writes text to a caller's buffer, truncated to its size.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "algorithms/IntegerText.h"

namespace vorel::algorithms {

/// Copies a short text that does not overlap the target. A call of the runtime would take longer.
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

/// Copies as much of a text as fits into `size` characters. The last of them becomes a terminator.
template <class T>
void copyTruncated(const T* text, std::size_t length, T* buffer, unsigned long long size) noexcept {
    if (size == 0) {
        return;
    }
    const std::size_t copied = std::min<unsigned long long>(length, size - 1);
    copyShort(text, copied, buffer);
    buffer[copied] = 0;
    buffer[size - 1] = 0;
}

/// Writes a 64-bit number to `out`, which has space for `kMaxIntegerCharacters`. Returns the end.
template <class T>
T* writeSigned(std::uint64_t magnitude, bool negative, T* out) noexcept {
    *out = '-';
    return writeInteger(magnitude, out + (negative ? 1 : 0));
}

/// The absolute value. It holds that of the lowest number too.
constexpr std::uint64_t magnitudeOf(std::int64_t value) noexcept {
    const auto bits = static_cast<std::uint64_t>(value);
    return value < 0 ? 0 - bits : bits;
}

/// Writes a number and a terminator to `size` characters, truncated to them, and a terminator to the last one. Returns
/// the buffer, which may be null.
template <class T>
T* writeBoundedInteger(std::uint64_t magnitude, bool negative, T* buffer, unsigned long long size) noexcept {
    if (!buffer) {
        return nullptr;
    }
    // Formatted in a local buffer, because the units after the terminator must stay unchanged.
    T text[kMaxIntegerCharacters];
    const T* const end = writeSigned(magnitude, negative, text);
    copyTruncated(text, static_cast<std::size_t>(end - text), buffer, size);
    return buffer;
}

}  // namespace vorel::algorithms
