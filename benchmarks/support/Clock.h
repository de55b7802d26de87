/// \file
/// The clocks of the benchmarks.
///
/// Wine measures a thread's processor time in steps of 10 ms (`GetThreadTimes`) or not at all (`QueryThreadCycleTime`).
/// Linux counts the processor time in nanoseconds, so the benchmarks call Linux to read it. Reading the clock takes
/// about a microsecond.
#pragma once

namespace bench {

enum class Clock {
    /// Processor time of this process and of Wine's server, which does part of the work of many system calls. Other
    /// programs on the machine hardly affect this time. Without Wine on Linux, or if the server is unknown, the elapsed
    /// time is used instead.
    Processor,
    /// Elapsed time, for work that waits or that several processes share.
    Elapsed,
};

/// Sets the Linux process id of the Wine server of this process; 0 if it is unknown. A server whose processor time
/// cannot be read counts as unknown.
void setWineServer(unsigned long linuxProcessId);

/// The time of the clock in nanoseconds. Only differences have a meaning.
[[nodiscard]] double clockNs(Clock clock);

/// A description of the time that the clock measures in this run, for a heading.
[[nodiscard]] const char* describe(Clock clock);

}  // namespace bench
