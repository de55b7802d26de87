/// \file
/// The canonical form of a double's text.
#pragma once

#include "vorel/values/NumberFormatting.h"

namespace vorel::baseutil {

/// Normalises `text`, in a buffer of `capacity` characters, and returns it. Text without an exponent is unchanged.
/// Otherwise 'E' becomes 'e', trailing zeros of the fraction are removed, the point is kept, and an exponent of two
/// digits gets a leading zero. With `FO_JSON`, a text with an exponent also gets a point and a zero after the point if
/// it has no fraction. Characters that do not fit are not added.
///
///     "5.00000000000000e-02"  →  "5.e-002", with `FO_JSON` "5.0e-002"        "1E+20"  →  "1e+020"
char* makeDoubleFormatConsistent(char* text, unsigned long long capacity, util::FormattingOptions options) noexcept;

}  // namespace vorel::baseutil
