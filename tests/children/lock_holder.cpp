/// \file
/// Locks a whole file as a writer of the error log does, and keeps the lock.
///
///     log=<path> held=<event> release=<event> holdMs=<limit> [text=<text to append, without a line end>]
///
/// Sets `held` after it has locked the file and written the text. Unlocks the file when `release` is set, or after the
/// limit.

#include <string>

#include <windows.h>

#include "support/ChildArguments.h"
#include "support/Handle.h"
#include "support/NamedEvent.h"

namespace {

int holdLock(const test::ChildArguments& arguments) {
    const test::NamedEvent held(arguments.wide("held"));
    const test::NamedEvent release(arguments.wide("release"));

    const test::Handle file(CreateFileA(arguments.text("log").c_str(), FILE_APPEND_DATA | GENERIC_READ,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS, 0, nullptr));
    OVERLAPPED fromStart = {};
    if (!file || !LockFileEx(file.get(), LOCKFILE_EXCLUSIVE_LOCK, 0, 0xFFFFFFFF, 0xFFFFFFFF, &fromStart)) {
        return 1;
    }
    const std::string text = arguments.text("text");
    DWORD written = 0;
    if (!text.empty() && !WriteFile(file.get(), text.data(), static_cast<DWORD>(text.size()), &written, nullptr)) {
        return 2;
    }
    held.set();
    (void)release.wait(static_cast<DWORD>(arguments.number("holdMs")));
    return UnlockFileEx(file.get(), 0, 0xFFFFFFFF, 0xFFFFFFFF, &fromStart) ? 0 : 3;
}

}  // namespace

int main(int argumentCount, char** arguments) {
    try {
        return holdLock({argumentCount, arguments});
    } catch (...) {
        return 4;
    }
}
