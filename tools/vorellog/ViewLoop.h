/// \file
/// The main loop of vorellog. It reads the log and waits for new lines. It reports if the log is missing or stays
/// busy, and if records may be missing.
#pragma once

#include <optional>
#include <string>

#include "vorellog/Follower.h"
#include "vorellog/Settings.h"
#include "vorellog/Viewer.h"

namespace vorellog {

/// The clock, the stop signal and the error stream of the loop.
class Environment {
public:
    Environment() = default;
    virtual ~Environment() = default;
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

    /// The time of a monotonic clock, in milliseconds.
    virtual LocalMs nowMs() = 0;

    /// Waits for this time, or until the loop must stop. Returns true if the loop must stop.
    virtual bool waitForStop(LocalMs milliseconds) = 0;

    /// Shows the user a message that is not part of the output.
    virtual void report(const std::wstring& text) = 0;
};

/// Reads the log to its end. With --follow, the loop then continues until the user stops it. In both cases, the loop
/// ends earlier if the viewer has shown enough.
class ViewLoop {
public:
    /// With --follow, the time until the next poll if all bytes have been read, or if a busy file has been reported.
    static constexpr LocalMs kPollMs = 100;
    /// The time until the next poll if a file is busy and this has not been reported yet. Without --follow, also the
    /// time between polls for the rest of the last line.
    static constexpr LocalMs kBusyMs = 5;
    /// If a file is busy for longer, run() throws. But with --follow, run() reports this once and continues to wait.
    static constexpr LocalMs kMaxBusyMs = 10000;
    static constexpr LocalMs kLineEndMs = 200;  ///< without --follow, how long to wait for the rest of the last line

    /// The references must outlive this object.
    ViewLoop(const Settings& settings, Follower& follower, Viewer& viewer, Environment& environment)
        : m_settings(settings), m_follower(follower), m_viewer(viewer), m_environment(environment) {}

    /// \throws FileBusy without --follow, if a file stays busy for longer than kMaxBusyMs; tools::Failure.
    void run();

    /// If the viewer has received gaps since the last call, reports that records may be missing.
    void reportGaps();

private:
    enum class Outcome { More, Idle, Busy };

    Outcome poll();
    void reportBusy(const FileBusy& reason);
    void reportMissing();
    [[nodiscard]] bool isWaitingForLineEnd() const;

    const Settings& m_settings;
    Follower& m_follower;
    Viewer& m_viewer;
    Environment& m_environment;
    std::optional<LocalMs> m_busySinceMs;
    bool m_hasReportedBusy = false;  ///< reset when the file can be read again
    bool m_hasReportedMissing = false;
    unsigned int m_gapsReported = 0;
};

}  // namespace vorellog
