/// \file
/// Starts a program again if Wine could not start it.
#pragma once

#include <windows.h>

namespace test {

/// Calls `start`, which calls CreateProcess and returns its result. On a busy machine, CreateProcess under Wine fails
/// with ERROR_INTERNAL_ERROR about once in several thousand calls. `start` is then called again, up to five times in
/// total.
template <class Start>
BOOL startProgram(Start&& start) {
    constexpr int kMaxStarts = 5;
    BOOL started = FALSE;
    for (int attempt = 0; attempt != kMaxStarts && !started; ++attempt) {
        started = start();
        if (!started && GetLastError() != ERROR_INTERNAL_ERROR) {
            break;
        }
    }
    return started;
}

}  // namespace test
