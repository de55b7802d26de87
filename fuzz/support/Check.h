/// \file
/// What has to hold whatever the input is. A check that fails ends the program, and so becomes a finding.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace fuzz {

/// `rule` is what holds, in words: it is printed when it does not.
inline void check(bool holds, const char* rule) noexcept {
    if (!holds) {
        std::fprintf(stderr, "does not hold: %s\n", rule);
        std::abort();
    }
}

}  // namespace fuzz
