/// \file
/// Parses booleans in zero-terminated text of either width.
#pragma once

#include <algorithm>
#include <iterator>
#include <string_view>

#include "algorithms/Ascii.h"
#include "algorithms/NumberReading.h"
#include "algorithms/NumberScanner.h"

namespace vorel::algorithms {

/// A word that denotes a boolean, in lower case.
struct BooleanWord {
    std::string_view text;
    // cppcheck-suppress unusedStructMember; read through an iterator
    bool value;
};

inline constexpr BooleanWord kBooleanWords[] = {{"true", true}, {"false", false}, {"yes", true},
                                                {"no", false},  {"on", true},     {"off", false}};
inline constexpr std::string_view kTrueCharacters = "1ty";
inline constexpr std::string_view kFalseCharacters = "0fn";
inline constexpr std::string_view kPlainBooleanWords[] = {"true", "false", "yes", "no", "0", "1", "t", "f", "y", "n"};

/// Whether a single digit from 2 to 9 denotes true. It denotes true only in wide text, and callers rely on that.
template <class T>
inline constexpr bool kAnyDigitIsTrue = sizeof(T) > 1;

/// Parses a single character, moves past it if it denotes a boolean, and returns whether it denotes true.
template <class T>
bool parseBooleanCharacter(const T*& cursor) noexcept {
    const T c = foldCase(*cursor);
    const bool isTrue = isOneOf(c, kTrueCharacters) || (kAnyDigitIsTrue<T> && c >= '2' && c <= '9');
    if (isTrue || isOneOf(c, kFalseCharacters)) {
        ++cursor;
    }
    return isTrue;
}

/// Parses a word, a single character or a number, and returns whether it means true. For any other text, returns false
/// and leaves the cursor after the leading white space.
template <class T>
bool parseBoolean(const T*& cursor) noexcept {
    skipSpaces(cursor);
    if (!*cursor) {
        return false;
    }
    if (!cursor[1]) {
        return parseBooleanCharacter(cursor);
    }
    const auto word = std::find_if(std::begin(kBooleanWords), std::end(kBooleanWords),
                                   [&](const BooleanWord& w) { return equalsWord(cursor, w.text); });
    if (word != std::end(kBooleanWords)) {
        cursor += word->text.size();
        return word->value;
    }
    return coercesToInteger(cursor, true) && parseInteger<int>(cursor, true) != 0;
}

/// Parses a boolean (see `parseBoolean`). A null text is false. If `end` is not null, `*end` receives the position at
/// which parsing stopped, or null for a null text.
template <class T>
bool readBoolean(const T* text, T** end) noexcept {
    const bool value = text && parseBoolean(text);
    storeEnd(text, end);
    return value;
}

/// Whether the text after its leading white space is one of `kPlainBooleanWords`, ignoring case. False for null.
template <class T>
bool coercesToBoolean(const T* text) noexcept {
    if (!text) {
        return false;
    }
    skipSpaces(text);
    return std::any_of(std::begin(kPlainBooleanWords), std::end(kPlainBooleanWords),
                       [=](std::string_view word) { return equalsWord(text, word); });
}

}  // namespace vorel::algorithms
