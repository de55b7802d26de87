#include <cstdio>
#include <cwchar>
#include <iterator>
#include <string>

#include <fmt/format.h>
#include <fmt/xchar.h>

#include "Cases.h"
#include "vorel/vorelCore.h"

namespace bench {

namespace {

using vorel::BaseString;

constexpr std::size_t kCalls = 200;
constexpr const char* kName = "Parser::run";
constexpr const wchar_t* kWideName = L"Parser::run";

/// Returns a pass that calls `write(number)` for `kCalls` numbers. `write` returns a value that depends on the text
/// that it wrote.
template <class Write>
Pass calls(Write write) {
    return [write] {
        std::uint64_t sum = 0;
        for (std::size_t call = 0; call < kCalls; ++call) {
            sum += write(static_cast<int>(call * 7919));
        }
        return sum;
    };
}

/// Measures the length of the text with one call of the runtime, and renders the text with another call.
std::string twoCalls(int number) {
    std::string text(static_cast<std::size_t>(_scprintf("%s: attempt %d of %u", kName, number, 100000u)), '\0');
    _snprintf(text.data(), text.size() + 1, "%s: attempt %d of %u", kName, number, 100000u);
    return text;
}

std::wstring twoWideCalls(int number) {
    std::wstring text(static_cast<std::size_t>(_scwprintf(L"%ls: attempt %d of %u", kWideName, number, 100000u)),
                      L'\0');
    _snwprintf(text.data(), text.size() + 1, L"%ls: attempt %d of %u", kWideName, number, 100000u);
    return text;
}

void formatNarrow(Family& family) {
    const auto ours = [](BaseString<char>& string, int number) {
        return std::uint64_t{string.format("%s: attempt %d of %u", kName, number, 100000u).length()};
    };
    family.compare(
        "format, fresh, narrow", kCalls, calls([ours](int number) {
            BaseString<char> string;
            return ours(string, number);
        }),
        {{"fmt::format", calls([](int number) {
              return std::uint64_t{fmt::format(FMT_STRING("{}: attempt {} of {}"), kName, number, 100000u).size()};
          })},
         {"two runtime snprintf", calls([](int number) { return std::uint64_t{twoCalls(number).size()}; })}});
    BaseString<char> string;
    std::string text;
    family.compare("format, reused, narrow", kCalls, calls([&](int number) { return ours(string, number); }),
                   {{"fmt::format_to", calls([&text](int number) {
                         text.clear();
                         fmt::format_to(std::back_inserter(text), FMT_STRING("{}: attempt {} of {}"), kName, number,
                                        100000u);
                         return std::uint64_t{text.size()};
                     })},
                    {"runtime snprintf", calls([](int number) {
                         char buffer[64];
                         return static_cast<std::uint64_t>(
                             _snprintf(buffer, sizeof buffer, "%s: attempt %d of %u", kName, number, 100000u));
                     })}});
}

void formatWide(Family& family) {
    const auto ours = [](BaseString<wchar_t>& string, int number) {
        return std::uint64_t{string.format(L"%ls: attempt %d of %u", kWideName, number, 100000u).length()};
    };
    family.compare("format, fresh, wide", kCalls, calls([ours](int number) {
                       BaseString<wchar_t> string;
                       return ours(string, number);
                   }),
                   {{"fmt::format", calls([](int number) {
                         return std::uint64_t{
                             fmt::format(FMT_STRING(L"{}: attempt {} of {}"), kWideName, number, 100000u).size()};
                     })},
                    {"two snwprintf of the runtime",
                     calls([](int number) { return std::uint64_t{twoWideCalls(number).size()}; })}});
    BaseString<wchar_t> string;
    family.compare("format, reused, wide", kCalls, calls([&](int number) { return ours(string, number); }),
                   {{"snwprintf of the runtime", calls([](int number) {
                         wchar_t buffer[64];
                         return static_cast<std::uint64_t>(_snwprintf(
                             buffer, std::size(buffer), L"%ls: attempt %d of %u", kWideName, number, 100000u));
                     })}});
}

/// Measures a format with widths, flags and a precision. The library lets the runtime render this format.
void formatColumns(Family& family) {
    BaseString<char> string;
    family.compare("format in columns, reused, narrow", kCalls, calls([&string](int number) {
                       return std::uint64_t{string.format("%-12s|%08X|%7.2f", kName, number, number / 8.0).length()};
                   }),
                   {{"fmt::format_to_n", calls([](int number) {
                         char buffer[64];
                         return std::uint64_t{fmt::format_to_n(buffer, sizeof buffer,
                                                               FMT_STRING("{:12}|{:08X}|{:7.2f}"), kName, number,
                                                               number / 8.0)
                                                  .size};
                     })},
                    {"runtime snprintf", calls([](int number) {
                         char buffer[64];
                         return static_cast<std::uint64_t>(
                             _snprintf(buffer, sizeof buffer, "%-12s|%08X|%7.2f", kName, number, number / 8.0));
                     })}});
    BaseString<wchar_t> wide;
    family.compare(
        "format in columns, reused, wide", kCalls, calls([&wide](int number) {
            return std::uint64_t{wide.format(L"%-12ls|%08X|%7.2f", kWideName, number, number / 8.0).length()};
        }),
        {{"snwprintf of the runtime", calls([](int number) {
              wchar_t buffer[64];
              return static_cast<std::uint64_t>(
                  _snwprintf(buffer, std::size(buffer), L"%-12ls|%08X|%7.2f", kWideName, number, number / 8.0));
          })}});
}

}  // namespace

void formatTexts(Family& family) {
    formatNarrow(family);
    formatWide(family);
    formatColumns(family);
}

}  // namespace bench
