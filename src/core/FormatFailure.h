/// \file
/// Reports a format that cannot be rendered. Defined with the exception classes.
#pragma once

namespace vorel::detail {

/// Throws `Exception` "Unable to format: … (…)" with the format and the runtime's text for the current `errno`.
[[noreturn]] void throwUnableToFormat(const char* fmt);
[[noreturn]] void throwUnableToFormat(const wchar_t* fmt);

}  // namespace vorel::detail
