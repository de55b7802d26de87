/// \file
/// Reference implementation of splitting, joining and comparing: character by character, simple and slow.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "support/NumberReference.h"
#include "support/Shape.h"

namespace test {

template <class T>
using TextList = std::vector<std::basic_string<T>>;

/// Every occurrence of the delimiter ends a part. The remaining text is a part, too, unless it is empty.
template <class T>
TextList<T> splitAtText(const std::basic_string<T>& text, const std::basic_string<T>& delimiter) {
    TextList<T> parts;
    std::basic_string<T> part;
    for (std::size_t at = 0; at < text.size();) {
        if (!delimiter.empty() && text.compare(at, delimiter.size(), delimiter) == 0) {
            parts.push_back(part);
            part.clear();
            at += delimiter.size();
        } else {
            part += text[at++];
        }
    }
    const bool endsInDelimiter = !parts.empty() && part.empty();
    if (!text.empty() && !endsInDelimiter) {
        parts.push_back(part);
    }
    return parts;
}

template <class T>
std::basic_string<T> trimmed(std::basic_string<T> text) {
    const std::string shape = shapeOf(std::basic_string_view<T>(text));
    const std::size_t first = shape.find_first_not_of(kBlanks);
    const std::size_t last = shape.find_last_not_of(kBlanks);
    return first == std::string::npos ? std::basic_string<T>() : text.substr(first, last - first + 1);
}

/// Parses the quoted item that begins at `at`. Moves `at` past the delimiter after the item, or to the end of the text
/// if nothing follows the item. Returns false if the closing quotation mark is missing, or if the item is followed by a
/// unit that is not a delimiter.
template <class T>
bool parseQuotedItem(const std::basic_string<T>& text, const std::basic_string<T>& delimiters, std::size_t& at,
                     std::basic_string<T>& item) {
    bool closed = false;
    for (std::size_t index = at + 1; index < text.size(); ++index) {
        const T unit = text[index];
        if (!closed) {
            closed = unit == '"';
            if (!closed) {
                item += unit;
            }
        } else if (unit == '"') {
            item += unit;
            closed = false;
        } else {
            at = index + 1;
            return delimiters.find(unit) != std::basic_string<T>::npos;
        }
    }
    at = text.size();
    return closed;
}

template <class T>
TextList<T> splitAtAnyOf(const std::basic_string<T>& text, const std::basic_string<T>& delimiters, bool trim) {
    TextList<T> items;
    for (std::size_t at = 0; at < text.size();) {
        std::basic_string<T> item;
        std::size_t end = at;
        if (text[at] == '"' && parseQuotedItem(text, delimiters, end, item)) {
            at = end;
        } else {
            item.clear();
            while (at < text.size() && delimiters.find(text[at]) == std::basic_string<T>::npos) {
                item += text[at++];
            }
            ++at;
        }
        items.push_back(trim ? trimmed(item) : item);
    }
    return items;
}

/// Whether the item must be quoted: it contains a quotation mark, or the search below finds the delimiter in it. As in
/// the library, the search never goes back: a character that ends a partial match cannot start another match, so some
/// occurrences are missed.
inline bool isToBeQuoted(const std::wstring& item, const std::wstring& delimiter) {
    std::size_t matched = 0;
    for (const wchar_t unit : item) {
        matched = matched < delimiter.size() && unit == delimiter[matched] ? matched + 1 : 0;
        if (unit == L'"' || (matched != 0 && matched == delimiter.size())) {
            return true;
        }
    }
    return false;
}

/// Joins the items. If there is only one item and it is already in quotation marks, returns the item unchanged.
inline std::wstring joined(const TextList<wchar_t>& items, const std::wstring& delimiter) {
    if (items.size() == 1 && items[0].size() > 1 && items[0].front() == L'"' && items[0].back() == L'"') {
        return items[0];
    }
    std::wstring result;
    bool first = true;
    for (const std::wstring& item : items) {
        result += first ? std::wstring() : delimiter;
        first = false;
        std::wstring doubled;
        for (const wchar_t unit : item) {
            doubled.append(unit == L'"' ? 2 : 1, unit);
        }
        result += isToBeQuoted(item, delimiter) ? L'"' + doubled + L'"' : item;
    }
    return result;
}

/// The options of `compared`.
struct CompareRules {
    bool ignoreCase = false;
    bool numeric = false;
    bool slashesEqual = false;
};

/// Returns -1, 0 or 1. If `numeric` is set and both texts begin with a number, compares these numbers first; otherwise
/// compares the first characters. If the compared numbers or characters are equal, compares the remaining texts. Narrow
/// characters are signed.
template <class T>
int compared(std::basic_string_view<T> a, std::basic_string_view<T> b, const CompareRules& rules) {
    const auto digitsOf = [](std::basic_string_view<T> text) {
        std::size_t digits = 0;
        while (digits < text.size() && text[digits] >= '0' && text[digits] <= '9') {
            ++digits;
        }
        return text.substr(0, digits);
    };
    const auto withoutZeros = [](std::basic_string_view<T> number) {
        while (!number.empty() && number.front() == '0') {
            number.remove_prefix(1);
        }
        return number;
    };
    const auto firstOf = [&rules](std::basic_string_view<T> text) {
        const int unit = text.empty() ? 0 : text.front();
        return rules.ignoreCase && unit >= 'A' && unit <= 'Z' ? unit - 'A' + 'a' : unit;
    };
    const std::basic_string_view<T> first = digitsOf(a);
    const std::basic_string_view<T> second = digitsOf(b);
    if (rules.numeric && !first.empty() && !second.empty()) {
        const std::basic_string_view<T> left = withoutZeros(first);
        const std::basic_string_view<T> right = withoutZeros(second);
        if (left.size() != right.size()) {
            return left.size() < right.size() ? -1 : 1;
        }
        if (const int order = left.compare(right)) {
            return order < 0 ? -1 : 1;
        }
        return compared(a.substr(first.size()), b.substr(second.size()), rules);
    }
    const int left = firstOf(a);
    const int right = firstOf(b);
    const bool slashes = (left == '/' && right == '\\') || (left == '\\' && right == '/');
    if (left != right && !(rules.slashesEqual && slashes)) {
        return left < right ? -1 : 1;
    }
    return left == 0 ? 0 : compared(a.substr(1), b.substr(1), rules);
}

/// Compares number by number. Any single character may separate two numbers. Returns false if either text is empty. If
/// no compared numbers differ, also returns false if `version` ends before `required`, or if `required` ends with a
/// separator.
inline bool isVersionAtLeast(std::string_view version, std::string_view required) {
    if (version.empty()) {
        return false;
    }
    while (!required.empty()) {
        const auto found = readInteger(version, true, true);
        const auto needed = readInteger(required, true, true);
        if (static_cast<int>(found.value) != static_cast<int>(needed.value)) {
            return static_cast<int>(found.value) > static_cast<int>(needed.value);
        }
        version.remove_prefix(found.end);
        required.remove_prefix(needed.end);
        if (required.empty()) {
            return true;
        }
        if (version.size() < 2) {
            return false;
        }
        version.remove_prefix(1);
        required.remove_prefix(1);
    }
    return false;
}

}  // namespace test
