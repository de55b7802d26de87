/// \file
/// The one form of a double's text.
#pragma once

#include "vorel/values/NumberFormatting.h"

namespace vorel::baseutil {

/// Brings `text`, in a buffer of `capacity` characters, into the library's form and returns it. A text without an
/// exponent stays as it is. Otherwise 'E' becomes 'e', the zeros at the end of the fraction go (under `FO_JSON` one
/// stays when there is nothing else, or is added), the point stays, and an exponent of two digits gets a third. What
/// has no room is not added.
///
///     "5.00000000000000e-02"  →  "5.e-002", with `FO_JSON` "5.0e-002"        "1E+20"  →  "1e+020"
char* makeDoubleFormatConsistent(char* text, unsigned long long capacity, util::FormattingOptions options) noexcept;

}  // namespace vorel::baseutil
