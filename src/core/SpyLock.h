/// \file
/// The lock that `AllocBase::registerSpy` holds while it replaces the spy.
#pragma once

#include "core/LibraryState.h"
#include "vorel/core/CriticalSections.h"

namespace vorel::detail {

inline constinit StateObject<AutoCriticalSection> spyLock;

}  // namespace vorel::detail
