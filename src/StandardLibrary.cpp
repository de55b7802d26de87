/// \file
/// Defines the symbol that is named after this build's standard library. A C++ program refers to the symbol of its own
/// standard library. If that is not the standard library of this build, linking the program fails (see Export.h).

#include "vorel/Export.h"

namespace vorel::detail {

void VOREL_STANDARD_LIBRARY() noexcept {}

}  // namespace vorel::detail
