/// \file
/// The statistics that the two processes of the lock stress test share.
#pragma once

#include "support/SharedFigures.h"

namespace test {

struct StressFigures {
    static constexpr unsigned int kThreads = 4;  ///< per process
    static constexpr long long kNoEnd = 0x7FFFFFFFFFFFFFFF;

    volatile long long number;     ///< changed under the named mutex
    volatile long long lastRound;  ///< from 0; kNoEnd until process 0 sets it
};

using SharedStressFigures = SharedFigures<StressFigures>;

}  // namespace test
