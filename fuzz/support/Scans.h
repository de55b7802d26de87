/// \file
/// Shared by the targets for scanners: a text in pages with inaccessible neighbours (GuardedPages.h), and the shape of
/// the text (Shape.h), which the references read.
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

/// A zero-terminated text without other zeros.
template <class T>
struct ScannedText {
    explicit ScannedText(Input& input) {
        const Placement around = input.placement();
        text = upToZero(input.restAsText<T>());
        shape = test::shapeOf(std::basic_string_view<T>(text));
        position = inputPages().copyText(text, around);
    }

    std::basic_string<T> text;
    std::string shape;
    const T* position;
};

/// Doubles are equal if their bits are equal, so the sign of a zero matters.
inline bool isSame(double a, double b) noexcept {
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

/// Checks that a scan of `text` by `read(position, end)` returns the reference's result.
template <class T, class Reading, class Read>
void checkScan(const ScannedText<T>& text, const Reading& expected, Read&& read) {
    const T* end = nullptr;
    const auto value = read(text.position, &end);
    check(value == static_cast<decltype(value)>(expected.value), "the value is as expected");
    check(end == text.position + expected.end, "the scan ends at the expected position");
}

}  // namespace fuzz
