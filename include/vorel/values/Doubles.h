/// \file
/// Rounding and hashing of doubles. No function throws, and every function may be called from any thread.
#pragma once

#include "vorel/Export.h"

namespace vorel::util {

/// The nearest whole number. By design, a value halfway between two whole numbers is rounded down, towards negative
/// infinity.
///
///     2.5 -> 2.0    -2.5 -> -3.0    1.6 -> 2.0
///
/// The C runtime has a `round` of the same signature, which rounds a half away from zero. With `using namespace
/// vorel::util`, a plain `round(value)` is therefore ambiguous, and the compiler reports it. `using vorel::util::round`
/// in a function hides the runtime's function.
VOREL_API double round(double value) noexcept;

/// A hash of the eight bytes of `value`, the least significant first: h = h * 31 + byte. Positive and negative zero
/// have different hashes.
///
///     1.0 -> 7503
VOREL_API unsigned int doubleHashCode(double value) noexcept;

}  // namespace vorel::util
