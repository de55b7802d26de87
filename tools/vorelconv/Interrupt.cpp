#include "Interrupt.h"

#include <atomic>

#include <windows.h>

#include "support/Tool.h"

namespace conv {

namespace {

std::atomic<bool> s_interrupted = false;

BOOL WINAPI onInterrupt(DWORD kind) {
    const bool marks = kind == CTRL_C_EVENT || kind == CTRL_BREAK_EVENT;
    return marks && !s_interrupted.exchange(true);
}

}  // namespace

void watchInterrupts() noexcept {
    SetConsoleCtrlHandler(onInterrupt, TRUE);
}

void throwIfInterrupted() {
    if (s_interrupted) {
        throw tools::Failure(L"interrupted");
    }
}

}  // namespace conv
