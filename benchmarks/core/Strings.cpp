#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Cases.h"
#include "Widths.h"
#include "vorel/vorelCore.h"

namespace bench {

namespace {

using vorel::BaseString;

constexpr std::size_t kAppends = 1000;
constexpr std::size_t kStrings = 1000;

/// Returns a pass that creates a string and calls `append(string, call)` for each number `call` below `kAppends`.
template <class String, class Append>
Pass fresh(Append append) {
    return [append] {
        String string;
        for (std::size_t call = 0; call < kAppends; ++call) {
            append(string, call);
        }
        return std::uint64_t{string.length()};
    };
}

/// Returns a pass that makes the same calls for `string`, which keeps its buffer between the passes.
template <class String, class Append>
Pass reused(String& string, Append append) {
    return [&string, append] {
        string.clear();
        for (std::size_t call = 0; call < kAppends; ++call) {
            append(string, call);
        }
        return std::uint64_t{string.length()};
    };
}

template <class T, class Append>
void compareAppends(Family& family, const std::string& what, Append append) {
    using Standard = std::basic_string<T>;
    BaseString<T> ours;
    Standard standard;
    family.compare(named<T>(what + ", fresh"), kAppends, fresh<BaseString<T>>(append),
                   {{"std::basic_string", fresh<Standard>(append)}});
    family.compare(named<T>(what + ", reused"), kAppends, reused(ours, append),
                   {{"std::basic_string", reused(standard, append)}});
}

template <class T>
void appendTo(Family& family) {
    compareAppends<T>(family, "append of 1 unit",
                      [](auto& string, std::size_t call) { string += static_cast<T>('a' + call % 16); });
    for (const unsigned int units : {4u, 16u, 24u, 256u}) {
        const std::basic_string<T> text(units, T{'x'});
        compareAppends<T>(family, "append of " + std::to_string(units) + " units",
                          [&text, units](auto& string, std::size_t) { string.append(text.data(), units); });
    }
}

template <class String, class T>
std::vector<String> stringsOf(const std::basic_string<T>& text) {
    std::vector<String> strings(kStrings);
    for (String& string : strings) {
        // NOLINTNEXTLINE(readability-redundant-string-cstr): both string types are assigned from a pointer
        string = text.c_str();
    }
    return strings;
}

template <class String>
Pass sumLengths(const std::vector<String>& strings) {
    return [&strings] {
        std::uint64_t sum = 0;
        for (const String& string : strings) {
            sum += string.length();
        }
        return sum;
    };
}

/// Moves each string to the previous position, and the first string to the end.
template <class String>
Pass rotate(std::vector<String>& strings) {
    return [&strings] {
        String first = std::move(strings.front());
        for (std::size_t index = 1; index < strings.size(); ++index) {
            strings[index - 1] = std::move(strings[index]);
        }
        strings.back() = std::move(first);
        return std::uint64_t{strings.front().length()};
    };
}

/// Moves each string to a new string and back.
template <class String>
Pass moveThere(std::vector<String>& strings) {
    return [&strings] {
        std::uint64_t sum = 0;
        for (String& string : strings) {
            String taken(std::move(string));
            sum += taken.length();
            string = std::move(taken);
        }
        return sum;
    };
}

template <class T>
void readAndMove(Family& family) {
    using Standard = std::basic_string<T>;
    const Standard text = textOf<T>("a text of more than sixteen units");
    std::vector<BaseString<T>> ours = stringsOf<BaseString<T>>(text);
    std::vector<Standard> standard = stringsOf<Standard>(text);
    family.compare(named<T>("length"), kStrings, sumLengths(ours), {{"std::basic_string", sumLengths(standard)}});
    family.compare(named<T>("move assignment"), kStrings, rotate(ours), {{"std::basic_string", rotate(standard)}});
    family.compare(named<T>("move to a new string and back"), kStrings, moveThere(ours),
                   {{"std::basic_string", moveThere(standard)}});
}

}  // namespace

void appendToStrings(Family& family) {
    appendTo<char>(family);
    appendTo<wchar_t>(family);
}

void readAndMoveStrings(Family& family) {
    readAndMove<char>(family);
    readAndMove<wchar_t>(family);
}

}  // namespace bench
