#include "vorellog/ViewLoop.h"

namespace vorellog {

void ViewLoop::run() {
    while (!m_viewer.hasEnough()) {
        switch (poll()) {
        case Outcome::More: continue;
        case Outcome::Busy:
            if (m_surroundings.waitForStop(m_hasToldBusy ? kPollMs : kBusyMs)) {
                return;
            }
            continue;
        case Outcome::Idle: break;
        }
        m_viewer.showWhatIsRead(m_surroundings.nowMs());
        if (m_settings.follow) {
            tellMissing();
            tellGaps();
        }
        if (m_viewer.hasEnough() || (!m_settings.follow && !isWaitingForLineEnd()) ||
            m_surroundings.waitForStop(m_settings.follow ? kPollMs : kBusyMs)) {
            return;
        }
    }
}

void ViewLoop::tellGaps() {
    if (m_viewer.gaps() != m_gapsTold) {
        m_gapsTold = m_viewer.gaps();
        m_surroundings.tell(L"the log was deleted, emptied or moved too often: records may be missing");
    }
}

ViewLoop::Outcome ViewLoop::poll() {
    try {
        const Follower::Progress progress = m_follower.poll();
        m_busySinceMs.reset();
        m_hasToldBusy = false;
        return progress == Follower::Progress::More ? Outcome::More : Outcome::Idle;
    } catch (const FileBusy& reason) {
        const LocalMs now = m_surroundings.nowMs();
        if (now - m_busySinceMs.value_or(now) > kLongestBusyMs) {
            if (!m_settings.follow) {
                throw;
            }
            tellBusy(reason);
        }
        m_busySinceMs = m_busySinceMs.value_or(now);
        return Outcome::Busy;
    }
}

void ViewLoop::tellBusy(const FileBusy& reason) {
    if (!m_hasToldBusy) {
        m_hasToldBusy = true;
        m_surroundings.tell(reason.text() + L"; waiting for it");
    }
}

void ViewLoop::tellMissing() {
    if (!m_hasToldMissing && !m_follower.hasFound()) {
        m_hasToldMissing = true;
        m_surroundings.tell(m_settings.path + L": there is no such log; waiting for it");
    }
}

/// A last line without an end may be one that is just being written.
bool ViewLoop::isWaitingForLineEnd() const {
    return m_viewer.isWithinLine() && m_surroundings.nowMs() - m_viewer.lastNewsMs() < kLineEndMs;
}

}  // namespace vorellog
