/// \file
/// Whether the whole numbers of a text fit into a type. The library's parsers wrap around without a word; the converter
/// looks at the digits, so that no number silently becomes another one.
#pragma once

#include <string>
#include <string_view>

namespace conv {

struct WholeNumberLimits {
    unsigned long long least;  ///< as the digits behind a '-'
    unsigned long long most;
    bool hasSigns = true;  ///< false: a '-' is not part of a number
};

/// The first number that does not fit, as it stands in the text; empty when all do. Digits behind a point are those of
/// a fraction, and not looked at.
std::wstring_view firstThatDoesNotFit(std::wstring_view text, const WholeNumberLimits& limits);

/// The limits of 32 bits, and what messages call them.
inline constexpr WholeNumberLimits kInt32Limits = {2147483648, 2147483647};
inline constexpr WholeNumberLimits kUint32Limits = {0, 4294967295};
inline constexpr std::wstring_view kInt32Expected = L"an integer from -2147483648 to 2147483647";
inline constexpr std::wstring_view kUint32Expected = L"an integer from 0 to 4294967295";

/// \throws BadInput that says what was expected instead of `found`.
[[noreturn]] void refuse(const std::wstring& found, std::wstring_view expected);

/// \throws BadInput for the first number that does not fit.
void checkAllFit(std::wstring_view text, const WholeNumberLimits& limits, std::wstring_view expected);

}  // namespace conv
