/// \file
/// The canonical form of a double's text.
#pragma once

#include "vorel/values/NumberFormatting.h"

namespace vorel::baseutil {

/// Normalises `text` and returns it. The buffer has space for `capacity` characters, terminator included. Text without
/// an exponent is unchanged. Otherwise 'E' becomes 'e', trailing zeros of the fraction are removed, the point is kept,
/// and an exponent of a sign and two digits gets a leading zero. With `FO_JSON`, the text then has at least one digit
/// after the point: one zero of a fraction of zeros is kept, and a missing fraction is added, with the point if
/// necessary. Characters that do not fit are not added.
///
///     "5.00000000000000e-02"  →  "5.e-002", with `FO_JSON` "5.0e-002"        "1E+20"  →  "1e+020"
char* makeDoubleFormatConsistent(char* text, unsigned long long capacity, util::FormattingOptions options) noexcept;

}  // namespace vorel::baseutil
