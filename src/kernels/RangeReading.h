/// \file
/// Lists of ranges of integers in zero-terminated text of either width.
#pragma once

#include <cstddef>
#include <string_view>

#include "kernels/NumberScanner.h"
#include "kernels/Trimming.h"

namespace vorel::kernels {

/// What stands for the end of a range that has none.
inline constexpr int kOpenRangeEnd = -1;

/// Takes the number that a part of a text begins with, and says whether it is all of it. Behind the part stands nothing
/// that could belong to the number, but for blanks.
template <class T, class Take>
bool readRangeEnd(std::basic_string_view<T> part, Take&& take) {
    const T* place = part.data();
    take(takeInteger<int>(place, true));
    return place >= part.data() + part.size();
}

/// Reads an item without blanks around it, which is a number or a range, and says whether it was one.
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

/// Reads the items between commas; empty ones are passed over. Each start of a range goes to `takeStart`, and each end
/// to `takeEnd`, a number being both. Stops behind the number with which an item turns out to be no range, and returns
/// that item; otherwise nothing.
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

}  // namespace vorel::kernels
