/// \file
/// Joins items, with double quotes around those that splitting could not restore otherwise.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "algorithms/UnitBlocks.h"

namespace vorel::algorithms {

/// Whether an item needs quotes. The search for the delimiter never goes back: the character that ends a partial match
/// does not start another one.
template <class T>
bool needsQuotes(std::basic_string_view<T> item, std::basic_string_view<T> delimiter) noexcept {
    std::size_t matched = 0;
    for (const T unit : item) {
        if (unit == '"') {
            return true;
        }
        if (delimiter.empty()) {
            continue;
        }
        matched = unit == delimiter[matched] ? matched + 1 : 0;
        if (matched == delimiter.size()) {
            return true;
        }
    }
    return false;
}

/// Whether an item has a quote at each end. A single quote is not enough.
template <class T>
constexpr bool isQuotedAlready(std::basic_string_view<T> item) noexcept {
    return item.size() > 1 && item.front() == '"' && item.back() == '"';
}

/// Writes an item in quotes, with its own quotes doubled. Returns the end.
template <class T>
T* writeQuoted(std::basic_string_view<T> item, T* out) noexcept {
    *out++ = '"';
    for (const T unit : item) {
        *out++ = unit;
        if (unit == '"') {
            *out++ = '"';
        }
    }
    *out++ = '"';
    return out;
}

/// Capacity for an item in any form, including the units written temporarily after its end.
constexpr std::size_t joinedItemCapacity(std::size_t units) noexcept {
    constexpr std::size_t kQuotes = 2;
    return kQuotes + 2 * units + kUnitBlock;
}

/// Writes an item of wide text, quoted if necessary, and returns the end. The item must be readable in whole blocks
/// (see `copyAndFind`).
template <class T>
T* writeJoinedItem(std::basic_string_view<T> item, std::basic_string_view<T> delimiter, T* out) noexcept {
    const bool isQuoted = delimiter.size() == 1 ? copyAndFind(item.data(), item.size(), T{'"'}, delimiter.front(), out)
                                                : needsQuotes(item, delimiter);
    if (isQuoted) {
        return writeQuoted(item, out);
    }
    return delimiter.size() == 1 ? out + item.size() : std::copy(item.begin(), item.end(), out);
}

}  // namespace vorel::algorithms
