/// \file
/// Taking a text of either width apart: at every occurrence of a delimiter, at delimiters outside of quotes, or in
/// place.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace vorel::kernels {

/// How often a delimiter, which is not empty, stands in a text.
template <class T>
std::size_t countOf(std::basic_string_view<T> text, std::basic_string_view<T> delimiter) noexcept {
    constexpr std::size_t kNone = std::basic_string_view<T>::npos;
    std::size_t count = 0;
    for (std::size_t at = text.find(delimiter); at != kNone; at = text.find(delimiter, at + delimiter.size())) {
        ++count;
    }
    return count;
}

/// Hands the parts of a text to `take(part)`: what every delimiter ends, and what is left, unless it is nothing. An
/// empty delimiter ends nothing.
template <class T, class Take>
void splitAtDelimiters(std::basic_string_view<T> text, std::basic_string_view<T> delimiter, Take&& take) {
    constexpr std::size_t kNone = std::basic_string_view<T>::npos;
    while (!text.empty()) {
        const std::size_t at = delimiter.empty() ? kNone : text.find(delimiter);
        take(text.substr(0, at));
        text.remove_prefix(at == kNone ? text.size() : at + delimiter.size());
    }
}

/// What became of an item in quotes.
enum class Quotes {
    Closed,       ///< it was taken
    NeverClosed,  ///< its second quote is missing
    NotAtEnd,     ///< no delimiter stands behind its second quote
};

/// The walk through a text whose items may stand in double quotes. Any of the delimiters ends an item.
template <class T>
class QuotedItems {
public:
    using View = std::basic_string_view<T>;

    QuotedItems(View text, View delimiters) noexcept : m_rest(text), m_delimiters(delimiters) {}

    [[nodiscard]] bool atEnd() const noexcept { return m_rest.empty(); }

    /// No fewer than the items that are left.
    [[nodiscard]] std::size_t mostItems() const noexcept {
        const auto isDelimiter = [this](T c) { return m_delimiters.find(c) != View::npos; };
        return static_cast<std::size_t>(std::count_if(m_rest.begin(), m_rest.end(), isDelimiter)) + 1;
    }

    /// Whether the next item begins with a quote. Not to be asked at the end.
    [[nodiscard]] bool isQuoted() const noexcept { return m_rest.front() == '"'; }

    /// Takes an item as it stands.
    View takePlain() noexcept {
        const std::size_t end = m_rest.find_first_of(m_delimiters);
        const View item = m_rest.substr(0, end);
        m_rest.remove_prefix(end == View::npos ? m_rest.size() : end + 1);
        return item;
    }

    /// Takes an item out of its quotes, piece by piece by `item.append(text, count)`. When the quotes are wrong,
    /// nothing is taken, whatever was appended.
    template <class String>
    Quotes takeQuoted(String& item) {
        View rest = m_rest.substr(1);
        for (;;) {
            const std::size_t quote = rest.find(T{'"'});
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
        if (!rest.empty() && m_delimiters.find(rest.front()) == View::npos) {
            return Quotes::NotAtEnd;
        }
        m_rest = rest.empty() ? rest : rest.substr(1);
        return Quotes::Closed;
    }

private:
    View m_rest;
    View m_delimiters;
};

/// Ends a token at every occurrence of `delimiter`, which is zero for none, and hands the begin of each token to
/// `take`: `most` at most, but the first one always; all of them when `most` is below 0. Returns how many.
template <class T, class Take>
unsigned int tokenizeInPlace(T* text, T delimiter, int most, Take&& take) {
    take(text);
    unsigned int count = 1;
    for (T* place = text; *place && (most < 0 || count < static_cast<unsigned int>(most)); ++place) {
        if (*place == delimiter) {
            *place = 0;
            take(place + 1);
            ++count;
        }
    }
    return count;
}

}  // namespace vorel::kernels
