/// \file
/// Parses lists of numbers and of booleans in zero-terminated text of either width. Each value is passed to
/// `take(value)`.
#pragma once

#include "algorithms/BooleanReading.h"
#include "algorithms/Characters.h"
#include "algorithms/NumberReading.h"
#include "algorithms/NumberScanner.h"
#include "algorithms/Words.h"

namespace vorel::algorithms {

/// Parses integers separated by white space or commas, and truncates fractions. Stops at the first invalid item.
/// Returns whether all items were valid. Values are unsigned and modulo 2^32.
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

/// The words of a text, separated by white space. Each is copied to a buffer of this object.
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

/// Passes each word to `take`. Returns false if a word is too long.
template <class T, class Take>
bool readWordList(const T* text, Take&& take) {
    WordList<T> words(text);
    while (words.next()) {
        take(words.word());
    }
    return !words.failed();
}

/// Parses the words that are numbers and skips the others. Returns false if a word is too long.
template <class T, class Take>
bool readDoubleList(const T* text, Take&& take) {
    return readWordList(text, [&](const T* word) {
        if (coercesToDouble(word, true)) {
            take(readDecimal<T>(word, nullptr));
        }
    });
}

/// Parses the words that are booleans or integers and skips the others. Returns false if a word is too long.
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

/// Whether a text consists only of signs, digits and white space.
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

}  // namespace vorel::algorithms
