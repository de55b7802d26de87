/// \file
/// `Rise`: detects that the cost of an element rises with the number of elements.
#pragma once

#include <algorithm>

namespace bench {

/// Rises above this limit are marked in the output.
inline constexpr double kMaxRise = 1.5;

/// Tracks costs in ascending order of the number of elements.
class Rise {
public:
    /// Adds the cost of an element for the next larger number of elements. Returns the ratio of this cost to the
    /// smallest cost so far, which may be this cost.
    double add(double cost) {
        m_smallest = m_count == 0 ? cost : std::min(m_smallest, cost);
        ++m_count;
        m_worst = std::max(m_worst, cost / m_smallest);
        return cost / m_smallest;
    }

    [[nodiscard]] int count() const { return m_count; }

    /// The largest ratio that `add` has returned; 1 if there was no call.
    [[nodiscard]] double worst() const { return m_worst; }

private:
    double m_smallest = 0;
    double m_worst = 1;
    int m_count = 0;
};

}  // namespace bench
