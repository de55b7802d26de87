#include "vorel/values/Splitting.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>

#include "algorithms/Ascii.h"
#include "algorithms/Splitting.h"
#include "core/HeldInputs.h"
#include "vorel/core/Protocol.h"
#include "vorel/exceptions/Exception.h"

namespace vorel::util {

namespace {

template <class T>
using View = std::basic_string_view<T>;

template <class T>
View<T> viewOf(const T* text) noexcept {
    return text ? View<T>(text) : View<T>();
}

template <class T>
BaseString<T> stringOf(View<T> text) {
    return BaseString<T>(text.data(), static_cast<unsigned int>(text.size()));
}

/// Reserves capacity for `more` parts at once, because each growth copies all strings of the array.
template <class T>
void reserveMore(Array<BaseString<T>>& parts, std::size_t more) {
    parts.reserve(parts.size() + static_cast<unsigned int>(std::min<std::size_t>(more, 0xFFFFFFFFu - parts.size())));
}

template <class T>
void split(const T* text, const T* delimiterText, Array<BaseString<T>>& parts) {
    // The text and the delimiter may be elements of `parts`, which releases its elements when it grows.
    const BaseString<T> copy(text);
    const BaseString<T> delimiterCopy(delimiterText);
    const View<T> delimiter = delimiterCopy.view();
    reserveMore(parts, algorithms::countParts(copy.view(), delimiter));
    algorithms::splitAtDelimiters(copy.view(), delimiter, [&parts](View<T> part) { parts.append(stringOf(part)); });
}

/// Consumes a quoted item and returns true. If its quotes are invalid, calls `Exception::trace`, consumes nothing, and
/// returns false; `item` may then contain a part of the text.
template <class T>
bool consumeQuoted(algorithms::QuotedItems<T>& items, BaseString<T>& item) {
    switch (items.consumeQuoted(item)) {
    case algorithms::Quotes::Closed: return true;
    case algorithms::Quotes::NeverClosed:
        Exception::trace("singleCToMultipleD() - ending text without 2nd double quote");
        break;
    case algorithms::Quotes::TextAfterQuote:
        Exception::trace("singleCToMultipleD() - non-delimitors after 2nd double quote");
        break;
    }
    return false;
}

template <class T>
BaseString<T> nextItem(algorithms::QuotedItems<T>& items, bool trim) {
    BaseString<T> item;
    if (!items.isQuoted() || !consumeQuoted(items, item)) {
        const View<T> plain = items.consumePlain();
        item = stringOf(trim ? algorithms::trimmed(plain) : plain);
    } else if (trim) {
        item = stringOf(algorithms::trimmed(item.view()));
    }
    return item;
}

template <class T>
void splitQuoted(const T* text, const T* delimiters, Array<BaseString<T>>& items, bool trim) {
    Array<BaseString<T>> kept;
    const bool isInput = std::any_of(items.begin(), items.end(), [=](const BaseString<T>& item) {
        return detail::holds(item, text) || detail::holds(item, delimiters);
    });
    if (isInput) {
        // The text or the delimiters belong to an old item, so the old items must live until the text has been split.
        kept = std::exchange(items, {});
    } else {
        items.clear();
    }
    algorithms::QuotedItems<T> rest(viewOf(text), viewOf(delimiters));
    if (!rest.atEnd()) {
        reserveMore(items, rest.maxItems());
    }
    while (!rest.atEnd()) {
        items.append(nextItem(rest, trim));
    }
}

/// The number of slots to reserve for tokens: `maxTokens`, but at least 0. If `maxTokens` is above 1,024, the number is
/// at most the number of tokens that the text can have.
template <class T>
unsigned int slotsFor(const T* text, int maxTokens) noexcept {
    constexpr int kReservedAtOnce = 1024;
    if (maxTokens <= kReservedAtOnce) {
        return static_cast<unsigned int>(std::max(maxTokens, 0));
    }
    return static_cast<unsigned int>(
        std::min<std::size_t>(static_cast<unsigned int>(maxTokens), viewOf(text).size() + 1));
}

template <class T>
int tokenize(T* text, const T* delimiter, Array<T*>& tokens, int maxTokens) {
    return detail::runRethrowing(L"vorel::util", L"tokenizeString", [=, &tokens] {
        // The delimiter is read before the text is changed, because the delimiter may be part of the text.
        const T cut = delimiter ? *delimiter : T{};
        tokens.clear();
        tokens.reserve(slotsFor(text, maxTokens));
        if (!text) {
            return 0;
        }
        return static_cast<int>(
            algorithms::tokenizeInPlace(text, cut, maxTokens, [&tokens](T* token) { tokens.append(token); }));
    });
}

}  // namespace

void splitString(const char* text, const char* delimiter, Array<BaseString<char>>& parts) {
    split(text, delimiter, parts);
}

void splitString(const wchar_t* text, const wchar_t* delimiter, Array<BaseString<wchar_t>>& parts) {
    split(text, delimiter, parts);
}

void singleStringToMultipleStrings(const wchar_t* text, const wchar_t* delimiters, Array<BaseString<wchar_t>>& items,
                                   bool trim) {
    splitQuoted(text, delimiters, items, trim);
}

void singleCStringToMultipleCStrings(const char* text, const char* delimiters, Array<BaseString<char>>& items,
                                     bool trim) {
    splitQuoted(text, delimiters, items, trim);
}

int tokenizeString(char* text, const char* delimiter, Array<char*>& tokens, int maxTokens) {
    return tokenize(text, delimiter, tokens, maxTokens);
}

int tokenizeString(wchar_t* text, const wchar_t* delimiter, Array<wchar_t*>& tokens, int maxTokens) {
    return tokenize(text, delimiter, tokens, maxTokens);
}

}  // namespace vorel::util
