/// \file
/// Whether the user of this process is an administrator.
#pragma once

#include "vorel/Export.h"

namespace vorel {

/// Whether the calling user belongs to the built-in Administrators group; false when that cannot be found out.
///
/// The answer is about the user of the process, also while the calling thread impersonates another one. The thread
/// impersonates its own process during the call, and the same token as before afterwards, or none if there was none.
/// When that token cannot be opened, the call returns false and changes nothing. When the system does not set it again,
/// the call returns false, a warning in the error log gives the reason, and the thread acts as its process: a program
/// that acts for a client should check its token after a false result. Thread-safe.
VOREL_API bool IsAdmin() noexcept;

}  // namespace vorel
