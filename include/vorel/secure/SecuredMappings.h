/// \file
/// Named file mappings, shared by processes of different users. They have the same security as the named mutexes and
/// events: every user may use them, and only the account that owns a mapping can change its security.
///
/// Protections and access rights are the system's values (PAGE_READWRITE, FILE_MAP_WRITE ...). The caller must close
/// the returned handle. Thread-safe.
#pragma once

#include "vorel/Export.h"

namespace vorel {

/// Creates the mapping `name` of `file` (INVALID_HANDLE_VALUE: of the paging file). If that fails, opens the mapping
/// with `desiredAccess`. `sizeHigh` and `sizeLow` are the upper and the lower 32 bits of the mapping's size in bytes
/// (both 0: the size of the file). A null `name` creates a mapping without a name.
///
/// `created`, which may be null, becomes 1 if the mapping is new, and 0 otherwise. The function tries only once. If
/// another process has created the mapping, but closes it or ends before this call opens it, the result is null; call
/// again in that case.
/// \returns the handle; null after a failure.
VOREL_API void* ObtainAccessableFileMapping(void* file, unsigned long protection, unsigned long desiredAccess,
                                            unsigned long sizeHigh, unsigned long sizeLow, const wchar_t* name,
                                            int* created) noexcept;

/// If a size is given and the mapping `mappingName` exists, opens it with `desiredAccess`. Otherwise creates it for the
/// file `fileName`, which is created if it does not exist. The mapping keeps the file open. A null `mappingName`
/// creates a mapping without a name.
///
/// If the mapping cannot be created, the attempt is repeated without a pause, up to 50 attempts in total. If a size is
/// given, each of these attempts also tries to open the mapping, because another caller may have created it. So several
/// threads or processes may call this at the same time for a new mapping: one creates it, and all get a handle. A file
/// that cannot be opened ends the attempts at once.
///
/// `fileCreated` reports whether the last attempt created the file, and `mappingCreated` whether it created the
/// mapping. Each may be null.
/// \returns the handle; null if the system has no memory for a security identifier.
/// \throws Exception whose text is "ObtainAccessableFileMappingEx: " and one of the following texts. "Long API failed
///         for ..." if the path cannot be resolved; "Unable to create file ..." if the file cannot be opened; "Opening
///         file mapping failed for ..." with the reason why the mapping cannot be created, if all attempts failed;
///         "Severe Error while opening ..." for any other failure. MemoryException if memory for the text of a failure
///         runs out.
VOREL_API void* ObtainAccessableFileMappingEx(const wchar_t* fileName, unsigned long protection,
                                              unsigned long desiredAccess, unsigned long sizeHigh,
                                              unsigned long sizeLow, const wchar_t* mappingName, bool* fileCreated,
                                              bool* mappingCreated);

}  // namespace vorel
