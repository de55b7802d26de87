/// \file
/// The flat interface: the error log. A process has one log file at a time, and any number of processes may write to
/// the same file. vorelCoreC.h has the rules for all functions; vorel/exceptions/Exception.h describes the log.
///
/// File errors are not reported: a line that cannot be written is dropped silently.
#pragma once

#include "vorel/flat/LastError.h"
#include "vorel/flat/Status.h"

#ifdef __cplusplus
extern "C" {
#endif

/// Sets the path of the file. An empty path selects the default, "C:\TalvenorError.txt". The library converts the path
/// to the code page in which the runtime reads paths: UTF-8 if the program's locale uses UTF-8, otherwise the code page
/// of the process. The locale must not change to or from UTF-8 afterwards. The status is `VOREL_ERROR_INVALID_TEXT` if
/// the code page lacks a character or if a surrogate is unpaired, and `VOREL_ERROR_INVALID_ARGUMENT` if the converted
/// path is longer than 1023 bytes. The call also installs the library's invalid-parameter handler, as
/// `Exception::SetErrorLogLocation` does.
VOREL_API vorel_status vorel_log_set_path(const vorel_char16* path, size_t length);

/// Returns the path of the file.
VOREL_API vorel_status vorel_log_path(vorel_char16* path, size_t capacity, size_t* length);

/// `vorel_log_set_limit` sets the size limit in bytes, and `vorel_log_limit` returns it. The limit is 1,000,000 at
/// load. A file beyond the limit is moved to its backup (".001" appended), unless it has 2 GiB or more. A limit of 0
/// switches the log off, and -1 means that the file is never moved. Other negative limits give
/// `VOREL_ERROR_INVALID_ARGUMENT`.
VOREL_API vorel_status vorel_log_set_limit(int64_t bytes);
VOREL_API vorel_status vorel_log_limit(int64_t* bytes);

/// Writes a line "prefix: message", or only the message if the prefix is empty. If the prefix is "WARN", the line is a
/// warning. Line feeds in the message are not escaped, so the text after a line feed looks like a new line of the log.
/// The call can wait for other writers of the file, about 1.4 seconds at most.
VOREL_API vorel_status vorel_log_write(const vorel_char16* prefix, size_t prefixLength, const vorel_char16* message,
                                       size_t messageLength);

/// Writes a line "DEBUG: target: message" if the target is switched on; otherwise does nothing.
VOREL_API vorel_status vorel_log_debug(const vorel_char16* target, size_t targetLength, const vorel_char16* message,
                                       size_t messageLength);

/// Switches a debug target on or off. Names are compared exactly. The target "LogsIncludeMsecs" adds milliseconds to
/// every line. May be called from any thread at any time, even while other threads write to the log.
VOREL_API vorel_status vorel_log_set_debug_target(const vorel_char16* target, size_t length, int32_t active);

/// Disables (0) or enables the log for the calling thread, including the lines that the library writes for failures.
/// The setting ends with the thread.
VOREL_API vorel_status vorel_log_set_thread_enabled(int32_t enabled);

#ifdef __cplusplus
}
#endif
