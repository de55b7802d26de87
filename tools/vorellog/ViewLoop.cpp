#include "vorellog/ViewLoop.h"

namespace vorellog {

void ViewLoop::run() {
    while (!m_viewer.hasEnough()) {
        switch (poll()) {
        case Outcome::More: continue;
        case Outcome::Busy:
            if (m_environment.waitForStop(m_hasReportedBusy ? kPollMs : kBusyMs)) {
                return;
            }
            continue;
        case Outcome::Idle: break;
        }
        m_viewer.showPending(m_environment.nowMs());
        if (m_settings.follow) {
            reportMissing();
            reportGaps();
        }
        if (m_viewer.hasEnough() || (!m_settings.follow && !isWaitingForLineEnd()) ||
            m_environment.waitForStop(m_settings.follow ? kPollMs : kBusyMs)) {
            return;
        }
    }
}

void ViewLoop::reportGaps() {
    if (m_viewer.gaps() != m_gapsReported) {
        m_gapsReported = m_viewer.gaps();
        m_environment.report(
            L"the log was deleted or emptied, or was rotated faster than it could be read; records may be missing");
    }
}

ViewLoop::Outcome ViewLoop::poll() {
    try {
        const Follower::Progress progress = m_follower.poll();
        m_busySinceMs.reset();
        m_hasReportedBusy = false;
        return progress == Follower::Progress::More ? Outcome::More : Outcome::Idle;
    } catch (const FileBusy& reason) {
        const LocalMs now = m_environment.nowMs();
        if (now - m_busySinceMs.value_or(now) > kMaxBusyMs) {
            if (!m_settings.follow) {
                throw;
            }
            reportBusy(reason);
        }
        m_busySinceMs = m_busySinceMs.value_or(now);
        return Outcome::Busy;
    }
}

void ViewLoop::reportBusy(const FileBusy& reason) {
    if (!m_hasReportedBusy) {
        m_hasReportedBusy = true;
        m_environment.report(reason.text() + L"; waiting");
    }
}

void ViewLoop::reportMissing() {
    if (!m_hasReportedMissing && !m_follower.hasFound()) {
        m_hasReportedMissing = true;
        m_environment.report(m_settings.paths.front() + L": log not found; waiting");
    }
}

/// Whether to wait for the rest of the last line, because its writer may not have finished it.
bool ViewLoop::isWaitingForLineEnd() const {
    return m_viewer.isWithinLine() && m_environment.nowMs() - m_viewer.lastInputMs() < kLineEndMs;
}

}  // namespace vorellog
