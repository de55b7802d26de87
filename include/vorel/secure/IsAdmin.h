/// \file
/// Whether the user of this process is an administrator.
#pragma once

#include "vorel/Export.h"

namespace vorel {

/// Whether the user of the process belongs to the built-in Administrators group; false if that cannot be determined.
///
/// The result is about the user of the process, even if the calling thread impersonates another user. During the call
/// the thread impersonates its own process; afterwards it has the same token as before, or none if it had none. If that
/// token cannot be opened, the call returns false and changes nothing. If the system does not set it again, the call
/// returns false, a warning in the error log gives the reason, and the thread acts as its process: a program that acts
/// for a client should check its token after a false result. Thread-safe.
VOREL_API bool IsAdmin() noexcept;

}  // namespace vorel
