/// \file
/// The process-wide thread-safety switch, atomic counters that do not depend on it, and the system's sleep.
#pragma once

#include "vorel/Export.h"

namespace vorel {

/// The count of the thread-safety switch, 1 at load. While it is 0, every `AutoCriticalSection` does nothing. Only
/// `EnableThreadSafety` changes the count.
extern VOREL_API unsigned int ThreadSafetyEnabledCount;

/// If `enable` is true, adds 1 to the count. If `enable` is false, subtracts 1 unless the count is 0. By design, the
/// change is not atomic. Call this only while a single thread runs and no `AutoCriticalSection` is held.
VOREL_API void EnableThreadSafety(bool enable) noexcept;

/// Sleeps for `milliseconds`. The value is passed to the system unchanged: 0 yields, -1 never returns.
VOREL_API void Sleep(int milliseconds) noexcept;

namespace forced {

/// Atomically adds 1 to `counter`, or subtracts 1, with a full memory barrier. Returns the new value. Wraps around.
VOREL_API long TalInterlockedIncrement(volatile long& counter) noexcept;
VOREL_API unsigned long TalInterlockedIncrement(volatile unsigned long& counter) noexcept;
VOREL_API long TalInterlockedDecrement(volatile long& counter) noexcept;
VOREL_API unsigned long TalInterlockedDecrement(volatile unsigned long& counter) noexcept;

}  // namespace forced

}  // namespace vorel
