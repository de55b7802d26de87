/// \file
/// A number of records, and the times of the earliest and the latest record.
#pragma once

#include "vorellog/LogLine.h"

namespace vorellog {

struct Tally {
    unsigned long long records = 0;
    LocalMs firstMs = 0;  ///< meaningless if `records` is 0, like the following fields
    LocalMs lastMs = 0;
    bool firstHasMilliseconds = false;
    bool lastHasMilliseconds = false;

    /// Adds a record with this header.
    void add(const LogHeader& header) noexcept {
        if (records == 0 || header.timeMs < firstMs) {
            firstMs = header.timeMs;
            firstHasMilliseconds = header.hasMilliseconds;
        }
        if (records == 0 || header.timeMs > lastMs) {
            lastMs = header.timeMs;
            lastHasMilliseconds = header.hasMilliseconds;
        }
        ++records;
    }
};

}  // namespace vorellog
