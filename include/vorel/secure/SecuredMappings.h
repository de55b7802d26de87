/// \file
/// Named file mappings shared by processes of different users, with the security of the named mutexes and events: every
/// user may use them, and nobody may change their security.
///
/// Protections and access rights are the system's values (PAGE_READWRITE, FILE_MAP_WRITE ...). The caller must close
/// the returned handle. Thread-safe.
#pragma once

#include "vorel/Export.h"

namespace vorel {

/// Creates the mapping `name` of `file` (INVALID_HANDLE_VALUE: of the paging file), or opens it with `desiredAccess` if
/// it cannot be created. `sizeHigh` and `sizeLow` are the two halves of its size in bytes (both 0: the size of the
/// file).
///
/// `created`, which may be null, becomes 1 if the mapping is new, and 0 otherwise.
/// Tries once: if another process has created the mapping and ends before this call opens it, the result is null. Call
/// again in that case.
/// \returns the handle; null after a failure.
VOREL_API void* ObtainAccessableFileMapping(void* file, unsigned long protection, unsigned long desiredAccess,
                                            unsigned long sizeHigh, unsigned long sizeLow, const wchar_t* name,
                                            int* created) noexcept;

/// Opens the mapping `mappingName` with `desiredAccess` if a size is given and the mapping exists. Otherwise creates it
/// for the file `fileName`, which is created if it does not exist. The mapping keeps the file open.
///
/// A failed attempt is repeated without a pause, up to 50 attempts. If a size is given, each attempt opens the mapping
/// if it cannot create it. So several callers, in one process or several, may open a new mapping at the same time: each
/// gets a handle, and one of them creates it.
///
/// `fileCreated` and `mappingCreated`, either of which may be null, report what the last attempt created.
/// \returns the handle; null if the system has no memory for a security identifier.
/// \throws Exception whose text starts with "ObtainAccessableFileMappingEx: ": "Long API failed for ..." if the path
///         cannot be resolved; "Unable to create file ..." if the file cannot be opened; "Opening file mapping failed
///         for ..." with the reason why it cannot be created, if all attempts failed; "Severe Error while opening ..."
///         for any other failure.
VOREL_API void* ObtainAccessableFileMappingEx(const wchar_t* fileName, unsigned long protection,
                                              unsigned long desiredAccess, unsigned long sizeHigh,
                                              unsigned long sizeLow, const wchar_t* mappingName, bool* fileCreated,
                                              bool* mappingCreated);

}  // namespace vorel
