/// \file
/// The character type of wide text, with units of 16 bits. Where `wchar_t` is larger, that is on every system but
/// Windows, the algorithms compile with another type.
#pragma once

#include <type_traits>

namespace vorel::algorithms {

using WideUnit = std::conditional_t<sizeof(wchar_t) == 2, wchar_t, char16_t>;

}  // namespace vorel::algorithms
