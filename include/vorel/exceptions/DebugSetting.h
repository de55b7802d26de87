/// \file
/// A debug switch for clients.
#pragma once

#include "vorel/Export.h"

namespace vorel::util {

/// False at load. The library stores it for its clients and never reads it.
extern VOREL_API bool g_DebugSetting;

}  // namespace vorel::util
