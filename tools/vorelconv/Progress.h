/// \file
/// A line on the console that says how far a long conversion is.
#pragma once

#include <cstdint>
#include <optional>

namespace conv {

/// Writes nothing during the first second, when the error stream is no console, and when the result itself goes to a
/// console.
class Progress {
public:
    /// `total` in bytes, where it is known; `toStandardOutput`: the result goes there.
    Progress(std::optional<std::uint64_t> total, bool toStandardOutput) noexcept;

    /// Removes the line.
    ~Progress();

    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// `done` bytes of the input are converted. Writes a line five times a second at most.
    void report(std::uint64_t done);

private:
    std::optional<std::uint64_t> m_total;
    bool m_enabled;
    bool m_shown = false;
    unsigned long long m_nextMs;
};

}  // namespace conv
