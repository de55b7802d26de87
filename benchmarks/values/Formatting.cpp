#include <charconv>
#include <cstdio>
#include <cstring>
#include <iterator>

#include <fmt/format.h>

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

constexpr auto kOurInteger = [](long long value, auto* buffer) { util::Int64ToStr(value, buffer, kCapacity); };

constexpr auto kToChars = [](auto value, char* buffer) { *std::to_chars(buffer, buffer + kCapacity, value).ptr = 0; };

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
        {"snprintf of the runtime",
         over<char>(doubles, [](double number, char* buffer) { _snprintf(buffer, kCapacity, "%.15g", number); })}};
    family.compare("format " + name + ", narrow", kNumbers, over<char>(doubles, kOurDouble), peers);
    family.compare("format " + name + ", wide", kNumbers, over<wchar_t>(doubles, kOurDouble), peers);
}

void compareIntegers(Family& family, const std::string& name, unsigned int fewestDigits, unsigned int mostDigits) {
    Random random(20261121);
    std::vector<long long> integers(kNumbers);
    for (long long& integer : integers) {
        integer = static_cast<long long>(integerOf(fewestDigits, mostDigits, random) % 9223372036854775807u);
    }
    const std::vector<Peer> peers = {{"std::to_chars", over<char>(integers, kToChars)}};
    family.compare("format " + name + ", narrow", kNumbers, over<char>(integers, kOurInteger), peers);
    family.compare("format " + name + ", wide", kNumbers, over<wchar_t>(integers, kOurInteger), peers);
}

}  // namespace

void formatDoubles(Family& family) {
    compareDoubles(family, "double, three decimals", threeDecimals);
    compareDoubles(family, "double, random bits", randomBits);
}

void formatIntegers(Family& family) {
    compareIntegers(family, "int64 of 19 digits", 19, 19);
    compareIntegers(family, "int64 of 1 to 19 digits", 1, 19);
}

}  // namespace bench
