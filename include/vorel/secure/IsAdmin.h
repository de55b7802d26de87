/// \file
/// Whether the user of this process is an administrator.
#pragma once

#include "vorel/Export.h"

namespace vorel {

/// Whether the calling user belongs to the built-in Administrators group; false when that cannot be found out.
///
/// The calling thread impersonates its own process for the length of the call. No impersonation is left behind, also
/// none that the thread had before. Thread-safe.
VOREL_API bool IsAdmin() noexcept;

}  // namespace vorel
