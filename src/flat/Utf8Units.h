/// \file
/// UTF-8 and UTF-16 with lengths: the library's codec, run over a text piece by piece where it has zeros.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "vorel/core/Array.h"

namespace vorel::flat {

/// Bytes that are enough for any text of `units` units.
constexpr std::size_t utf8Room(std::size_t units) noexcept {
    constexpr std::size_t kMostPerUnit = 3;
    constexpr std::size_t kSlack = 8;
    return units * kMostPerUnit + kSlack;
}

/// Writes `text`, which has a zero behind its end, as UTF-8 to `bytes`, which has that room, and returns their number.
std::size_t toUtf8(std::wstring_view text, char* bytes) noexcept;

/// The same into an array. \throws MemoryException.
Array<char> toUtf8(std::wstring_view text);

/// The UTF-16 form of `bytes`, which have six zeros behind their end; nothing when they are no UTF-8.
/// \throws MemoryException.
std::optional<Array<wchar_t>> toUtf16(std::string_view bytes);

}  // namespace vorel::flat
