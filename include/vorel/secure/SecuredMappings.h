/// \file
/// Named file mappings that processes under different users share, with the security of the named mutexes and events:
/// everyone may use them, nobody may change their security.
///
/// Protections and accesses are the system's own numbers (PAGE_READWRITE, FILE_MAP_WRITE …). The handle that comes back
/// is the caller's to close. Thread-safe.
#pragma once

#include "vorel/Export.h"

namespace vorel {

/// Creates the mapping `name` over `file` (the system's INVALID_HANDLE_VALUE: over the paging file) with a size of
/// `sizeHigh` and `sizeLow`, the two halves of a number of bytes (both 0: the size of the file), or opens it with
/// `desiredAccess` when it cannot be created.
///
/// `created`, which may be null, becomes 1 when the mapping is new, and 0 otherwise.
/// \returns the handle, null after a failure.
VOREL_API void* ObtainAccessableFileMapping(void* file, unsigned long protection, unsigned long desiredAccess,
                                            unsigned long sizeHigh, unsigned long sizeLow, const wchar_t* name,
                                            int* created) noexcept;

/// Opens the mapping `mappingName` with `desiredAccess` if a size is given and the mapping exists; otherwise creates it
/// over the file `fileName`, which is created when it does not exist. The mapping keeps the file open.
///
/// A failed attempt is repeated without a pause, up to 50 attempts. If a size is given, each attempt that cannot create
/// the mapping opens it: several callers, also in several processes, may open a mapping for the first time at the same
/// time, and each gets a handle. The mapping is new to one of them.
///
/// `fileCreated` and `mappingCreated`, either of which may be null, report what the last attempt created.
/// \returns the handle; null when the system has no memory for a security identifier.
/// \throws Exception, its text opening with "ObtainAccessableFileMappingEx: ", when the path cannot be resolved ("Long
///         API failed for …"), the file cannot be opened ("Unable to create file …"), the attempts are used up
///         ("Opening file mapping failed for …", with the reason why it cannot be created), or anything else fails
///         ("Severe Error while opening …").
VOREL_API void* ObtainAccessableFileMappingEx(const wchar_t* fileName, unsigned long protection,
                                              unsigned long desiredAccess, unsigned long sizeHigh,
                                              unsigned long sizeLow, const wchar_t* mappingName, bool* fileCreated,
                                              bool* mappingCreated);

}  // namespace vorel
