/// \file
/// The flat interface: a mutex and a condition with names, which all processes of the machine share, whatever user they
/// run under. The rules that hold for every function stand in vorelCoreC.h.
#pragma once

#include "vorel/flat/Status.h"

#ifdef __cplusplus
extern "C" {
#endif

/// As a time limit: none.
#define VOREL_WAIT_FOREVER 0xFFFFFFFFu

/// \name Named mutex
/// A recursive lock. It belongs to the thread that took it, and to the handle through which it did. When its owner ends
/// without giving it back, the next one to take it gets it, with a warning in the error log.
/// \{

// NOLINTNEXTLINE(modernize-use-using): C reads this, too
typedef struct vorel_mutex vorel_mutex;

/// Opens the mutex of this name, and creates it when nobody has it open; the handle is the caller's to close. The name
/// is not empty and has no backslash; it is machine-wide. `VOREL_ERROR_SYSTEM` when it cannot be had, which may take a
/// second.
VOREL_API vorel_status vorel_mutex_open(const vorel_char16* name, size_t length, vorel_mutex** mutex);

/// Takes the mutex, or takes it once more, and waits for it for up to `timeoutMs` milliseconds. `VOREL_ERROR_TIMEOUT`
/// when it is not to be had in that time; with a limit other than 0 the error log gets a warning then.
VOREL_API vorel_status vorel_mutex_lock(vorel_mutex* mutex, uint32_t timeoutMs);

/// Gives back what one `vorel_mutex_lock` took. `VOREL_ERROR_NOT_OWNER` when the calling thread does not hold the mutex
/// through this handle.
VOREL_API vorel_status vorel_mutex_unlock(vorel_mutex* mutex);

/// Gives back every hold of the handle and closes it; whatever the status, the handle is gone. When another thread
/// holds it, waits for up to a minute.
VOREL_API vorel_status vorel_mutex_close(vorel_mutex* mutex);

/// \}
/// \name Named condition
/// A signal releases one waiter of all processes, or the next one to come; a second signal that finds none waiting is
/// lost. It belongs to nobody: one thread may wait, and another one signal, through the same handle.
/// \{

// NOLINTNEXTLINE(modernize-use-using): C reads this, too
typedef struct vorel_condition vorel_condition;

/// Opens the condition of this name, and creates it when nobody has it open; the handle is the caller's to close. The
/// name is not empty, and used as it is: "Global\" in front makes it machine-wide. `VOREL_ERROR_SYSTEM` when it cannot
/// be had.
VOREL_API vorel_status vorel_condition_open(const vorel_char16* name, size_t length, vorel_condition** condition);

/// Releases one waiter, or the next one to come.
VOREL_API vorel_status vorel_condition_signal(vorel_condition* condition);

/// Waits for a signal for up to `timeoutMs` milliseconds. `VOREL_ERROR_TIMEOUT` when there was none.
VOREL_API vorel_status vorel_condition_wait(vorel_condition* condition, uint32_t timeoutMs);

/// Closes the handle; whatever the status, it is gone. No thread may wait through it.
VOREL_API vorel_status vorel_condition_close(vorel_condition* condition);

/// \}

#ifdef __cplusplus
}
#endif
