/// \file
/// The priority class of the current process.
#pragma once

#include "vorel/Export.h"

namespace vorel::util {

/// The supported priority classes.
enum ProcessPriorityClass : int {
    PPC_AboveNormal = 0,
    PPC_Normal = 1,
    PPC_BelowNormal = 2,
};

/// Sets the priority class of the current process; an unknown value sets the normal class. The second argument is
/// ignored. Failures are not reported.
VOREL_API void SetProcessPriority(ProcessPriorityClass priority, int);

}  // namespace vorel::util
