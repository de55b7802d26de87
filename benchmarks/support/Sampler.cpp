#include "support/Sampler.h"

#include <algorithm>

namespace bench {

namespace {

/// In a sample of this duration, the time to read the clock and the cold start of the loop are negligible.
constexpr double kShortestSampleNs = 2e6;

/// The minimum number of passes in a sample. The first pass of a sample is slower if the caches contain the memory of
/// another pass and have no space for both. The following passes make this effect smaller.
constexpr std::size_t kFewPasses = 4;

/// The smallest measured time. Without this minimum, the time would be 0 if a pass ends before the clock advances.
constexpr double kClockStepNs = 1;

}  // namespace

Sampler::Sampler(const Pass& pass, std::size_t items, Clock clock, Calibration calibration)
    : m_pass(&pass), m_items(items), m_clock(clock) {
    if (calibration == Calibration::ByTimeAndPasses) {
        m_repeats = kFewPasses;
    }
    if (calibration != Calibration::None) {
        while (timeNs() < kShortestSampleNs) {
            m_repeats *= 2;
        }
    }
}

void Sampler::sample() {
    m_samples.push_back(timeNs() / static_cast<double>(m_repeats * m_items));
}

double Sampler::timeNs() const {
    const double start = clockNs(m_clock);
    m_pass->repeat(m_repeats);
    return std::max(clockNs(m_clock) - start, kClockStepNs);
}

}  // namespace bench
