/// \file
/// What the two processes of the locks' stress test share.
#pragma once

#include "support/SharedFigures.h"

namespace test {

struct StressFigures {
    static constexpr unsigned int kThreads = 4;  ///< of each process
    static constexpr long long kNoEnd = 0x7FFFFFFFFFFFFFFF;

    volatile long long number;     ///< changed under the named mutex
    volatile long long lastRound;  ///< counted from 0; kNoEnd until it is known
};

using SharedStressFigures = SharedFigures<StressFigures>;

}  // namespace test
