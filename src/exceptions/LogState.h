/// \file
/// The tables and locks of the error log: the debug targets that were ever switched on or off, the silenced threads
/// (whose messages are not written), and the lock of the log's settings.
#pragma once

#include <cstdint>

#include "core/LibraryState.h"
#include "exceptions/DebugTargets.h"
#include "vorel/core/CriticalSections.h"
#include "vorel/core/HashMap.h"

namespace vorel::detail {

struct LogState {
    DebugTargets<char, NoLock> narrowDebugTargets;
    DebugTargets<wchar_t, NoLock> wideDebugTargets;
    /// The ids of the silenced threads, and when each thread was created.
    HashMap<unsigned long, std::uint64_t> silencedThreads{kStateTableBuckets};
    AutoCriticalSection silencedThreadsLock;
    ForcedCriticalSection LogSettingsLock;
};

inline constinit StateObject<LogState> logState;

}  // namespace vorel::detail
