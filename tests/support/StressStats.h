/// \file
/// The statistics that the two processes of the lock stress test share.
#pragma once

#include "support/SharedStats.h"

namespace test {

struct StressStats {
    static constexpr unsigned int kThreads = 4;  ///< per process
    static constexpr long long kNoEnd = 0x7FFFFFFFFFFFFFFF;

    volatile long long number;     ///< changed under the named mutex
    volatile long long lastRound;  ///< the number of the last round, from 0; kNoEnd until process 0 sets it
};

using SharedStressStats = SharedStats<StressStats>;

}  // namespace test
