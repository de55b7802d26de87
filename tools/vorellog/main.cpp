/// \file
/// vorellog: a viewer for the error log.

#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include <windows.h>

#include "support/CommandLine.h"
#include "support/Console.h"
#include "support/Guide.h"
#include "support/OwnedHandle.h"
#include "support/Text.h"
#include "support/Tool.h"
#include "vorellog/Follower.h"
#include "vorellog/InputDecoder.h"
#include "vorellog/LogFiles.h"
#include "vorellog/Settings.h"
#include "vorellog/StandardInput.h"
#include "vorellog/TailStart.h"
#include "vorellog/TimeZone.h"
#include "vorellog/ViewLoop.h"
#include "vorellog/Viewer.h"

namespace vorellog {

namespace {

enum ExitCode : int {
    kFound = tools::kDone,
    kNothingFound = 1,
    kUsageError = tools::kUsageError,
    kCannotRead = 3,
};

constexpr wchar_t kProgram[] = L"vorellog";

void report(const std::wstring& text) {
    tools::report(kProgram, text);
}

/// The event that Ctrl+C and Ctrl+Break set.
HANDLE stopEvent() {
    static HANDLE const event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    return event;
}

/// Waits up to `milliseconds` for the event. Returns true if Ctrl+C or Ctrl+Break has been pressed.
bool isStopped(DWORD milliseconds) {
    return WaitForSingleObject(stopEvent(), milliseconds) == WAIT_OBJECT_0;
}

/// After the first Ctrl+C or Ctrl+Break, the viewer reads to the end of the log, shows the entries and ends. The second
/// one terminates the process.
BOOL WINAPI onControl(DWORD control) {
    if ((control != CTRL_C_EVENT && control != CTRL_BREAK_EVENT) || isStopped(0)) {
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

/// The clock, the stop signal and the error output of this process.
class Process : public Environment {
public:
    LocalMs nowMs() override { return static_cast<LocalMs>(GetTickCount64()); }
    bool waitForStop(LocalMs milliseconds) override { return isStopped(static_cast<DWORD>(milliseconds)); }
    void report(const std::wstring& text) override { vorellog::report(text); }
};

/// The number of rows of the console. Returns 0 if the output is not a console that can redraw the summary.
std::size_t screenRows() {
    return tools::enableEscapeSequences(tools::Stream::Output) ? tools::consoleRows(tools::Stream::Output) : 0;
}

void startAtTail(LogFiles& files, const Settings& settings, InputDecoder& decoder, Follower& follower) {
    try {
        if (const auto start = findTailStart(files, settings)) {
            decoder.startWithin();
            follower.startAt(start->log, start->offset);
        }
    } catch (const FileBusy&) {  // `follower` will then read the backup and the log from their starts
        return;
    }
}

/// Views a log and its backup.
void viewLog(const std::wstring& path, const Settings& settings, Viewer& viewer) {
    DiskLogFiles files(path);
    InputDecoder decoder(viewer, path);
    Follower follower(files, decoder);
    if (settings.tail && settings.paths.size() == 1) {
        startAtTail(files, settings, decoder, follower);
    }
    Process process;
    ViewLoop loop(settings, follower, viewer, process);
    loop.run();
    if (viewer.hasEnough()) {
        decoder.stop();
    } else {
        decoder.endOfFile();
    }
    loop.reportGaps();
    if (!follower.hasFound() && !settings.follow) {
        throw tools::Failure(path + L": log not found");
    }
}

/// Views the logs and the standard input until enough entries were shown. Returns false if one of them cannot be read.
bool viewAll(const Settings& settings, Viewer& viewer) {
    bool good = true;
    for (const std::wstring& path : settings.paths) {
        if (viewer.hasEnough()) {
            break;
        }
        try {
            if (path == kStandardInput) {
                InputDecoder decoder(viewer, L"standard input");
                readStandardInput(decoder, viewer);
            } else {
                viewLog(path, settings, viewer);
            }
        } catch (const tools::Failure& failure) {
            report(failure.text());
            good = false;
        }
    }
    return good;
}

void writeReport(const Settings& settings, const Report& report) {
    std::wstring name = settings.paths.front();
    if (settings.paths.size() > 1) {
        name += L" and " + std::to_wstring(settings.paths.size() - 1) + L" more";
    }
    const tools::OwnedHandle file(
        CreateFileW(settings.report.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) {
        throw tools::systemFailure(settings.report, L"cannot be created");
    }
    const std::string page = report.page(tools::toUtf8(name));
    tools::writeBytes(file.get(), page.data(), page.size(), settings.report);
}

int view(const Settings& settings) {
    Viewer viewer(
        settings, wantsColours(settings), [](std::string_view text) { tools::writeOutput(text); },
        settings.follow ? screenRows() : 0);
    if (settings.follow) {
        SetConsoleCtrlHandler(&onControl, TRUE);
    }
    const bool good = viewAll(settings, viewer);
    viewer.finish();
    if (viewer.report()) {
        writeReport(settings, *viewer.report());
    }
    if (viewer.undecided() != 0) {
        report(L"damaged records not shown, because they have no process, thread, prefix and time: " +
               std::to_wstring(viewer.undecided()));
    }
    if (!good) {
        return kCannotRead;
    }
    if (viewer.hasFound()) {
        return kFound;
    }
    const std::wstring note = viewer.nothingFoundText();
    if (!note.empty() && tools::isConsole(tools::Stream::Output)) {
        report(note);
    }
    return kNothingFound;
}

tools::Guide guide() {
    return {.program = kProgram, .summary = syntax().summary, .commands = {&syntax(), 1}};
}

/// Whether the user asks for help in a common way other than --help. "help" is not such a question if a log with this
/// name exists.
bool isQuestion(const std::vector<std::wstring>& given) {
    if (given.size() != 1) {
        return false;
    }
    const std::wstring& only = given.front();
    return only == L"/?" || only == L"-?" ||
           (only == L"help" && GetFileAttributesW(only.c_str()) == INVALID_FILE_ATTRIBUTES);
}

int runWith(const std::vector<std::wstring>& given) {
    if (isQuestion(given)) {
        tools::writeOutput(tools::helpText(syntax()));
        return kFound;
    }
    const tools::Arguments arguments = tools::parse(syntax(), given);
    if (arguments.has(L"help")) {
        tools::writeOutput(tools::helpText(syntax()));
        return kFound;
    }
    if (const auto shell = arguments.value(L"completion")) {
        tools::writeOutput(tools::completionScript(guide(), *shell));
        return kFound;
    }
    if (arguments.has(L"manual")) {
        tools::writeOutput(tools::manualPage(guide()));
        return kFound;
    }
    if (arguments.has(L"version")) {
        tools::writeOutput(tools::versionText(kProgram));
        return kFound;
    }
    const Settings settings = settingsOf(arguments, {localNow(), utcNow()});
    try {
        return view(settings);
    } catch (const tools::OutputClosed&) {
        return kFound;  // the reader of the output has closed the pipe
    } catch (const tools::Failure& failure) {
        report(failure.text());
        return kCannotRead;
    }
}

}  // namespace

}  // namespace vorellog

int wmain(int count, wchar_t** arguments) {
    return tools::run(vorellog::kProgram, [&] { return vorellog::runWith({arguments + 1, arguments + count}); });
}
