#include <string>
#include <vector>

#include "Cases.h"
#include "Widths.h"
#include "vorel/vorelCore.h"

namespace bench {

namespace {

namespace util = vorel::util;
using vorel::Array;
using vorel::BaseString;

constexpr std::size_t kParts = 1000;

void splitQuoted(const char* text, const char* delimiters, Array<BaseString<char>>& items) {
    util::singleCStringToMultipleCStrings(text, delimiters, items, false);
}

void splitQuoted(const wchar_t* text, const wchar_t* delimiters, Array<BaseString<wchar_t>>& items) {
    util::singleStringToMultipleStrings(text, delimiters, items, false);
}

template <class T>
std::size_t findAndAdd(const std::basic_string<T>& text, const std::basic_string<T>& delimiters,
                       std::vector<std::basic_string<T>>& parts) {
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end =
            delimiters.size() == 1 ? text.find(delimiters.front(), start) : text.find_first_of(delimiters, start);
        parts.emplace_back(text, start, end - start);
        start = end + 1;
    }
    return parts.size();
}

/// Compares `split(text, delimiters, parts)` with a loop over a standard string, for new lists and for lists that keep
/// their storage.
template <class T, class Split>
void compareSplits(Family& family, const std::string& name, const std::basic_string<T>& text,
                   const std::basic_string<T>& delimiters, Split split) {
    Array<BaseString<T>> ours;
    std::vector<std::basic_string<T>> standard;
    family.compare(named<T>(name + ", fresh"), kParts,
                   [&, split] {
                       Array<BaseString<T>> parts;
                       split(text.c_str(), delimiters.c_str(), parts);
                       return std::uint64_t{parts.size()};
                   },
                   {{"find and emplace_back", [&] {
                         std::vector<std::basic_string<T>> parts;
                         return std::uint64_t{findAndAdd(text, delimiters, parts)};
                     }}});
    family.compare(named<T>(name + ", reused"), kParts,
                   [&, split] {
                       ours.clear();
                       split(text.c_str(), delimiters.c_str(), ours);
                       return std::uint64_t{ours.size()};
                   },
                   {{"find and emplace_back", [&] {
                         standard.clear();
                         return std::uint64_t{findAndAdd(text, delimiters, standard)};
                     }}});
}

template <class T>
void splitAll(Family& family) {
    for (const std::size_t units : {std::size_t{8}, std::size_t{24}}) {
        const std::string count = std::to_string(units);
        std::basic_string<T> text;
        for (std::size_t part = 0; part < kParts; ++part) {
            text.append(units, static_cast<T>('a' + part % 26)).append(1, T{','});
        }
        compareSplits<T>(
            family, "splitString, parts of " + count, text, textOf<T>(","),
            [](const T* whole, const T* delimiter, auto& parts) { util::splitString(whole, delimiter, parts); });
        compareSplits<T>(
            family, "split that supports quotes, parts of " + count, text, textOf<T>(",;|"),
            [](const T* whole, const T* delimiters, auto& parts) { splitQuoted(whole, delimiters, parts); });
    }
}

}  // namespace

void splitTexts(Family& family) {
    splitAll<char>(family);
    splitAll<wchar_t>(family);
}

}  // namespace bench
