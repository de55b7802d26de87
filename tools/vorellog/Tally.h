/// \file
/// A number of records, and the times of the first and the last record.
#pragma once

#include <algorithm>

#include "vorellog/LogTime.h"

namespace vorellog {

struct Tally {
    unsigned long long records = 0;
    LocalMs firstMs = 0;  ///< meaningless if `records` is 0
    LocalMs lastMs = 0;

    void add(LocalMs time) noexcept {
        firstMs = records == 0 ? time : std::min(firstMs, time);
        lastMs = records == 0 ? time : std::max(lastMs, time);
        ++records;
    }
};

}  // namespace vorellog
