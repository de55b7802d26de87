/// \file
/// The priority class of the current process.
#pragma once

#include "vorel/Export.h"

namespace vorel::util {

/// The classes that a process may ask for.
enum ProcessPriorityClass : int {
    PPC_AboveNormal = 0,
    PPC_Normal = 1,
    PPC_BelowNormal = 2,
};

/// Sets the priority class of the current process; a value that is none of the three sets the normal one. The second
/// argument is not used. A failure is not reported.
VOREL_API void SetProcessPriority(ProcessPriorityClass priority, int);

}  // namespace vorel::util
