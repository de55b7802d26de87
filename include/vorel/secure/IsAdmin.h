/// \file
/// A check whether the user of the process is an administrator.
#pragma once

#include "vorel/Export.h"

namespace vorel {

/// Whether the process has the rights of the built-in Administrators group; false if that cannot be determined. With
/// User Account Control, a process that an administrator starts without elevation lacks these rights, so the result is
/// false.
///
/// The result is about the user of the process, even if the calling thread impersonates another user. During the call
/// the thread impersonates its own process. Afterwards the thread's token is restored. If the thread had no token, it
/// has none again. If the thread's token cannot be opened or removed, the call returns false and changes nothing. If
/// the token cannot be restored, the call returns false, a warning in the error log gives the reason, and the thread
/// acts as its process. So a program that acts for a client should check the thread's token after a false result.
/// Thread-safe.
VOREL_API bool IsAdmin() noexcept;

}  // namespace vorel
