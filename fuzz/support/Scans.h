/// \file
/// What the targets of scanners share: a text in its place, and its shape, which is what the references read.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "support/Check.h"
#include "support/GuardedPages.h"
#include "support/Input.h"
#include "support/Shape.h"

namespace fuzz {

/// A text that ends in a zero, without another one.
template <class T>
struct ScannedText {
    explicit ScannedText(Input& input) {
        const Surroundings around = input.surroundings();
        text = upToZero(input.restAsText<T>());
        shape = test::shapeOf(std::basic_string_view<T>(text));
        place = inputPages().copyText(text, around);
    }

    std::basic_string<T> text;
    std::string shape;
    const T* place;
};

/// Doubles are the same when their bits are: the sign of a zero counts.
inline bool isSame(double a, double b) noexcept {
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

/// Checks that a scan of `text` by `read(place, end)` gives what the reference has.
template <class T, class Reading, class Read>
void checkScan(const ScannedText<T>& text, const Reading& expected, Read&& read) {
    const T* end = nullptr;
    const auto value = read(text.place, &end);
    check(value == static_cast<decltype(value)>(expected.value), "the value is as expected");
    check(end == text.place + expected.end, "the scan ends where it should");
}

}  // namespace fuzz
