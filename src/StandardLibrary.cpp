/// \file
/// Defines the symbol that is named after this build's standard library. A C++ program refers to the symbol of the
/// standard library that the program uses. If this build uses another standard library, linking the program fails (see
/// Export.h).

#include "vorel/Export.h"

namespace vorel::detail {

void VOREL_STANDARD_LIBRARY() noexcept {}

}  // namespace vorel::detail
