/// \file
/// Parses lists of integer ranges in zero-terminated text of either width.
#pragma once

#include <cstddef>
#include <string_view>

#include "algorithms/NumberScanner.h"
#include "algorithms/Trimming.h"

namespace vorel::algorithms {

/// The value of a missing start or end.
inline constexpr int kOpenRangeEnd = -1;

/// Parses the number at the start of a part. Returns whether it is the whole part. The part must be followed by nothing
/// that could belong to the number except white space.
template <class T, class Take>
bool readRangeEnd(std::basic_string_view<T> part, Take&& take) {
    const T* cursor = part.data();
    take(parseInteger<int>(cursor, true));
    return cursor >= part.data() + part.size();
}

/// Parses an item without surrounding white space. Returns whether it is a number or a range.
template <class T, class TakeStart, class TakeEnd>
bool readRange(std::basic_string_view<T> item, TakeStart&& takeStart, TakeEnd&& takeEnd) {
    const std::size_t dash = item.find(T{'-'});
    if (dash == std::basic_string_view<T>::npos) {
        return readRangeEnd(item, [&](int value) {
            takeStart(value);
            takeEnd(value);
        });
    }
    if (dash == 0) {
        takeStart(kOpenRangeEnd);
    } else if (!readRangeEnd(item.substr(0, dash), takeStart)) {
        return false;
    }
    if (dash + 1 == item.size()) {
        takeEnd(kOpenRangeEnd);
        return true;
    }
    return readRangeEnd(item.substr(dash + 1), takeEnd);
}

/// Parses items separated by commas; empty items are skipped. Each start of a range is passed to `takeStart`, each end
/// to `takeEnd`, and a number to both. Stops at the first invalid item, after its number is passed on, and returns that
/// item. Returns an empty view if all items are valid.
template <class T, class TakeStart, class TakeEnd>
std::basic_string_view<T> readRanges(const T* text, TakeStart&& takeStart, TakeEnd&& takeEnd) {
    for (std::basic_string_view<T> rest(text); !rest.empty();) {
        const std::basic_string_view<T> whole = rest.substr(0, rest.find(T{','}));
        rest.remove_prefix(whole.size());
        rest.remove_prefix(rest.empty() ? 0 : 1);
        const std::basic_string_view<T> item = trimmed(whole);
        if (!item.empty() && !readRange(item, takeStart, takeEnd)) {
            return item;
        }
    }
    return {};
}

}  // namespace vorel::algorithms
