/// \file
/// Parses lists of numbers, of booleans and of integer ranges in zero-terminated text of either width. Each value is
/// passed to a function of the caller, such as `take(value)`.
#pragma once

#include <cstddef>
#include <string_view>

#include "algorithms/Ascii.h"
#include "algorithms/NumberReading.h"
#include "algorithms/NumberScanner.h"

namespace vorel::algorithms {

/// Parses integers separated by white space, by a comma, or by white space and then a comma. A sign, or the point after
/// a fraction, also begins the next item ("1-2" is 1 -2, "1.5.3" is 1 0). Fractions are truncated. By design, an item
/// without digits has the value 0: for example an empty item between two commas, or white space after a comma ("1, 2"
/// is 1 0 2). Stops at the first character that cannot begin an item. Returns whether the whole text was read. Values
/// are unsigned and modulo 2^32.
template <class T, class Take>
bool readIntegerList(const T* text, Take&& take) {
    skipSpaces(text);
    while (*text) {
        const T* const item = text;
        const bool negative = consumeSign(text);
        const auto value = parseDigits<unsigned int>(text);
        if (*text == '.') {
            ++text;
            consumeDigitRun(text);  // fractions are truncated
        }
        skipSpaces(text);
        text += *text == ',' ? 1 : 0;
        if (text == item) {
            return false;
        }
        take(negatedIf(negative, value));
    }
    return true;
}

/// The words of a text, separated by white space. Each word is copied to a buffer of this object.
template <class T>
class WordList {
public:
    explicit WordList(const T* text) noexcept : m_cursor(text) {}

    /// Reads the next word. Returns false at the end of the text and at a word that is too long.
    bool next() noexcept {
        skipSpaces(m_cursor);
        unsigned int length = 0;
        for (; *m_cursor && !isSpace(*m_cursor); ++m_cursor) {
            if (length == kMaxCharacters) {
                m_failed = true;
                return false;
            }
            m_word[length++] = *m_cursor;
        }
        m_word[length] = 0;
        return length != 0;
    }

    [[nodiscard]] const T* word() const noexcept { return m_word; }
    [[nodiscard]] bool failed() const noexcept { return m_failed; }

private:
    static constexpr unsigned int kMaxCharacters = 79;

    const T* m_cursor;
    bool m_failed = false;
    T m_word[kMaxCharacters + 1];
};

/// Passes each word to `take`. At a word that is too long, stops and returns false.
template <class T, class Take>
bool readWordList(const T* text, Take&& take) {
    WordList<T> words(text);
    while (words.next()) {
        take(words.word());
    }
    return !words.failed();
}

/// Parses the words that are numbers and skips other words. Returns false if a word is too long.
template <class T, class Take>
bool readDoubleList(const T* text, Take&& take) {
    return readWordList(text, [&](const T* word) {
        if (coercesToDouble(word, true)) {
            take(readDecimal<T>(word, nullptr));
        }
    });
}

/// Parses the words that are booleans or integers and skips other words. Returns false if a word is too long.
template <class T, class Take>
bool readBooleanList(const T* text, Take&& take) {
    return readWordList(text, [&](const T* word) {
        if (equalsWord(word, "true") || equalsWord(word, "t")) {
            take(true);
        } else if (equalsWord(word, "false") || equalsWord(word, "f")) {
            take(false);
        } else if (coercesToInteger(word, true)) {
            take(parseInteger<int>(word, true) != 0);
        }
    });
}

/// Whether a text consists only of signs, digits and white space, in any order.
template <class T>
bool coercesToIntegers(const T* text) noexcept {
    skipSpaces(text);
    while (*text) {
        const T* const item = text;
        consumeSign(text);
        consumeDigitRun(text);
        skipSpaces(text);
        if (text == item) {
            return false;
        }
    }
    return true;
}

// ---- Ranges ---------------------------------------------------------------------------------------------------------

/// The value of a missing start or end.
inline constexpr int kOpenRangeEnd = -1;

/// Parses the number at the start of a part and passes it to `take`. Returns whether the number is the whole part. The
/// text after the part must begin with a character that cannot continue a number; white space may precede that
/// character.
template <class T, class Take>
bool readRangeEnd(std::basic_string_view<T> part, Take&& take) {
    const T* cursor = part.data();
    take(parseInteger<int>(cursor, true));
    return cursor >= part.data() + part.size();
}

/// Parses an item, which has no white space around it. Returns whether the item is a number or a range.
template <class T, class TakeStart, class TakeEnd>
bool readRange(std::basic_string_view<T> item, TakeStart&& takeStart, TakeEnd&& takeEnd) {
    const std::size_t dash = item.find(T{'-'});
    if (dash == std::basic_string_view<T>::npos) {
        return readRangeEnd(item, [&](int value) {
            takeStart(value);
            takeEnd(value);
        });
    }
    if (dash == 0) {
        takeStart(kOpenRangeEnd);
    } else if (!readRangeEnd(item.substr(0, dash), takeStart)) {
        return false;
    }
    if (dash + 1 == item.size()) {
        takeEnd(kOpenRangeEnd);
        return true;
    }
    return readRangeEnd(item.substr(dash + 1), takeEnd);
}

/// Parses items separated by commas; empty items are skipped. Each start of a range is passed to `takeStart`, each end
/// to `takeEnd`, and a number to both. At the first invalid item, passes the numbers before the invalid text (0 if a
/// number is missing), stops, and returns the item. Returns an empty view if all items are valid.
template <class T, class TakeStart, class TakeEnd>
std::basic_string_view<T> readRanges(const T* text, TakeStart&& takeStart, TakeEnd&& takeEnd) {
    for (std::basic_string_view<T> rest(text); !rest.empty();) {
        const std::basic_string_view<T> whole = rest.substr(0, rest.find(T{','}));
        rest.remove_prefix(whole.size());
        rest.remove_prefix(rest.empty() ? 0 : 1);
        const std::basic_string_view<T> item = trimmed(whole);
        if (!item.empty() && !readRange(item, takeStart, takeEnd)) {
            return item;
        }
    }
    return {};
}

}  // namespace vorel::algorithms
