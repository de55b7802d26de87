/// \file
/// Reference implementation of the Boolean and list parsers. As in NumberReference.h, the functions expect texts in the
/// narrow form that `shapeOf` returns (see Shape.h).
#pragma once

#include <cstdint>
#include <regex>
#include <string>
#include <string_view>
#include <vector>

#include "support/NumberReference.h"

namespace test {

inline std::string lowerCase(std::string_view text) {
    std::string result;
    for (const char c : text) {
        result += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return result;
}

inline bool isOneOf(std::string_view text, const std::vector<std::string_view>& words) {
    for (const std::string_view word : words) {
        if (text == word) {
            return true;
        }
    }
    return false;
}

inline Reading<bool> readBoolean(std::string_view text, bool anyDigit) {
    const std::size_t start = runOf(kBlanks, text, 0);
    const std::string rest = lowerCase(text.substr(start));
    if (isOneOf(rest, {"1", "t", "y", "true", "yes", "on"}) ||
        (anyDigit && rest.size() == 1 && rest >= "2" && rest <= "9")) {
        return {true, text.size()};
    }
    if (isOneOf(rest, {"0", "f", "n", "false", "no", "off"})) {
        return {false, text.size()};
    }
    if (rest.size() > 1 && canBeInteger(rest, true)) {
        const auto integer = readInteger(rest, true, true);
        return {static_cast<std::uint32_t>(integer.value) != 0, start + integer.end};
    }
    return {false, start};
}

inline bool canBeBoolean(std::string_view text) {
    return isOneOf(lowerCase(text.substr(runOf(kBlanks, text, 0))),
                   {"true", "false", "yes", "no", "0", "1", "t", "f", "y", "n"});
}

/// The parsed list, and whether the whole text was parsed.
template <class Value>
struct ListReading {
    std::vector<Value> values;
    bool whole = true;
};

/// Parses item by item. An item is the text that the pattern `item` matches at the current position. An empty match
/// ends the list.
inline ListReading<std::uint32_t> readIntegers(std::string_view text) {
    static const std::regex item(R"(([-+]?)([0-9]*)(\.[0-9]*)?[ \t\n\r]*,?)");
    ListReading<std::uint32_t> list;
    text.remove_prefix(runOf(kBlanks, text, 0));
    while (!text.empty()) {
        std::match_results<std::string_view::const_iterator> found;
        std::regex_search(text.begin(), text.end(), found, item, std::regex_constants::match_continuous);
        if (found.length() == 0) {
            list.whole = false;
            return list;
        }
        const std::uint64_t value = valueOf(found[2].str());
        list.values.push_back(static_cast<std::uint32_t>(found[1].str() == "-" ? ~value + 1 : value));
        text.remove_prefix(static_cast<std::size_t>(found.length()));
    }
    return list;
}

/// Whether a text contains only characters of integers, that is, signs, digits and white space, in any order.
inline bool canBeIntegers(std::string_view text) {
    return text.find_first_not_of("+-0123456789 \t\n\r") == std::string_view::npos;
}

/// The words between white space, up to the first word of 80 or more characters, which the library rejects.
inline ListReading<std::string> readWords(std::string_view text) {
    ListReading<std::string> words;
    for (;;) {
        text.remove_prefix(runOf(kBlanks, text, 0));
        if (text.empty()) {
            return words;
        }
        const std::size_t end = text.find_first_of(kBlanks);
        const std::string_view word = text.substr(0, end);
        if (word.size() >= 80) {
            words.whole = false;
            return words;
        }
        words.values.emplace_back(word);
        text.remove_prefix(word.size());
    }
}

inline ListReading<double> readDoubles(std::string_view text) {
    const ListReading<std::string> words = readWords(text);
    ListReading<double> list{{}, words.whole};
    for (const std::string& word : words.values) {
        if (canBeDouble(word, true)) {
            list.values.push_back(readDouble(word).value);
        }
    }
    return list;
}

inline ListReading<bool> readBooleans(std::string_view text) {
    const ListReading<std::string> words = readWords(text);
    ListReading<bool> list{{}, words.whole};
    for (const std::string& word : words.values) {
        const std::string lower = lowerCase(word);
        if (isOneOf(lower, {"true", "t", "false", "f"})) {
            list.values.push_back(lower[0] == 't');
        } else if (canBeInteger(lower, true)) {
            list.values.push_back(static_cast<std::uint32_t>(readInteger(lower, true, true).value) != 0);
        }
    }
    return list;
}

/// The ranges up to the first invalid item. `rejected` is the first invalid item, or empty if all items are valid.
/// `starts` and `ends` also contain the numbers that were parsed from the invalid item.
struct Ranges {
    std::vector<int> starts;
    std::vector<int> ends;
    std::string rejected;
};

inline Ranges readRanges(std::string_view text) {
    Ranges ranges;
    while (!text.empty() && ranges.rejected.empty()) {
        const std::size_t comma = text.find(',');
        std::string_view item = text.substr(0, comma);
        text.remove_prefix(comma == std::string_view::npos ? text.size() : comma + 1);
        item.remove_prefix(runOf(kBlanks, item, 0));
        item = item.substr(0, item.find_last_not_of(kBlanks) + 1);
        if (item.empty()) {
            continue;
        }
        const auto parse = [&](std::string_view number, std::vector<int>& numbers) {
            const auto read = readInteger(number, true, true);
            numbers.push_back(static_cast<int>(read.value));
            if (read.end != number.size()) {
                ranges.rejected = item;
            }
            return ranges.rejected.empty();
        };
        const std::size_t minus = item.find('-');
        if (minus == std::string_view::npos) {
            parse(item, ranges.starts);
            ranges.ends.push_back(ranges.starts.back());
            continue;
        }
        const std::string_view start = minus == 0 ? "-1" : item.substr(0, minus);
        const std::string_view end = minus + 1 == item.size() ? "-1" : item.substr(minus + 1);
        if (parse(start, ranges.starts)) {
            parse(end, ranges.ends);
        }
    }
    return ranges;
}

}  // namespace test
