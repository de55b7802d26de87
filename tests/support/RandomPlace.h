/// \file
/// Random positions for the input of a scanner: next to an inaccessible page, where a read out of bounds faults, or
/// between the remains of earlier texts, where scanners may read in blocks.
#pragma once

#include <string>
#include <string_view>

#include "support/PageEdge.h"
#include "support/RandomText.h"

namespace test {

/// Copies `text` and its terminator into `pages`, which must hold at least 2048 units.
template <class T>
const T* placeAnywhere(RandomText& random, PageEdge<T>& pages, const std::basic_string<T>& text) {
    const std::basic_string_view<T> withTerminator(text.c_str(), text.size() + 1);
    if (random.oneIn(4)) {
        return pages.placeAtEnd(withTerminator);
    }
    if (random.oneIn(4)) {
        return pages.placeAtStart(withTerminator);
    }
    T* const position = pages.firstElement() + random.below(1024);
    withTerminator.copy(position, withTerminator.size());
    return position;
}

/// The text; in one of eight wide texts, one unit gets a high byte, so that only its low byte is valid.
template <class T>
std::basic_string<T> withForeignUnit(RandomText& random, std::basic_string<T> text) {
    if (sizeof(T) > 1 && !text.empty() && random.oneIn(8)) {
        T& unit = text[random.below(text.size())];
        unit = static_cast<T>(static_cast<unsigned int>(unit) | 0x100u << random.below(8));
    }
    return text;
}

}  // namespace test
