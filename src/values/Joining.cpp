#include "vorel/values/Joining.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "vorel/core/Protocol.h"

namespace vorel::util {

namespace {

constexpr wchar_t kQuote = L'"';
constexpr std::uint64_t kReservedPerItem = 32;

/// Whether an item has to be quoted. The search for the delimiter never goes back: a character that ends a partial
/// match is not looked at again as the start of another.
bool needsQuotes(std::wstring_view item, std::wstring_view delimiter) noexcept {
    std::size_t matched = 0;
    for (const wchar_t unit : item) {
        if (unit == kQuote) {
            return true;
        }
        if (delimiter.empty()) {
            continue;
        }
        matched = unit == delimiter[matched] ? matched + 1 : 0;
        if (matched == delimiter.size()) {
            return true;
        }
    }
    return false;
}

void append(BaseString<wchar_t>& result, std::wstring_view text) {
    result.append(text.data(), static_cast<unsigned int>(text.size()));
}

void appendQuoted(BaseString<wchar_t>& result, std::wstring_view item) {
    result.append(kQuote);
    for (std::size_t quote = item.find(kQuote); quote != std::wstring_view::npos; quote = item.find(kQuote)) {
        append(result, item.substr(0, quote + 1));
        result.append(kQuote);
        item.remove_prefix(quote + 1);
    }
    append(result, item);
    result.append(kQuote);
}

bool isQuotedAlready(std::wstring_view item) noexcept {
    return item.size() > 1 && item.front() == kQuote && item.back() == kQuote;
}

}  // namespace

void multipleStringsToSingleString(const Array<BaseString<wchar_t>>& items, const wchar_t* delimiter,
                                   BaseString<wchar_t>& result) {
    const std::uint64_t reserved = items.size() * kReservedPerItem;
    if (reserved >= BaseString<wchar_t>::kUnknownLength) {
        detail::throwMemory(BaseString<wchar_t>::kUnknownLength, sizeof(wchar_t));
    }
    result.reserve(static_cast<unsigned int>(reserved), true);
    result.clear();
    if (items.size() == 1 && isQuotedAlready(items[0].view())) {
        result = items[0];
        return;
    }
    const std::wstring_view between = delimiter ? delimiter : L"";
    for (const BaseString<wchar_t>& item : items) {
        if (&item != items.begin()) {
            append(result, between);
        }
        if (needsQuotes(item.view(), between)) {
            appendQuoted(result, item.view());
        } else {
            append(result, item.view());
        }
    }
}

BaseString<wchar_t> multipleStringsToSingleString(const Array<BaseString<wchar_t>>& items, const wchar_t* delimiter) {
    BaseString<wchar_t> result;
    multipleStringsToSingleString(items, delimiter, result);
    return result;
}

}  // namespace vorel::util
