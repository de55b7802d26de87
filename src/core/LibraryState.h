/// \file
/// Everything that the library creates at load, in the order in which it is created; it is destroyed in reverse.
#pragma once

#include "exceptions/DebugTargets.h"
#include "exceptions/InvalidParameter.h"
#include "exceptions/ThreadLogging.h"
#include "flat/LastError.h"
#include "vorel/core/HashMap.h"
#include "vorel/sync/CriticalSections.h"
#include "vorel/text/Base64.h"

namespace vorel::detail {

struct LibraryState {
    static constexpr unsigned int kTableBuckets = 31;

    AutoCriticalSection spyLock;
    bool base64Tables = util::Base64::initializeBase64Tables();
    DebugTargets<char, NoLock> narrowDebugTargets;
    DebugTargets<wchar_t, NoLock> wideDebugTargets;
    HashMap<unsigned long, bool> silencedThreads{kTableBuckets};
    AutoCriticalSection silencedThreadsLock;
    ForcedCriticalSection LogSettingsLock;
    HashMap<const char*, unsigned int, NameEqual> codePageNames{kTableBuckets};
    AutoCriticalSection codeMapLock;
    flat::LastErrors lastErrors;
    SilencedThreadEnds silencedThreadEnds;
    SetCurrentIPH currentHandler;  // goes first, so that the runtime calls back into nothing that is gone
};

/// The state, or null while it is being created, after it was destroyed, or when it could not be created. A caller goes
/// without it then: a library that logs while it is being loaded or unloaded must not crash.
///
/// It is created when the library is loaded, or earlier, when a global object of the program asks first (static form).
LibraryState* libraryState() noexcept;

}  // namespace vorel::detail
