/// \file
/// Named mutexes and events that processes under different users share: each is created, or opened when another process
/// has made it already. Everyone may use the object, and nobody may change its security: its access list denies
/// WRITE_DAC and WRITE_OWNER to Everyone before it allows everything else. The spelling "Accessable" is meant.
///
/// A name is used as it is; "Global\" in front of it makes it machine-wide. The handle that comes back is the caller's
/// to close. Thread-safe: creating is atomic in the system, and the attempts cover the race in which another process
/// creates the object first.
#pragma once

#include "vorel/Export.h"
#include "vorel/core/BaseString.h"

namespace vorel {

/// Creates the mutex `name` (null: a mutex without a name), owned by the calling thread if `initialOwner` is not 0, or
/// opens it for waiting and releasing when it cannot be created. When neither goes, both are tried again up to
/// `retries` times, each time after a sleep of `sleepMs` milliseconds.
///
/// `created`, which may be null, becomes 1 when the object is new, and 0 otherwise.
/// \returns the handle; null after a failure, with a warning in the error log that says what failed.
VOREL_API void* ObtainAccessableMutex(int initialOwner, const wchar_t* name, int retries, int sleepMs,
                                      int* created) noexcept;

/// The same for an event: reset by hand if `manualReset` is not 0, and signalled from the start if `initialState` is
/// not 0. An event that cannot be created is opened for waiting and setting.
/// \returns the handle; null after a failure, and then `errorText` says what failed. It is left alone otherwise.
VOREL_API void* ObtainAccessableEvent(int manualReset, int initialState, const wchar_t* name, int retries, int sleepMs,
                                      BaseString<wchar_t>& errorText) noexcept;

}  // namespace vorel
