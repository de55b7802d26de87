/// \file
/// Counts of records over time, in a few steps of equal length. Nobody has to know the whole span before: steps that
/// have become too many are joined.
#pragma once

#include <cstddef>
#include <map>
#include <vector>

#include "vorellog/LogTime.h"

namespace vorellog {

class Histogram {
public:
    /// From the first step with a record to the last one there are at most so many.
    static constexpr std::size_t kMostSteps = 24;

    struct Step {
        LocalMs from = 0;
        unsigned long long records = 0;
    };

    void add(LocalMs time);

    /// The steps in their order, also those without a record.
    [[nodiscard]] std::vector<Step> steps() const;

    /// The length of a step: a second, and from there on what clocks and calendars have marks for.
    [[nodiscard]] LocalMs stepMs() const noexcept;

private:
    [[nodiscard]] LocalMs numberOf(LocalMs time) const noexcept;
    [[nodiscard]] bool fits() const noexcept;
    void joinSteps();

    std::size_t m_length = 0;
    std::map<LocalMs, unsigned long long> m_counts;  ///< by number of step
};

}  // namespace vorellog
