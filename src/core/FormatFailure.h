/// \file
/// The failure of a format that cannot be rendered into a string; defined with the exception family.
#pragma once

namespace vorel::detail {

/// Throws `Exception` "Unable to format: … (…)" with the format and the runtime's text for the current `errno`.
[[noreturn]] void throwUnableToFormat(const char* fmt);
[[noreturn]] void throwUnableToFormat(const wchar_t* fmt);

}  // namespace vorel::detail
