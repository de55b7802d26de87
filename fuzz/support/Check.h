/// \file
/// What has to hold whatever the input is. A check that fails ends the program, and so becomes a finding.
#pragma once

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace fuzz {

/// `rule` is what holds, in words: it is printed when it does not.
inline void check(bool holds, const char* rule) noexcept {
    if (!holds) {
        static_cast<void>(std::fprintf(stderr, "does not hold: %s\n", rule));
        std::abort();
    }
}

/// Whether the text from `begin` to `end` is `expected`, widened where it is wide.
template <class T>
bool isText(const T* begin, const T* end, const std::string& expected) noexcept {
    return std::equal(begin, end, expected.begin(), expected.end());
}

}  // namespace fuzz
