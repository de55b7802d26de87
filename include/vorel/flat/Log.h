/// \file
/// The flat interface: the error log, one for the process, whose lines stand between those of any number of other
/// processes. The rules that hold for every function stand in vorelCoreC.h; vorel/exceptions/Exception.h tells more
/// about the log.
///
/// Writing never fails for what happens to the file: a line that cannot be written is dropped without a word.
#pragma once

#include "vorel/flat/Status.h"

#ifdef __cplusplus
extern "C" {
#endif

/// Sets the file; an empty path stands for the default one, "C:\TalvenorError.txt". The library opens it by a narrow
/// path: `VOREL_ERROR_INVALID_TEXT` when the process's code page lacks a character of it,
/// `VOREL_ERROR_INVALID_ARGUMENT` when it has more than 1023 bytes there.
VOREL_API vorel_status vorel_log_set_path(const vorel_char16* path, size_t length);

/// The path of the file.
VOREL_API vorel_status vorel_log_path(vorel_char16* path, size_t capacity, size_t* length);

/// Sets the size in bytes beyond which the file is moved to its backup (".001" appended): 1,000,000 at load. 0 switches
/// the log off, -1 lets it grow.
VOREL_API vorel_status vorel_log_set_limit(int64_t bytes);
VOREL_API vorel_status vorel_log_limit(int64_t* bytes);

/// Writes a line "prefix: message", or just the message when the prefix is empty. The prefix "WARN" makes it a warning.
/// Line feeds in the message are written as they are: what follows looks like a line of its own. May wait for other
/// writers, for about 1.4 seconds in all.
VOREL_API vorel_status vorel_log_write(const vorel_char16* prefix, size_t prefixLength, const vorel_char16* message,
                                       size_t messageLength);

/// Writes a line "DEBUG: target: message" while the target is switched on; otherwise it does nothing.
VOREL_API vorel_status vorel_log_debug(const vorel_char16* target, size_t targetLength, const vorel_char16* message,
                                       size_t messageLength);

/// Switches a debug target on or off; names are compared exactly. The target "LogsIncludeMsecs" adds milliseconds to
/// every line. May be called from any thread at any time, also while other threads write to the log.
VOREL_API vorel_status vorel_log_set_debug_target(const vorel_char16* target, size_t length, int32_t active);

/// Keeps the lines of the calling thread out of the log (0), or lets them in again: also those that the library writes
/// for failures. The choice ends with the thread.
VOREL_API vorel_status vorel_log_set_thread_enabled(int32_t enabled);

#ifdef __cplusplus
}
#endif
