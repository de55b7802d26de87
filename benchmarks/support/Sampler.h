/// \file
/// `Sampler`: times one pass in many short samples.
#pragma once

#include <cstddef>
#include <vector>

#include "support/Clock.h"
#include "support/Pass.h"

namespace bench {

enum class Calibration {
    ByTime,           ///< first runs the pass until its speed is known; each sample then takes about 2 ms or more
    ByTimeAndPasses,  ///< like `ByTime`, but each sample also has at least four passes
    None,             ///< each sample runs the pass once, and no untimed run precedes the first sample
};

/// A pass and its samples in nanoseconds per item. The pass must outlive the sampler.
class Sampler {
public:
    Sampler(const Pass& pass, std::size_t items, Clock clock, Calibration calibration);

    void sample();

    [[nodiscard]] const std::vector<double>& samples() const { return m_samples; }

private:
    [[nodiscard]] double timeNs() const;

    const Pass* m_pass;
    std::size_t m_items;
    Clock m_clock;
    std::size_t m_repeats = 1;
    std::vector<double> m_samples;
};

}  // namespace bench
