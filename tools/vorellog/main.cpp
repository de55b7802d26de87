/// \file
/// vorellog: a viewer for the error log.

#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include <windows.h>

#include "support/CommandLine.h"
#include "support/Console.h"
#include "support/Tool.h"
#include "vorellog/Follower.h"
#include "vorellog/LogFiles.h"
#include "vorellog/Settings.h"
#include "vorellog/Viewer.h"

namespace vorellog {

namespace {

enum ExitCode : int {
    kFound = tools::kDone,
    kNothingFound = 1,
    kWrongUse = tools::kWrongUse,
    kCannotRead = 3,
};

constexpr wchar_t kProgram[] = L"vorellog";
constexpr DWORD kPollMs = 100;
constexpr DWORD kBusyMs = 5;
constexpr LocalMs kLongestBusyMs = 10000;
constexpr LocalMs kLineEndMs = 200;  ///< how long a line may stay without its end before its writer is taken for dead

void tell(const std::wstring& text) {
    tools::writeError(std::wstring(kProgram) + L": " + text + L"\n");
}

LocalMs clockMs() {
    return static_cast<LocalMs>(GetTickCount64());
}

/// Set by Ctrl+C.
HANDLE stopEvent() {
    static HANDLE const event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    return event;
}

/// Waits; true when it is time to stop.
bool waitForStop(DWORD milliseconds) {
    return WaitForSingleObject(stopEvent(), milliseconds) == WAIT_OBJECT_0;
}

/// The first Ctrl+C lets the viewer show what it has read; the next one ends it as usual.
BOOL WINAPI onControl(DWORD control) {
    if ((control != CTRL_C_EVENT && control != CTRL_BREAK_EVENT) || waitForStop(0)) {
        return FALSE;
    }
    SetEvent(stopEvent());
    return TRUE;
}

bool wantsColours(const Settings& settings) {
    const wchar_t* const noColor = _wgetenv(L"NO_COLOR");
    return showsColours(settings.colours, tools::enableEscapeSequences(tools::Stream::Output),
                        noColor && *noColor != L'\0');
}

/// Reads until there is nothing more, or with --follow until it is stopped.
class Run {
public:
    Run(const Settings& settings, Follower& follower, Viewer& viewer)
        : m_settings(settings), m_follower(follower), m_viewer(viewer) {}

    void run() {
        while (!m_viewer.hasEnough()) {
            switch (poll()) {
            case Outcome::More: continue;
            case Outcome::Busy:
                if (waitForStop(kBusyMs)) {
                    return;
                }
                continue;
            case Outcome::Idle: break;
            }
            m_viewer.showWhatIsRead(clockMs());
            if (m_viewer.hasEnough() || (!m_settings.follow && !isWaitingForLineEnd()) ||
                waitForStop(m_settings.follow ? kPollMs : kBusyMs)) {
                return;
            }
        }
    }

private:
    enum class Outcome { More, Idle, Busy };

    Outcome poll() {
        try {
            const Follower::Progress progress = m_follower.poll();
            m_busySinceMs = 0;
            return progress == Follower::Progress::More ? Outcome::More : Outcome::Idle;
        } catch (const FileBusy&) {
            const LocalMs now = clockMs();
            m_busySinceMs = m_busySinceMs == 0 ? now : m_busySinceMs;
            if (!m_settings.follow && now - m_busySinceMs > kLongestBusyMs) {
                throw;
            }
            return Outcome::Busy;
        }
    }

    /// A last line without an end may be one that is just being written.
    [[nodiscard]] bool isWaitingForLineEnd() const {
        return m_viewer.isWithinLine() && clockMs() - m_viewer.lastNewsMs() < kLineEndMs;
    }

    const Settings& m_settings;
    Follower& m_follower;
    Viewer& m_viewer;
    LocalMs m_busySinceMs = 0;
};

int view(const Settings& settings) {
    DiskLogFiles files(settings.path);
    Viewer viewer(settings, wantsColours(settings), [](std::string_view text) { tools::writeOutput(text); });
    Follower follower(files, viewer);
    if (settings.follow) {
        SetConsoleCtrlHandler(&onControl, TRUE);
    }
    Run(settings, follower, viewer).run();
    viewer.finish();
    if (!follower.hasFound() && !settings.follow) {
        throw tools::Failure(settings.path + L": there is no such log");
    }
    if (viewer.gaps() != 0) {
        tell(L"the log was deleted, emptied or moved too often: records may be missing");
    }
    if (viewer.unjudged() != 0) {
        tell(L"damaged records without process, thread, prefix and time, not shown: " +
             std::to_wstring(viewer.unjudged()));
    }
    return viewer.hasFound() ? kFound : kNothingFound;
}

int runWith(const std::vector<std::wstring>& given) {
    const tools::Arguments arguments = tools::parse(syntax(), given);
    if (arguments.has(L"help")) {
        tools::writeOutput(tools::helpText(syntax()));
        return kFound;
    }
    const Settings settings = settingsOf(arguments, localNow());
    try {
        return view(settings);
    } catch (const tools::OutputClosed&) {
        return kFound;  // somebody has seen enough
    } catch (const tools::Failure& failure) {
        tell(failure.text());
        return kCannotRead;
    }
}

}  // namespace

}  // namespace vorellog

int wmain(int count, wchar_t** arguments) {
    return tools::run(vorellog::kProgram, [&] { return vorellog::runWith({arguments + 1, arguments + count}); });
}
