/// \file
/// The symbol that every program refers to if it is compiled with this build's standard library.

#include "vorel/Export.h"

namespace vorel::detail {

void VOREL_STANDARD_LIBRARY() noexcept {}

}  // namespace vorel::detail
