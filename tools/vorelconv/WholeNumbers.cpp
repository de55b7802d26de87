#include "WholeNumbers.h"

#include <algorithm>

#include "LineFilter.h"

namespace conv {

namespace {

constexpr std::wstring_view kDigits = L"0123456789";

/// Whether the number with these digits is at most `limit`. Accepts any number of digits.
bool isAtMost(std::wstring_view digits, unsigned long long limit) {
    digits.remove_prefix(std::min(digits.find_first_not_of(L'0'), digits.size()));
    const std::wstring max = std::to_wstring(limit);
    return digits.size() < max.size() || (digits.size() == max.size() && digits <= max);
}

}  // namespace

std::wstring_view firstThatDoesNotFit(std::wstring_view text, const WholeNumberLimits& limits) {
    for (std::size_t start = text.find_first_of(kDigits); start != std::wstring_view::npos;) {
        const std::size_t end = std::min(text.find_first_not_of(kDigits, start), text.size());
        const wchar_t before = start == 0 ? L' ' : text[start - 1];
        const bool isNegative = limits.hasSigns && before == L'-';
        if (before != L'.' && !isAtMost(text.substr(start, end - start), isNegative ? limits.least : limits.most)) {
            const std::size_t first = isNegative ? start - 1 : start;
            return text.substr(first, end - first);
        }
        start = text.find_first_of(kDigits, end);
    }
    return {};
}

void reject(const std::wstring& found, std::wstring_view expected) {
    throw BadInput{0, L"expected " + std::wstring(expected) + L", found " + quoted(found)};
}

void checkAllFit(std::wstring_view text, const WholeNumberLimits& limits, std::wstring_view expected) {
    if (const std::wstring_view number = firstThatDoesNotFit(text, limits); !number.empty()) {
        reject(std::wstring(number), expected);
    }
}

}  // namespace conv
