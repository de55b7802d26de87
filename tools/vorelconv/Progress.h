/// \file
/// A progress line on the console for long conversions.
#pragma once

#include <cstdint>
#include <optional>

namespace conv {

/// Writes nothing during the first second of a conversion. Writes nothing at all if the error stream is not a console,
/// or if the result is written to a console.
class Progress {
public:
    /// `total` is the input size in bytes, if known. `toStandardOutput` is true if the result is written to standard
    /// output.
    Progress(std::optional<std::uint64_t> total, bool toStandardOutput) noexcept;

    /// Erases the line.
    ~Progress();

    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Reports that `done` bytes of the input have been converted. Updates the line at most five times a second.
    void report(std::uint64_t done);

private:
    std::optional<std::uint64_t> m_total;
    bool m_enabled;
    bool m_shown = false;
    unsigned long long m_nextMs;
};

}  // namespace conv
