/// \file
/// Conversions between UTF-8 and UTF-16 for texts that may contain zeros. The library's codec stops at a zero, so the
/// pieces between the zeros are converted separately.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "vorel/core/Array.h"

namespace vorel::flat {

/// A capacity in bytes that is enough for any text of `units` units.
constexpr std::size_t utf8Capacity(std::size_t units) noexcept {
    constexpr std::size_t kMaxPerUnit = 3;
    constexpr std::size_t kSlack = 8;
    return units * kMaxPerUnit + kSlack;
}

/// Writes `text` as UTF-8 to `bytes` and returns the number of bytes written. An unpaired surrogate becomes "?". A zero
/// must follow `text`. `bytes` must have space for `utf8Capacity(text.size())` bytes.
std::size_t toUtf8(std::wstring_view text, char* bytes) noexcept;

/// Like the function above, but the result is an array. \throws MemoryException.
Array<char> toUtf8(std::wstring_view text);

/// Converts `bytes` to UTF-16. At least six zeros must follow `bytes`. Returns nullopt if a byte that cannot start
/// a sequence is where a sequence must start, or if a zero or the end cuts a sequence off. \throws MemoryException.
std::optional<Array<wchar_t>> toUtf16(std::string_view bytes);

}  // namespace vorel::flat
