#include "vorel/core/ThreadSafety.h"

#include <windows.h>

namespace vorel {

unsigned int ThreadSafetyEnabledCount = 1;

void EnableThreadSafety(bool enable) noexcept {
    if (enable) {
        ++ThreadSafetyEnabledCount;
    } else if (ThreadSafetyEnabledCount != 0) {
        --ThreadSafetyEnabledCount;
    }
}

void Sleep(int milliseconds) noexcept {
    ::Sleep(static_cast<DWORD>(milliseconds));
}

namespace forced {

long TalInterlockedIncrement(volatile long& counter) noexcept {
    return InterlockedIncrement(&counter);
}

unsigned long TalInterlockedIncrement(volatile unsigned long& counter) noexcept {
    return InterlockedIncrement(&counter);
}

long TalInterlockedDecrement(volatile long& counter) noexcept {
    return InterlockedDecrement(&counter);
}

unsigned long TalInterlockedDecrement(volatile unsigned long& counter) noexcept {
    return InterlockedDecrement(&counter);
}

}  // namespace forced

}  // namespace vorel
