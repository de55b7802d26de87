/// \file
/// Named mutexes and events shared by processes of different users. Each is created, or opened if another process has
/// already created it. Every user may use the object, and nobody may change its security: its access list denies
/// WRITE_DAC and WRITE_OWNER to Everyone before it allows everything else. The spelling "Accessable" is intentional.
///
/// A name is used unchanged; the prefix "Global\" makes it machine-wide. The caller must close the returned handle.
/// Thread-safe: creation is atomic in the system, and the attempts cover the case that another process creates the
/// object first.
#pragma once

#include "vorel/Export.h"
#include "vorel/core/BaseString.h"

namespace vorel {

/// Creates the mutex `name` (null: a mutex without a name), owned by the calling thread if `initialOwner` is not 0. If
/// it cannot be created, opens it with the rights to wait and release. If both fail, both are repeated up to `retries`
/// times, each time after a sleep of `sleepMs` milliseconds.
///
/// `created`, which may be null, becomes 1 if the object is new, and 0 otherwise.
/// \returns the handle; null after a failure, with a warning in the error log that names the failed step.
VOREL_API void* ObtainAccessableMutex(int initialOwner, const wchar_t* name, int retries, int sleepMs,
                                      int* created) noexcept;

/// The same for an event: with manual reset if `manualReset` is not 0, and initially signalled if `initialState` is not
/// 0. An event that cannot be created is opened with the rights to wait and set.
/// \returns the handle; null after a failure: `errorText` then says what failed. Otherwise `errorText` is unchanged.
VOREL_API void* ObtainAccessableEvent(int manualReset, int initialState, const wchar_t* name, int retries, int sleepMs,
                                      BaseString<wchar_t>& errorText) noexcept;

}  // namespace vorel
