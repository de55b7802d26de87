#include "vorellog/Histogram.h"

#include <array>

namespace vorellog {

namespace {

constexpr LocalMs kYear = 364 * kDay;

/// Each length is a multiple of the previous length, so a year has only 364 days here, 13 times 28 days. With the last
/// length, the steps cover all years that a log can contain.
constexpr std::array<LocalMs, 16> kLengths = {
    kSecond,    5 * kSecond, 15 * kSecond, kMinute,   5 * kMinute, 15 * kMinute, kHour,       3 * kHour,
    12 * kHour, kDay,        7 * kDay,     28 * kDay, kYear,       10 * kYear,   100 * kYear, 1000 * kYear};

}  // namespace

LocalMs Histogram::stepMs() const noexcept {
    return kLengths[m_length];
}

/// The number of the step that contains `time`. The division rounds down, even for times before 1970.
LocalMs Histogram::numberOf(LocalMs time) const noexcept {
    const LocalMs length = stepMs();
    return time / length - (time % length < 0 ? 1 : 0);
}

void Histogram::add(LocalMs time, unsigned long long records) {
    m_counts[numberOf(time)] += records;
    while (!fits()) {
        joinSteps();
    }
}

bool Histogram::fits() const noexcept {
    return m_counts.rbegin()->first - m_counts.begin()->first < static_cast<LocalMs>(m_maxSteps) ||
           m_length + 1 == kLengths.size();
}

void Histogram::joinSteps() {
    const LocalMs before = stepMs();
    ++m_length;
    std::map<LocalMs, unsigned long long> joined;
    for (const auto& [number, count] : m_counts) {
        joined[numberOf(number * before)] += count;
    }
    m_counts = std::move(joined);
}

std::vector<Histogram::Step> Histogram::steps() const {
    std::vector<Step> result;
    if (m_counts.empty()) {
        return result;
    }
    for (LocalMs number = m_counts.begin()->first; number <= m_counts.rbegin()->first; ++number) {
        const auto found = m_counts.find(number);
        result.push_back({number * stepMs(), found == m_counts.end() ? 0 : found->second});
    }
    return result;
}

}  // namespace vorellog
