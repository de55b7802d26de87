#include "vorel/values/Splitting.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>

#include "kernels/Trimming.h"
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

/// Room for what is to be added: growing on the way would copy every string again.
template <class T>
void reserveMore(Array<BaseString<T>>& parts, std::size_t more) {
    parts.reserve(parts.size() + static_cast<unsigned int>(std::min<std::size_t>(more, 0xFFFFFFFFu - parts.size())));
}

template <class T>
std::size_t countOf(View<T> text, View<T> delimiter) noexcept {
    std::size_t count = 0;
    for (std::size_t at = text.find(delimiter); at != View<T>::npos; at = text.find(delimiter, at + delimiter.size())) {
        ++count;
    }
    return count;
}

template <class T>
void split(const T* text, const T* delimiterText, Array<BaseString<T>>& parts) {
    const BaseString<T> copy(text);  // the text may be one of the parts, and move when they grow
    View<T> rest = copy.view();
    const View<T> delimiter = viewOf(delimiterText);
    if (!delimiter.empty()) {
        reserveMore(parts, countOf(rest, delimiter) + 1);
    }
    while (!rest.empty()) {
        const std::size_t at = delimiter.empty() ? View<T>::npos : rest.find(delimiter);
        parts.append(stringOf(rest.substr(0, at)));
        rest.remove_prefix(at == View<T>::npos ? rest.size() : at + delimiter.size());
    }
}

/// The walk through a text whose items may stand in double quotes.
template <class T>
class QuotedItems {
public:
    QuotedItems(const T* text, const T* delimiters) noexcept : m_rest(viewOf(text)), m_delimiters(viewOf(delimiters)) {}

    [[nodiscard]] bool atEnd() const noexcept { return m_rest.empty(); }

    BaseString<T> next(bool trim) {
        BaseString<T> item;
        if (m_rest.front() != '"' || !takeQuoted(item)) {
            item = takePlain(trim);
        } else if (trim) {
            item = stringOf(kernels::trimmed(item.view()));
        }
        return item;
    }

    /// No fewer than the items that are left.
    [[nodiscard]] std::size_t mostItems() const noexcept {
        const auto isDelimiter = [this](T c) { return m_delimiters.find(c) != View<T>::npos; };
        return static_cast<std::size_t>(std::count_if(m_rest.begin(), m_rest.end(), isDelimiter)) + 1;
    }

private:
    BaseString<T> takePlain(bool trim) {
        const std::size_t end = m_rest.find_first_of(m_delimiters);
        const View<T> item = m_rest.substr(0, end);
        m_rest.remove_prefix(end == View<T>::npos ? m_rest.size() : end + 1);
        return stringOf(trim ? kernels::trimmed(item) : item);
    }

    /// Takes an item with its quotes; when they are wrong, nothing is taken.
    bool takeQuoted(BaseString<T>& item) {
        View<T> rest = m_rest.substr(1);
        for (;;) {
            const std::size_t quote = rest.find(T{'"'});
            if (quote == View<T>::npos) {
                Exception::trace("singleCToMultipleD() - ending text without 2nd double quote");
                return false;
            }
            item.append(rest.data(), static_cast<unsigned int>(quote));
            rest.remove_prefix(quote + 1);
            if (rest.empty() || rest.front() != '"') {
                break;
            }
            item.append(T{'"'});
            rest.remove_prefix(1);
        }
        if (!rest.empty() && m_delimiters.find(rest.front()) == View<T>::npos) {
            Exception::trace("singleCToMultipleD() - non-delimitors after 2nd double quote");
            return false;
        }
        m_rest = rest.empty() ? rest : rest.substr(1);
        return true;
    }

    View<T> m_rest;
    View<T> m_delimiters;
};

template <class T>
void splitQuoted(const T* text, const T* delimiters, Array<BaseString<T>>& items, bool trim) {
    Array<BaseString<T>> found;
    QuotedItems<T> rest(text, delimiters);
    if (!rest.atEnd()) {
        reserveMore(found, rest.mostItems());
    }
    while (!rest.atEnd()) {
        found.append(rest.next(trim));
    }
    items = std::move(found);
}

template <class T>
int tokenize(T* text, const T* delimiter, Array<T*>& tokens, int maxTokens) {
    return detail::guarded(L"vorel::util", L"tokenizeString", [=, &tokens] {
        tokens.clear();
        if (maxTokens > 0) {
            tokens.reserve(static_cast<unsigned int>(maxTokens));
        }
        if (!text) {
            return 0;
        }
        tokens.append(text);
        const auto isFull = [&] { return maxTokens >= 0 && tokens.size() >= static_cast<unsigned int>(maxTokens); };
        for (T* place = text; *place && !isFull(); ++place) {
            if (delimiter && *place == *delimiter) {
                *place = 0;
                tokens.append(place + 1);
            }
        }
        return static_cast<int>(tokens.size());
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
