/// \file
/// The decisions of a schedule.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

namespace exploration {

/// The decisions of a schedule, and the number of options of each decision.
class Path {
public:
    Path() = default;
    explicit Path(const std::vector<std::size_t>& decisions) {
        for (const std::size_t decision : decisions) {
            m_steps.push_back({decision, 0});
        }
    }

    void restart() { m_length = 0; }

    /// The next decision: the decision that the path contains at this position, or the first option if the path ends
    /// here. Null if the number of options differs from the number at this position in the previous schedule, or if a
    /// decision that was given to the constructor is not one of the options.
    std::optional<std::size_t> decide(std::size_t options) {
        if (m_length == m_steps.size()) {
            m_steps.push_back({0, options});
        }
        Step& step = m_steps[m_length++];
        if (step.options == 0) {
            step.options = options;
        }
        return step.options == options && step.chosen < options ? std::optional(step.chosen) : std::nullopt;
    }

    /// Continues with the next schedule. Returns false if all schedules were run.
    bool advance() {
        m_steps.resize(m_length);
        while (!m_steps.empty() && m_steps.back().chosen + 1 == m_steps.back().options) {
            m_steps.pop_back();
        }
        if (m_steps.empty()) {
            return false;
        }
        ++m_steps.back().chosen;
        return true;
    }

    [[nodiscard]] std::size_t length() const { return m_length; }

    [[nodiscard]] std::vector<std::size_t> decisions() const {
        std::vector<std::size_t> result;
        for (std::size_t index = 0; index < m_length; ++index) {
            result.push_back(m_steps[index].chosen);
        }
        return result;
    }

private:
    struct Step {
        std::size_t chosen;
        std::size_t options;
    };

    std::vector<Step> m_steps;
    std::size_t m_length = 0;
};

}  // namespace exploration
