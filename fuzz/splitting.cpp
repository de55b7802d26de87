// Splits texts of both widths with three functions: at a delimiter text, at delimiter characters outside of quotes, and
// at a delimiter character, which becomes a terminator. Compares the results with the expected results.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "algorithms/Ascii.h"
#include "algorithms/Splitting.h"
#include "support/Scans.h"
#include "support/TextReference.h"

namespace {

using vorel::algorithms::countParts;
using vorel::algorithms::QuotedItems;
using vorel::algorithms::Quotes;
using vorel::algorithms::splitAtDelimiters;
using vorel::algorithms::tokenizeInPlace;
using vorel::algorithms::trimmed;

/// A text and its delimiters, each in its own guarded pages (GuardedPages.h).
template <class T>
struct Parts {
    explicit Parts(fuzz::Input& input) {
        const fuzz::Placement aroundText = input.placement();
        const fuzz::Placement aroundDelimiter = input.placement();
        const std::size_t length = input.upTo(4);
        delimiter = fuzz::upToZero(input.text<T>(length));
        text = fuzz::upToZero(input.restAsText<T>());
        const std::basic_string_view<T> all = text;
        const std::basic_string_view<T> delimiters = delimiter;
        placed = {fuzz::inputPages().copy(all, aroundText), text.size()};
        placedDelimiter = {fuzz::outputPages().copy(delimiters, aroundDelimiter), delimiter.size()};
    }

    std::basic_string<T> text;
    std::basic_string<T> delimiter;
    std::basic_string_view<T> placed;
    std::basic_string_view<T> placedDelimiter;
};

template <class T>
void split(fuzz::Input& input) {
    const Parts<T> parts(input);
    test::TextList<T> found;
    splitAtDelimiters(parts.placed, parts.placedDelimiter,
                      [&](std::basic_string_view<T> part) { found.emplace_back(part); });
    fuzz::check(found == test::splitAtText(parts.text, parts.delimiter), "the parts are as expected");
    fuzz::check(found.size() == countParts(parts.placed, parts.placedDelimiter),
                "countParts returns the number of parts");
}

template <class T>
void splitQuoted(fuzz::Input& input) {
    const bool trim = input.flag();
    const Parts<T> parts(input);
    test::TextList<T> found;
    QuotedItems<T> items(parts.placed, parts.placedDelimiter);
    const std::size_t limit = items.maxItems();
    while (!items.atEnd()) {
        std::basic_string<T> item;
        if (!items.isQuoted() || items.consumeQuoted(item) != Quotes::Closed) {
            item = items.consumePlain();
        }
        found.emplace_back(trim ? trimmed(std::basic_string_view<T>(item)) : item);
    }
    fuzz::check(found == test::splitAtAnyOf(parts.text, parts.delimiter, trim), "the items are as expected");
    fuzz::check(found.size() <= limit, "there are at most maxItems() items");
}

template <class T>
void tokenize(fuzz::Input& input) {
    const fuzz::Placement around = input.placement();
    const int limit = static_cast<int>(input.upTo(20)) - 2;
    const bool hasDelimiter = input.flag();
    const T delimiter = static_cast<T>(input.bits<std::uint16_t>());
    const std::basic_string<T> text = fuzz::upToZero(input.restAsText<T>());
    T* const placed = fuzz::inputPages().copyText(text, around);
    std::vector<const T*> starts;
    const unsigned int count =
        tokenizeInPlace(placed, hasDelimiter ? delimiter : T{}, limit, [&](T* token) { starts.push_back(token); });
    fuzz::check(count == starts.size(), "tokenizeInPlace returns the number of tokens");
    fuzz::check(limit < 0 || count <= static_cast<unsigned int>(limit) || count == 1,
                "a limit of 0 or more is exceeded only by the first token");

    std::vector<const T*> expected = {placed};
    for (std::size_t at = 0; at != text.size(); ++at) {
        const bool isFull = limit >= 0 && expected.size() >= static_cast<std::size_t>(limit);
        const bool ends = hasDelimiter && text[at] == delimiter && !isFull;
        fuzz::check(placed[at] == (ends ? T{0} : text[at]), "delimiters become terminators, and nothing else changes");
        if (ends) {
            expected.push_back(placed + at + 1);
        }
    }
    fuzz::check(starts == expected, "the tokens are as expected");
}

template <class T>
void run(fuzz::Input& input) {
    switch (input.upTo(2)) {
    case 0: return split<T>(input);
    case 1: return splitQuoted<T>(input);
    default: return tokenize<T>(input);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    input.flag() ? run<char16_t>(input) : run<char>(input);
    return 0;
}
