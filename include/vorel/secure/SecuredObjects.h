/// \file
/// Named mutexes and events shared by processes of different users. Each object is created, or opened if another
/// process has already created it. Every user may use the object. Its access list denies WRITE_DAC and WRITE_OWNER to
/// Everyone before it allows everything else, so only the owner of the object can change its access list. An account
/// with the privilege to take ownership, such as an administrator, can become the owner. The spelling "Accessable" is
/// intentional.
///
/// A name is used unchanged; the prefix "Global\" makes it machine-wide. The caller must close the returned handle.
/// Thread-safe: the system creates objects atomically. If another thread or process has created the object first, the
/// call opens that object.
#pragma once

#include "vorel/Export.h"
#include "vorel/core/BaseString.h"

namespace vorel {

/// Creates the mutex `name` (null: a mutex without a name), owned by the calling thread if `initialOwner` is not 0. If
/// the mutex cannot be created, opens it with SYNCHRONIZE access, which allows waiting and releasing. If that fails
/// too, both steps are repeated up to `retries` times, each time after a sleep of `sleepMs` milliseconds. If the mutex
/// already exists, `initialOwner` has no effect.
///
/// `created`, which may be null, becomes 1 if the object is new, and 0 otherwise.
/// \returns the handle; null after a failure, with a warning in the error log that names the failed step.
VOREL_API void* ObtainAccessableMutex(int initialOwner, const wchar_t* name, int retries, int sleepMs,
                                      int* created) noexcept;

/// The same for an event. It has a manual reset if `manualReset` is not 0, and is initially signalled if `initialState`
/// is not 0. If the event already exists, both arguments have no effect. An event that cannot be created is opened with
/// the rights to wait, set and reset.
/// \returns the handle; null after a failure, with the reason in `errorText`, which is otherwise unchanged.
VOREL_API void* ObtainAccessableEvent(int manualReset, int initialState, const wchar_t* name, int retries, int sleepMs,
                                      BaseString<wchar_t>& errorText) noexcept;

}  // namespace vorel
