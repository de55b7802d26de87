#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <limits>
#include <string>
#include <type_traits>

#include <fmt/compile.h>
#include <fmt/format.h>
#include <fmt/xchar.h>

#include "Cases.h"
#include "Inputs.h"
#include "vorel/vorelCore.h"

namespace bench {

namespace {

namespace util = vorel::util;

constexpr std::size_t kCapacity = 64;

/// A pass that writes each value to a buffer with `write`.
template <class T, class Value, class Write>
Pass over(const std::vector<Value>& values, Write write) {
    return [&values, write] {
        std::uint64_t sum = 0;
        T buffer[kCapacity];
        for (const Value value : values) {
            write(value, buffer);
            sum += static_cast<std::uint64_t>(buffer[0]) + static_cast<std::uint64_t>(buffer[1]);
        }
        return sum;
    };
}

constexpr auto kOurDouble = [](double value, auto* buffer) {
    util::doubleToString(value, buffer, kCapacity, util::FO_Default);
};

constexpr auto kOurInteger = [](auto value, auto* buffer) {
    if constexpr (std::is_signed_v<decltype(value)>) {
        util::Int64ToStr(value, buffer, kCapacity);
    } else {
        util::UInt64ToStr(value, buffer, kCapacity);
    }
};

constexpr auto kToChars = [](auto value, char* buffer) { *std::to_chars(buffer, buffer + kCapacity, value).ptr = 0; };

constexpr auto kCompiledFormat = [](auto value, auto* buffer) {
    if constexpr (sizeof *buffer == 1) {
        *fmt::format_to(buffer, FMT_COMPILE("{}"), value) = 0;
    } else {
        *fmt::format_to(buffer, FMT_COMPILE(L"{}"), value) = 0;
    }
};

/// `fmt::format_int` formats into its own buffer. The pass does not copy the text from this buffer.
template <class Value>
Pass overFormatInt(const std::vector<Value>& values) {
    return [&values] {
        std::uint64_t sum = 0;
        for (const Value value : values) {
            const fmt::format_int text(value);
            sum += static_cast<std::uint64_t>(text.c_str()[0]) + static_cast<std::uint64_t>(text.c_str()[1]);
        }
        return sum;
    };
}

void compareDoubles(Family& family, const std::string& name, double (*value)(Random&)) {
    const std::vector<double> doubles = doublesOf(value);
    const std::vector<Peer> peers = {
        {"std::to_chars(general 15)",
         over<char>(doubles,
                    [](double number, char* buffer) {
                        *std::to_chars(buffer, buffer + kCapacity, number, std::chars_format::general, 15).ptr = 0;
                    })},
        {"fmt {:.15g}",
         over<char>(doubles,
                    [](double number, char* buffer) { *fmt::format_to(buffer, FMT_STRING("{:.15g}"), number) = 0; })},
        {"runtime snprintf",
         over<char>(doubles, [](double number, char* buffer) { _snprintf(buffer, kCapacity, "%.15g", number); })}};
    family.compare("format " + name + ", narrow", kNumbers, over<char>(doubles, kOurDouble), peers);
    family.compare("format " + name + ", wide", kNumbers, over<wchar_t>(doubles, kOurDouble), peers);
}

/// Random integers with `fewestDigits` to `mostDigits` digits. A number above the maximum of the type loses its last
/// digit. If `withSigns` is true, about half of the integers are negative.
template <class Value>
std::vector<Value> integersOf(unsigned int fewestDigits, unsigned int mostDigits, bool withSigns = false) {
    constexpr auto kMax = static_cast<std::uint64_t>(std::numeric_limits<Value>::max());
    Random random(20261121);
    std::vector<Value> integers(kNumbers);
    for (Value& integer : integers) {
        const std::uint64_t drawn = integerOf(fewestDigits, mostDigits, random);
        integer = static_cast<Value>(drawn <= kMax ? drawn : drawn / 10);
        integer = withSigns && random() % 2 == 0 ? static_cast<Value>(0 - integer) : integer;
    }
    return integers;
}

template <class Value>
void compareIntegers(Family& family, const std::string& name, const std::vector<Value>& integers) {
    family.compare("format " + name + ", narrow", kNumbers, over<char>(integers, kOurInteger),
                   {{"std::to_chars", over<char>(integers, kToChars)},
                    {"fmt compiled", over<char>(integers, kCompiledFormat)},
                    {"fmt::format_int", overFormatInt(integers)}});
    family.compare("format " + name + ", wide", kNumbers, over<wchar_t>(integers, kOurInteger),
                   {{"std::to_chars", over<char>(integers, kToChars)},
                    {"fmt compiled, wide", over<wchar_t>(integers, kCompiledFormat)},
                    {"fmt::format_int", overFormatInt(integers)}});
}

/// A pass that appends each value to an empty text with `append`. If `reused` is true, all values use the same text.
template <class Text, class Append>
Pass appendEach(const std::vector<int>& values, bool reused, Append append) {
    return [&values, reused, append] {
        std::uint64_t sum = 0;
        Text kept;
        for (const int value : values) {
            if (reused) {
                kept.clear();
                append(kept, value);
                sum += static_cast<std::uint64_t>(*kept.data());
            } else {
                Text fresh;
                append(fresh, value);
                sum += static_cast<std::uint64_t>(*fresh.data());
            }
        }
        return sum;
    };
}

constexpr auto kOurAppend = [](vorel::BaseString<wchar_t>& text, int value) { util::appendInteger(text, value); };
constexpr auto kCompiledAppend = [](std::wstring& text, int value) {
    fmt::format_to(std::back_inserter(text), FMT_COMPILE(L"{}"), value);
};

/// A lower bound for the time of appending to a fresh `BaseString`: one malloc and one free for each value. A fresh
/// std::wstring may need less time, because it keeps short texts in the object.
Pass allocateEach() {
    return [] {
        std::uint64_t sum = 0;
        for (std::size_t number = 0; number < kNumbers; ++number) {
            void* const block = std::malloc(16 * sizeof(wchar_t));
            auto* const units =
                static_cast<volatile wchar_t*>(block);  // volatile, so that the compiler keeps malloc and free
            units[0] = L'0';
            sum += units[0];
            std::free(block);
        }
        return sum;
    };
}

constexpr auto kToWstring = [](std::wstring& text, int value) { text = std::to_wstring(value); };

void compareAppends(Family& family) {
    const std::vector<int> integers = integersOf<int>(1, 10, true);
    for (const bool reused : {false, true}) {
        std::vector<Peer> peers = {
            {"fmt compiled, wstring", appendEach<std::wstring>(integers, reused, kCompiledAppend)},
            {"std::to_wstring", appendEach<std::wstring>(integers, reused, kToWstring)}};
        if (!reused) {
            peers.push_back({"malloc and free alone", allocateEach()});
        }
        family.compare(reused ? "appendInteger, reused text" : "appendInteger, fresh text", kNumbers,
                       appendEach<vorel::BaseString<wchar_t>>(integers, reused, kOurAppend), peers);
    }
}

}  // namespace

void formatDoubles(Family& family) {
    compareDoubles(family, "double, three decimals", threeDecimals);
    compareDoubles(family, "double, random bits", randomBits);
}

void formatIntegers(Family& family) {
    compareIntegers(family, "int64 of 19 digits", integersOf<long long>(19, 19));
    compareIntegers(family, "int64 of 1 to 19 digits", integersOf<long long>(1, 19));
    compareIntegers(family, "int64 of 1 to 10 digits", integersOf<long long>(1, 10));
    compareIntegers(family, "int64 of 6 digits", integersOf<long long>(6, 6));
    compareIntegers(family, "int64 of either sign", integersOf<long long>(1, 19, true));
    compareIntegers(family, "uint64 of 1 to 20 digits", integersOf<unsigned long long>(1, 20));
    compareIntegers(family, "uint64 of 11 to 20 digits", integersOf<unsigned long long>(11, 20));
    compareAppends(family);
}

}  // namespace bench
