/// \file
/// A place for a text that somebody scans: against a page that must not be touched, where one unit too far faults, or
/// in the middle of what earlier texts left behind, where scanners may read in blocks.
#pragma once

#include <string>
#include <string_view>

#include "support/PageEdge.h"
#include "support/RandomText.h"

namespace test {

/// Puts `text` and its terminator into pages that have room for at least 2048 units.
template <class T>
const T* placeAnywhere(RandomText& random, PageEdge<T>& pages, const std::basic_string<T>& text) {
    const std::basic_string_view<T> withTerminator(text.c_str(), text.size() + 1);
    if (random.oneIn(4)) {
        return pages.placeAtEnd(withTerminator);
    }
    if (random.oneIn(4)) {
        return pages.placeAtStart(withTerminator);
    }
    T* const place = pages.firstElement() + random.below(1024);
    withTerminator.copy(place, withTerminator.size());
    return place;
}

/// The text, now and then with a unit whose lower byte alone would mean something.
template <class T>
std::basic_string<T> withForeignUnit(RandomText& random, std::basic_string<T> text) {
    if (sizeof(T) > 1 && !text.empty() && random.oneIn(8)) {
        T& unit = text[random.below(text.size())];
        unit = static_cast<T>(static_cast<unsigned int>(unit) | 0x100u << random.below(8));
    }
    return text;
}

}  // namespace test
