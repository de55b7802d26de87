/// \file
/// How long vorellog reads, when it waits, and what it tells meanwhile of a log that keeps it waiting.
#pragma once

#include <optional>
#include <string>

#include "vorellog/Follower.h"
#include "vorellog/Settings.h"
#include "vorellog/Viewer.h"

namespace vorellog {

/// What the loop has to do with the world.
class Surroundings {
public:
    Surroundings() = default;
    virtual ~Surroundings() = default;
    Surroundings(const Surroundings&) = delete;
    Surroundings& operator=(const Surroundings&) = delete;

    /// A clock that only goes forward.
    virtual LocalMs nowMs() = 0;

    /// Waits; true when it is time to stop.
    virtual bool waitForStop(LocalMs milliseconds) = 0;

    /// Tells the user something beside the output.
    virtual void tell(const std::wstring& text) = 0;
};

/// Reads until there is nothing more, or with --follow until it is stopped.
class ViewLoop {
public:
    static constexpr LocalMs kPollMs = 100;
    static constexpr LocalMs kBusyMs = 5;  ///< between two attempts at a file that is likely to be free at once
    static constexpr LocalMs kLongestBusyMs = 10000;
    static constexpr LocalMs kLineEndMs =
        200;  ///< how long a line may lack its end before its writer is taken for dead

    /// All of them have to outlive the object.
    ViewLoop(const Settings& settings, Follower& follower, Viewer& viewer, Surroundings& surroundings)
        : m_settings(settings), m_follower(follower), m_viewer(viewer), m_surroundings(surroundings) {}

    /// \throws FileBusy, without --follow, when a file stays busy for longer than kLongestBusyMs; tools::Failure.
    void run();

    /// Tells of records that may be missing, unless it has been told.
    void tellGaps();

private:
    enum class Outcome { More, Idle, Busy };

    Outcome poll();
    void tellBusy(const FileBusy& reason);
    void tellMissing();
    [[nodiscard]] bool isWaitingForLineEnd() const;

    const Settings& m_settings;
    Follower& m_follower;
    Viewer& m_viewer;
    Surroundings& m_surroundings;
    std::optional<LocalMs> m_busySinceMs;
    bool m_hasToldBusy = false;  ///< of this time that it is busy
    bool m_hasToldMissing = false;
    unsigned int m_gapsTold = 0;
};

}  // namespace vorellog
