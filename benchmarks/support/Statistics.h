/// \file
/// Medians and spreads of samples.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace bench {

/// The quantile of the samples at `share` (0 to 1), interpolated between the two nearest samples. There must be at
/// least one sample.
inline double quantile(std::vector<double> samples, double share) {
    std::sort(samples.begin(), samples.end());
    const double position = share * static_cast<double>(samples.size() - 1);
    const auto below = static_cast<std::size_t>(position);
    const std::size_t above = std::min(below + 1, samples.size() - 1);
    return samples[below] + (position - static_cast<double>(below)) * (samples[above] - samples[below]);
}

inline double median(const std::vector<double>& samples) {
    return quantile(samples, 0.5);
}

/// The spread of the ratios `peer` / `ours` of single rounds: the interquartile range of the ratios divided by their
/// median. `ours` and `peer` must have the same number of samples, at least one.
inline double spreadOfRatios(const std::vector<double>& ours, const std::vector<double>& peer) {
    std::vector<double> ratios(ours.size());
    for (std::size_t round = 0; round != ratios.size(); ++round) {
        ratios[round] = peer[round] / ours[round];
    }
    return (quantile(ratios, 0.75) - quantile(ratios, 0.25)) / median(ratios);
}

}  // namespace bench
