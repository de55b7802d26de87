/// \file
/// Counts records over time, in a limited number of steps of equal length. The time span need not be known in advance,
/// because steps are merged into longer steps if there are too many.
#pragma once

#include <cstddef>
#include <map>
#include <vector>

#include "vorellog/LogTime.h"

namespace vorellog {

class Histogram {
public:
    static constexpr std::size_t kMaxSteps = 24;

    /// The time from the first record to the last record is divided into at most `maxSteps` steps. There are more steps
    /// only if the longest step length (1000 years) is too short. With `kMaxSteps`, this never happens for times of a
    /// log.
    explicit Histogram(std::size_t maxSteps = kMaxSteps) noexcept : m_maxSteps(maxSteps) {}

    struct Step {
        LocalMs from = 0;
        unsigned long long records = 0;
    };

    void add(LocalMs time, unsigned long long records = 1);

    /// The steps in time order, including empty steps.
    [[nodiscard]] std::vector<Step> steps() const;

    /// The length of a step: 1 s, 5 s, 15 s, 1 min, and so on.
    [[nodiscard]] LocalMs stepMs() const noexcept;

private:
    [[nodiscard]] LocalMs numberOf(LocalMs time) const noexcept;
    [[nodiscard]] bool fits() const noexcept;
    void joinSteps();

    std::size_t m_maxSteps;
    std::size_t m_length = 0;
    std::map<LocalMs, unsigned long long> m_counts;  ///< the number of records for each step number
};

}  // namespace vorellog
