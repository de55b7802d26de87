#include "WholeNumbers.h"

#include <algorithm>

#include "LineFilter.h"

namespace conv {

namespace {

constexpr std::wstring_view kDigits = L"0123456789";

/// Whether the number with these digits is at most `limit`. There may be any number of digits.
bool isAtMost(std::wstring_view digits, unsigned long long limit) {
    digits.remove_prefix(std::min(digits.find_first_not_of(L'0'), digits.size()));
    const std::wstring most = std::to_wstring(limit);
    return digits.size() < most.size() || (digits.size() == most.size() && digits <= most);
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

void refuse(const std::wstring& found, std::wstring_view expected) {
    throw BadInput{0, std::wstring(expected) + L" is expected, found " + shown(found)};
}

void checkAllFit(std::wstring_view text, const WholeNumberLimits& limits, std::wstring_view expected) {
    if (const std::wstring_view number = firstThatDoesNotFit(text, limits); !number.empty()) {
        refuse(std::wstring(number), expected);
    }
}

}  // namespace conv
