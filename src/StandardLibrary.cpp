/// \file
/// Defines the symbol that is named after this build's standard library. A C++ program refers to the symbol of the
/// standard library that it is compiled with, so it does not link if the two libraries differ (see Export.h).

#include "vorel/Export.h"

namespace vorel::detail {

void VOREL_STANDARD_LIBRARY() noexcept {}

}  // namespace vorel::detail
