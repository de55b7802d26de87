/// \file
/// The map of code page names, and its lock. The map is filled when it is first used.
#pragma once

#include "core/LibraryState.h"
#include "vorel/core/CriticalSections.h"
#include "vorel/core/HashMap.h"

namespace vorel::detail {

struct CodePageState {
    HashMap<const char*, unsigned int, NameEqual> codePageNames{kStateTableBuckets};
    AutoCriticalSection codeMapLock;
};

inline constinit StateObject<CodePageState> codePageState;

}  // namespace vorel::detail
