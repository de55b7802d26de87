/// \file
/// The flat interface: a named mutex, which all users on the machine share, and a named condition, which they share if
/// its name begins with "Global\". vorelCoreC.h has the rules for all functions.
#pragma once

#include "vorel/flat/LastError.h"
#include "vorel/flat/Status.h"

#ifdef __cplusplus
extern "C" {
#endif

/// The value of `timeoutMs` for a wait without a time limit.
#define VOREL_WAIT_FOREVER 0xFFFFFFFFu

/// \name Named mutex
/// A recursive lock. The thread that locks it becomes its owner. The owner must unlock the mutex through the handle
/// with which it locked the mutex; other handles cannot unlock it. If the owner ends without unlocking the mutex, the
/// next thread that locks it becomes the owner, with a warning in the error log.
/// \{

/// A handle of a named mutex.
// NOLINTNEXTLINE(modernize-use-using): C includes this header too
typedef struct vorel_mutex vorel_mutex;

/// Opens the mutex `name`, and creates it if it does not exist. The caller must close the handle. The name is
/// machine-wide, and must not be empty or contain a backslash. The status is `VOREL_ERROR_SYSTEM` if the mutex cannot
/// be opened; such a call can last a second.
VOREL_API vorel_status vorel_mutex_open(const vorel_char16* name, size_t length, vorel_mutex** mutex);

/// Locks the mutex, even if the caller already holds it. Waits up to `timeoutMs` milliseconds. The status is
/// `VOREL_ERROR_TIMEOUT` if the mutex is not available in that time, with a warning in the error log unless `timeoutMs`
/// is 0.
VOREL_API vorel_status vorel_mutex_lock(vorel_mutex* mutex, uint32_t timeoutMs);

/// Undoes one `vorel_mutex_lock`. The status is `VOREL_ERROR_NOT_OWNER` if the calling thread does not hold the mutex
/// through this handle.
VOREL_API vorel_status vorel_mutex_unlock(vorel_mutex* mutex);

/// Undoes every lock of the handle and closes the handle. The handle is invalid afterwards, whatever the status. If
/// another thread holds the mutex through this handle, the function waits up to a minute.
VOREL_API vorel_status vorel_mutex_close(vorel_mutex* mutex);

/// \}
/// \name Named condition
/// A signal releases one waiter in any process. If no thread waits, the next waiter is released at once. Signals are
/// not counted: a second signal without a waiter is lost. The condition has no owner: different threads may use the
/// same handle to wait and to signal.
/// \{

/// A handle of a named condition.
// NOLINTNEXTLINE(modernize-use-using): C includes this header too
typedef struct vorel_condition vorel_condition;

/// Opens the condition `name`, and creates it if it does not exist. The caller must close the handle. The name must not
/// be empty and is used unchanged; the prefix "Global\" makes it machine-wide. The status is `VOREL_ERROR_SYSTEM` if
/// the condition cannot be opened; such a call can last half a second.
VOREL_API vorel_status vorel_condition_open(const vorel_char16* name, size_t length, vorel_condition** condition);

/// Releases one waiter. If no thread waits, the next waiter is released at once.
VOREL_API vorel_status vorel_condition_signal(vorel_condition* condition);

/// Waits up to `timeoutMs` milliseconds for a signal. The status is `VOREL_ERROR_TIMEOUT` if no signal came.
VOREL_API vorel_status vorel_condition_wait(vorel_condition* condition, uint32_t timeoutMs);

/// Closes the handle. The handle is invalid afterwards, whatever the status. No thread may be waiting on the handle.
VOREL_API vorel_status vorel_condition_close(vorel_condition* condition);

/// \}

#ifdef __cplusplus
}
#endif
