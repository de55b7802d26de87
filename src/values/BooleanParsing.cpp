#include "vorel/values/BooleanParsing.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "kernels/NumberScanner.h"
#include "kernels/Words.h"
#include "vorel/values/NumberParsing.h"

namespace vorel::util {

const wchar_t* const TAL_True = L"true";
const wchar_t* const TAL_False = L"false";

namespace {

struct Word {
    std::string_view text;
    // cppcheck-suppress unusedStructMember; it is read through an iterator
    bool value;
};

constexpr Word kWords[] = {{"true", true}, {"false", false}, {"yes", true},
                           {"no", false},  {"on", true},     {"off", false}};
constexpr std::string_view kTrueCharacters = "1ty";
constexpr std::string_view kFalseCharacters = "0fn";
constexpr std::string_view kPlainWords[] = {"true", "false", "yes", "no", "0", "1", "t", "f", "y", "n"};

/// Whether the digits 2 to 9, standing alone, are true: in wide text they are, and callers rely on it.
template <class T>
inline constexpr bool kAnyDigitIsTrue = sizeof(T) > 1;

template <class T>
bool isOneOf(T c, std::string_view characters) noexcept {
    return std::any_of(characters.begin(), characters.end(),
                       [c](char wanted) { return kernels::foldCase(c) == static_cast<T>(wanted); });
}

/// Reads one character that stands alone, and moves behind it unless it means nothing.
template <class T>
bool takeSingle(const T*& place) noexcept {
    const T c = *place;
    const bool isTrue = isOneOf(c, kTrueCharacters) || (kAnyDigitIsTrue<T> && c >= '2' && c <= '9');
    if (isTrue || isOneOf(c, kFalseCharacters)) {
        ++place;
    }
    return isTrue;
}

template <class T>
bool takeBoolean(const T*& place) noexcept {
    kernels::skipSpaces(place);
    if (!*place) {
        return false;
    }
    if (!place[1]) {
        return takeSingle(place);
    }
    const auto word = std::find_if(std::begin(kWords), std::end(kWords),
                                   [&](const Word& w) { return kernels::equalsWord(place, w.text); });
    if (word != std::end(kWords)) {
        place += word->text.size();
        return word->value;
    }
    return canCoerceToInteger(place, true) && kernels::takeInteger<int>(place, true) != 0;
}

template <class T>
bool readBoolean(const T* text, T** end) noexcept {
    const bool value = text && takeBoolean(text);
    if (end) {
        *end = const_cast<T*>(text);  // NOLINT(cppcoreguidelines-pro-type-const-cast): the caller's own text
    }
    return value;
}

template <class T>
bool coercesToBoolean(const T* text) noexcept {
    if (!text) {
        return false;
    }
    kernels::skipSpaces(text);
    return std::any_of(std::begin(kPlainWords), std::end(kPlainWords),
                       [=](std::string_view word) { return kernels::equalsWord(text, word); });
}

}  // namespace

bool stringToBoolean(const char* text, char** end) noexcept {
    return readBoolean(text, end);
}

bool stringToBoolean(const wchar_t* text, wchar_t** end) noexcept {
    return readBoolean(text, end);
}

bool canCoerceToBoolean(const char* text) noexcept {
    return coercesToBoolean(text);
}

bool canCoerceToBoolean(const wchar_t* text) noexcept {
    return coercesToBoolean(text);
}

}  // namespace vorel::util
