/// \file
/// The character type of wide text. Its units have 16 bits; where those of `wchar_t` have more, as everywhere but on
/// Windows, the kernels can still be compiled, and run over another type.
#pragma once

#include <type_traits>

namespace vorel::kernels {

using WideUnit = std::conditional_t<sizeof(wchar_t) == 2, wchar_t, char16_t>;

}  // namespace vorel::kernels
