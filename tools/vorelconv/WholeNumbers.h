/// \file
/// Range checks for the whole numbers in a text. The library's parsers do not reject a number that is out of range.
/// They wrap the number around, so the converter checks its digits first.
#pragma once

#include <string>
#include <string_view>

namespace conv {

struct WholeNumberLimits {
    unsigned long long least;  ///< magnitude of the smallest value
    unsigned long long most;
    bool hasSigns = true;  ///< false: '-' is a separator, not a sign
};

/// The first number that is out of range, as written in the text; empty if there is none. Digits after a point belong
/// to a fraction and are ignored.
std::wstring_view firstThatDoesNotFit(std::wstring_view text, const WholeNumberLimits& limits);

/// The limits of 32-bit integers and their descriptions in messages.
inline constexpr WholeNumberLimits kInt32Limits = {2147483648, 2147483647};
inline constexpr WholeNumberLimits kUint32Limits = {0, 4294967295};
inline constexpr std::wstring_view kInt32Expected = L"an integer from -2147483648 to 2147483647";
inline constexpr std::wstring_view kUint32Expected = L"an integer from 0 to 4294967295";

/// \throws BadInput with the message "expected <expected>, found \"<found>\"".
[[noreturn]] void reject(const std::wstring& found, std::wstring_view expected);

/// \throws BadInput for the first number that is out of range.
void checkAllFit(std::wstring_view text, const WholeNumberLimits& limits, std::wstring_view expected);

}  // namespace conv
