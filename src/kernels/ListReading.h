/// \file
/// Lists of numbers and of truth values in zero-terminated text of either width. Each value goes to `take(value)`.
#pragma once

#include "kernels/BooleanReading.h"
#include "kernels/Characters.h"
#include "kernels/NumberReading.h"
#include "kernels/NumberScanner.h"
#include "kernels/Words.h"

namespace vorel::kernels {

/// Reads integers between blanks or commas, a fraction cut off, up to the first item that is nothing, and says whether
/// there was none. The value is that of 32 bits, without a sign.
template <class T, class Take>
bool readIntegerList(const T* text, Take&& take) {
    skipSpaces(text);
    while (*text) {
        const T* const item = text;
        const bool negative = takeSign(text);
        const auto value = takeDigits<unsigned int>(text);
        if (*text == '.') {
            ++text;
            takeDigitRun(text);  // the fraction is cut off
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

/// The words of a text between white space, each copied into a buffer of its own.
template <class T>
class WordList {
public:
    explicit WordList(const T* text) noexcept : m_place(text) {}

    /// Takes the next word; false at the end of the text, and before a word that is too long.
    bool next() noexcept {
        skipSpaces(m_place);
        unsigned int length = 0;
        for (; *m_place && !isSpace(*m_place); ++m_place) {
            if (length == kMostCharacters) {
                m_failed = true;
                return false;
            }
            m_word[length++] = *m_place;
        }
        m_word[length] = 0;
        return length != 0;
    }

    [[nodiscard]] const T* word() const noexcept { return m_word; }
    [[nodiscard]] bool failed() const noexcept { return m_failed; }

private:
    static constexpr unsigned int kMostCharacters = 79;

    const T* m_place;
    bool m_failed = false;
    T m_word[kMostCharacters + 1];
};

/// Hands each word to `take`, and says whether none was too long.
template <class T, class Take>
bool readWordList(const T* text, Take&& take) {
    WordList<T> words(text);
    while (words.next()) {
        take(words.word());
    }
    return !words.failed();
}

/// Reads the words that are numbers, and says whether no word was too long.
template <class T, class Take>
bool readDoubleList(const T* text, Take&& take) {
    return readWordList(text, [&](const T* word) {
        if (coercesToDouble(word, true)) {
            take(readDecimal<T>(word, nullptr));
        }
    });
}

/// Reads the words that are truth values or integers, and says whether no word was too long.
template <class T, class Take>
bool readBooleanList(const T* text, Take&& take) {
    return readWordList(text, [&](const T* word) {
        if (equalsWord(word, "true") || equalsWord(word, "t")) {
            take(true);
        } else if (equalsWord(word, "false") || equalsWord(word, "f")) {
            take(false);
        } else if (coercesToInteger(word, true)) {
            take(takeInteger<int>(word, true) != 0);
        }
    });
}

/// Whether a text has nothing but signs, digits and blanks.
template <class T>
bool coercesToIntegers(const T* text) noexcept {
    skipSpaces(text);
    while (*text) {
        const T* const item = text;
        takeSign(text);
        takeDigitRun(text);
        skipSpaces(text);
        if (text == item) {
            return false;
        }
    }
    return true;
}

}  // namespace vorel::kernels
