/// \file
/// The flat interface: code pages of the system. vorelCoreC.h has the rules for all functions.
#pragma once

#include "vorel/flat/Status.h"

#ifdef __cplusplus
extern "C" {
#endif

/// \name Code pages
/// A code page is identified by its number in the system, 1 to 65534. Any other number gives
/// `VOREL_ERROR_INVALID_ARGUMENT`. `VOREL_ERROR_UNSUPPORTED` means that the system does not support the code page.
/// The result for an empty text is empty, even if the system does not support the code page. Texts may contain zeros,
/// but names must not.
/// \{

/// Returns the number of the code page `name`. Names are not case-sensitive. The status is `VOREL_ERROR_UNKNOWN_NAME`
/// if no code page has this name. The function does not check whether the system supports the code page.
///
///     "latin1"  ->  28591
VOREL_API vorel_status vorel_code_page_by_name(const vorel_char16* name, size_t length, int32_t* codePage);

/// Converts bytes of a code page to UTF-16. The status is `VOREL_ERROR_INVALID_TEXT` if the bytes are not valid in the
/// code page. For some code pages, the system cannot check whether bytes are valid. The status is then
/// `VOREL_ERROR_UNSUPPORTED`, although the system supports the code page. These code pages are 42, 50220, 50221, 50222,
/// 50225, 50227, 50229, 57002 to 57011, and 65000 (UTF-7).
VOREL_API vorel_status vorel_code_page_to_utf16(int32_t codePage, const void* bytes, size_t size, vorel_char16* output,
                                                size_t capacity, size_t* outputLength);

/// Converts UTF-16 to bytes of a code page. A character that the code page lacks becomes a similar character or the
/// default character of the code page. `replaced`, which may be null, becomes 1 if the default character was used, 0 if
/// not, and -1 if the code page cannot report this (for example UTF-8).
VOREL_API vorel_status vorel_utf16_to_code_page(int32_t codePage, const vorel_char16* text, size_t length, void* output,
                                                size_t capacity, size_t* outputLength, int32_t* replaced);

/// \}

#ifdef __cplusplus
}
#endif
