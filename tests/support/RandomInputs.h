/// \file
/// Runs tests on random inputs. The seed is fixed; a failure message contains the seed and the number of the input.
/// Texts for scanners are placed at random positions of a buffer. Some texts are next to an inaccessible page, where a
/// read out of bounds faults. Other texts are in the middle of the buffer, where a scanner may read whole blocks and
/// must ignore the remains of earlier texts.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "support/PageEdge.h"
#include "support/RandomText.h"
#include "support/Shape.h"
#include "support/WideText.h"

namespace test {

inline constexpr std::uint64_t kRandomSeed = 20261121;

/// Calls `check(random)` for each of `count` inputs, until a check fails.
template <class Check>
void forEachRandomInput(int count, Check check) {
    RandomText random(kRandomSeed);
    for (int input = 0; input < count; ++input) {
        check(random);
        ASSERT_FALSE(::testing::Test::HasFailure()) << "input " << input << " of seed " << kRandomSeed;
    }
}

/// Copies `text` and its terminator to the end of `pages`, to the start, or to a random position. `pages` must have
/// space for at least 2048 units, and `text` must not have more than 1024 units.
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

/// Returns `text`. In one of eight wide texts, one bit in the high byte of a unit is set. Code that reads only the low
/// byte would mistake the changed unit for the original character.
template <class T>
std::basic_string<T> withForeignUnit(RandomText& random, std::basic_string<T> text) {
    if (sizeof(T) > 1 && !text.empty() && random.oneIn(8)) {
        T& unit = text[random.below(text.size())];
        unit = static_cast<T>(static_cast<unsigned int>(unit) | 0x100u << random.below(8));
    }
    return text;
}

/// Calls `check(text, shape)` for `count` random texts. Each text is created by `make(random)`, converted to the
/// character type `T`, and placed at a random position. `shape` is the narrow form of the text (see Shape.h).
template <class T, class Make, class Check>
void forEachRandomText(int count, Make make, Check check) {
    PageEdge<T> pages(2048);
    forEachRandomInput(count, [&](RandomText& random) {
        const std::basic_string<T> units = withForeignUnit(random, text<T>(make(random)));
        const std::string shape = shapeOf(std::basic_string_view<T>(units));
        check(placeAnywhere(random, pages, units), shape);
        EXPECT_FALSE(::testing::Test::HasFailure()) << "narrow form of the text: \"" << shape << '"';
    });
}

}  // namespace test
