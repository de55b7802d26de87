/// \file
/// Checks of invariants that must be true for any input. A failed check ends the program, which libFuzzer reports as a
/// finding.
#pragma once

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace fuzz {

/// `rule` describes the invariant, and is printed if the invariant is violated.
inline void check(bool holds, const char* rule) noexcept {
    if (!holds) {
        static_cast<void>(std::fprintf(stderr, "does not hold: %s\n", rule));
        std::abort();
    }
}

/// Whether the text from `begin` to `end` is `expected`, widened for wide text. For wide text, `expected` must be
/// ASCII.
template <class T>
bool isText(const T* begin, const T* end, const std::string& expected) noexcept {
    return std::equal(begin, end, expected.begin(), expected.end());
}

}  // namespace fuzz
