/// \file
/// The process-wide switch of the automatic locks, and small services of the same family: counters that are atomic
/// whatever the switch says, and the system's sleep.
#pragma once

#include "vorel/Export.h"

namespace vorel {

/// 1 at load; while it is 0 every `AutoCriticalSection` does nothing. Moved by `EnableThreadSafety` only.
extern VOREL_API unsigned int ThreadSafetyEnabledCount;

/// Adds one to the count (`true`), or subtracts one unless it is 0 already (`false`). A plain read-modify-write, on
/// purpose: the switch is meant to be flipped while only one thread runs and no automatic lock is held.
VOREL_API void EnableThreadSafety(bool enable) noexcept;

/// Sleeps for `milliseconds`; the value goes to the operating system as it is (0 yields, -1 never returns).
VOREL_API void Sleep(int milliseconds) noexcept;

namespace forced {

/// Atomically add 1 to, or subtract 1 from, `counter`, with a full barrier, and return the new value. They wrap around.
VOREL_API long TalInterlockedIncrement(volatile long& counter) noexcept;
VOREL_API unsigned long TalInterlockedIncrement(volatile unsigned long& counter) noexcept;
VOREL_API long TalInterlockedDecrement(volatile long& counter) noexcept;
VOREL_API unsigned long TalInterlockedDecrement(volatile unsigned long& counter) noexcept;

}  // namespace forced

}  // namespace vorel
