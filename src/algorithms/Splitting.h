/// \file
/// Splits text of either width: at each occurrence of a delimiter, at delimiters outside of quotes, or in place by
/// overwriting each delimiter with a terminator.
#pragma once

#include <cstddef>
#include <string_view>

#include "algorithms/UnitSearch.h"

namespace vorel::algorithms {

/// Passes the parts of a text to `take(part)`: each part that ends at a delimiter, and the text after the last
/// delimiter unless it is empty. An empty delimiter never matches.
template <class T, class Take>
void splitAtDelimiters(std::basic_string_view<T> text, std::basic_string_view<T> delimiter, Take&& take) {
    constexpr std::size_t kNone = std::basic_string_view<T>::npos;
    while (!text.empty()) {
        const std::size_t at = delimiter.empty() ? kNone : findText(text, delimiter);
        take(text.substr(0, at));
        text.remove_prefix(at == kNone ? text.size() : at + delimiter.size());
    }
}

/// The number of parts that `splitAtDelimiters` passes.
template <class T>
std::size_t countParts(std::basic_string_view<T> text, std::basic_string_view<T> delimiter) noexcept {
    if (delimiter.size() == 1 && !text.empty()) {
        return countUnit(text, delimiter.front()) + (text.back() != delimiter.front());
    }
    std::size_t count = 0;
    splitAtDelimiters(text, delimiter, [&count](std::basic_string_view<T>) { ++count; });
    return count;
}

/// Result of parsing a quoted item.
enum class Quotes {
    Closed,          ///< the item was consumed
    NeverClosed,     ///< the closing quote is missing
    TextAfterQuote,  ///< text that does not begin with a delimiter follows the closing quote
};

/// Iterates over items that may be in double quotes. Each of the delimiter characters ends an item.
template <class T>
class QuotedItems {
public:
    using View = std::basic_string_view<T>;

    QuotedItems(View text, View delimiters) noexcept : m_rest(text), m_delimiters(delimiters) {}

    [[nodiscard]] bool atEnd() const noexcept { return m_rest.empty(); }

    /// An upper bound of the number of remaining items.
    [[nodiscard]] std::size_t maxItems() const noexcept { return m_delimiters.countIn(m_rest) + 1; }

    /// Whether the next item begins with a quote. Must not be called at the end.
    [[nodiscard]] bool isQuoted() const noexcept { return m_rest.front() == '"'; }

    /// Consumes an item that is not in quotes, or whose quotes are invalid. Returns the text up to the next delimiter,
    /// including any quotes.
    View consumePlain() noexcept {
        const std::size_t end = m_delimiters.findIn(m_rest);
        const View item = m_rest.substr(0, end);
        m_rest.remove_prefix(end == View::npos ? m_rest.size() : end + 1);
        return item;
    }

    /// Consumes a quoted item and passes its pieces to `item.append(text, count)`. If the quotes are invalid, nothing
    /// is consumed, but pieces may have been appended.
    template <class String>
    Quotes consumeQuoted(String& item) {
        View rest = m_rest.substr(1);
        for (;;) {
            const std::size_t quote = findUnit(rest, T{'"'});
            if (quote == View::npos) {
                return Quotes::NeverClosed;
            }
            item.append(rest.data(), static_cast<unsigned int>(quote));
            rest.remove_prefix(quote + 1);
            if (rest.empty() || rest.front() != '"') {
                break;
            }
            item.append(rest.data(), 1);
            rest.remove_prefix(1);
        }
        if (!rest.empty() && !m_delimiters.contains(rest.front())) {
            return Quotes::TextAfterQuote;
        }
        m_rest = rest.empty() ? rest : rest.substr(1);
        return Quotes::Closed;
    }

private:
    View m_rest;
    UnitSet<T> m_delimiters;
};

/// Splits a text at each `delimiter`: overwrites the delimiter with a terminator, and passes the start of each token to
/// `take`. A `delimiter` of zero never matches. If `limit` is 0 or more, stops after `limit` tokens, but passes at
/// least one token. Returns the number of tokens.
template <class T, class Take>
unsigned int tokenizeInPlace(T* text, T delimiter, int limit, Take&& take) {
    take(text);
    unsigned int count = 1;
    for (T* cursor = text; *cursor && (limit < 0 || count < static_cast<unsigned int>(limit)); ++cursor) {
        if (*cursor == delimiter) {
            *cursor = 0;
            take(cursor + 1);
            ++count;
        }
    }
    return count;
}

}  // namespace vorel::algorithms
