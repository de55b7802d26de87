/// \file
/// The symbol to which all programs refer that are compiled with the standard library of this build.

#include "vorel/Export.h"

namespace vorel::detail {

void VOREL_STANDARD_LIBRARY() noexcept {}

}  // namespace vorel::detail
