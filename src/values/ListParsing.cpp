#include "vorel/values/ListParsing.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "kernels/NumberScanner.h"
#include "kernels/Trimming.h"
#include "kernels/Words.h"
#include "vorel/exceptions/Exception.h"
#include "vorel/values/NumberParsing.h"
#include "vorel/values/Splitting.h"

namespace vorel::util {

namespace {

using kernels::equalsWord;
using kernels::isSpace;
using kernels::negatedIf;
using kernels::skipSpaces;
using kernels::takeDigitRun;
using kernels::takeDigits;
using kernels::takeInteger;
using kernels::takeSign;

template <class Value>
void startList(Array<Value>& values, bool append) {
    if (!append) {
        values.clear();
    }
}

template <class T, class Value>
bool readIntegers(const T* text, Array<Value>& values, bool append) {
    startList(values, append);
    if (!text) {
        return true;
    }
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
        values.append(static_cast<Value>(negatedIf(negative, value)));
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
template <class T, class Value, class Take>
bool readWords(const T* text, Array<Value>& values, bool append, Take&& take) {
    startList(values, append);
    if (!text) {
        return true;
    }
    WordList<T> words(text);
    while (words.next()) {
        take(words.word());
    }
    return !words.failed();
}

template <class T>
bool readDoubles(const T* text, Array<double>& values, bool append) {
    return readWords(text, values, append, [&](const T* word) {
        if (canCoerceToDouble(word, true)) {
            values.append(stringToDouble(word, nullptr));
        }
    });
}

template <class T>
bool readBooleans(const T* text, Array<bool>& values, bool append) {
    return readWords(text, values, append, [&](const T* word) {
        if (equalsWord(word, "true") || equalsWord(word, "t")) {
            values.append(true);
        } else if (equalsWord(word, "false") || equalsWord(word, "f")) {
            values.append(false);
        } else if (canCoerceToInteger(word, true)) {
            values.append(stringToInt(word, nullptr) != 0);
        }
    });
}

template <class T>
bool coercesToIntegers(const T* text) noexcept {
    if (!text) {
        return true;
    }
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

/// A number of a range, and whether nothing stands behind it.
struct RangeEnd {
    explicit RangeEnd(std::wstring_view text) {
        const BaseString<wchar_t> number(text.data(), static_cast<unsigned int>(text.size()));
        const wchar_t* place = number.view().data();
        value = takeInteger<int>(place, true);
        isWhole = !*place;
    }

    int value;
    bool isWhole;
};

constexpr std::wstring_view kOpenEnd = L"-1";

void readRange(std::wstring_view item, Array<int>& starts, Array<int>& ends) {
    const auto expectWhole = [item](const RangeEnd& end) {
        if (!end.isWhole) {
            const BaseString<wchar_t> text(item.data(), static_cast<unsigned int>(item.size()));
            throw Exception(L"Found nonnumeric text in numeric item: \"%ls\"", text.c_str());
        }
    };
    const std::size_t dash = item.find(L'-');
    if (dash == std::wstring_view::npos) {
        const RangeEnd both(item);
        starts.append(both.value);
        ends.append(both.value);
        expectWhole(both);
        return;
    }
    const RangeEnd start(dash == 0 ? kOpenEnd : item.substr(0, dash));
    starts.append(start.value);
    expectWhole(start);
    const RangeEnd end(dash + 1 == item.size() ? kOpenEnd : item.substr(dash + 1));
    ends.append(end.value);
    expectWhole(end);
}

}  // namespace

bool stringToIntegerArray(const char* text, Array<int>& values, bool append) {
    return readIntegers(text, values, append);
}

bool stringToIntegerArray(const wchar_t* text, Array<int>& values, bool append) {
    return readIntegers(text, values, append);
}

bool stringToUIntegerArray(const wchar_t* text, Array<unsigned int>& values, bool append) {
    return readIntegers(text, values, append);
}

bool stringToDoubleArray(const char* text, Array<double>& values, bool append) {
    return readDoubles(text, values, append);
}

bool stringToDoubleArray(const wchar_t* text, Array<double>& values, bool append) {
    return readDoubles(text, values, append);
}

bool stringToBooleanArray(const char* text, Array<bool>& values, bool append) {
    return readBooleans(text, values, append);
}

bool stringToBooleanArray(const wchar_t* text, Array<bool>& values, bool append) {
    return readBooleans(text, values, append);
}

bool canCoerceToIntegerArray(const char* text) noexcept {
    return coercesToIntegers(text);
}

bool canCoerceToIntegerArray(const wchar_t* text) noexcept {
    return coercesToIntegers(text);
}

void stringToLongRanges(const wchar_t* text, Array<int>& starts, Array<int>& ends) {
    starts.clear();
    ends.clear();
    Array<BaseString<wchar_t>> items;
    splitString(text, L",", items);
    for (const BaseString<wchar_t>& whole : items) {
        const std::wstring_view trimmed = kernels::trimmed(whole.view());
        if (!trimmed.empty()) {
            readRange(trimmed, starts, ends);
        }
    }
}

}  // namespace vorel::util
