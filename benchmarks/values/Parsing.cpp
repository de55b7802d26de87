#include <bit>
#include <charconv>
#include <cstdlib>
#include <type_traits>

#include <fast_float/fast_float.h>

#include "Cases.h"
#include "Inputs.h"
#include "vorel/vorelCore.h"

namespace bench {

namespace {

namespace util = vorel::util;

/// A pass that calls `parse` with the begin and end of each text; `parse` returns the bits of the number.
template <class T, class Parse>
Pass over(const Texts<T>& texts, Parse parse) {
    return [&texts, parse] {
        std::uint64_t sum = 0;
        for (std::size_t index = 0; index < texts.size(); ++index) {
            sum += parse(texts.begin(index), texts.end(index));
        }
        return sum;
    };
}

constexpr auto kOurInteger = [](const auto* begin, const auto*) {
    std::decay_t<decltype(*begin)>* end = nullptr;
    return static_cast<std::uint64_t>(util::stringToInt64(begin, &end));
};

constexpr auto kOurInt = [](const auto* begin, const auto*) {
    std::decay_t<decltype(*begin)>* end = nullptr;
    return static_cast<std::uint64_t>(util::stringToInt(begin, &end));
};

constexpr auto kOurDouble = [](const auto* begin, const auto*) {
    std::decay_t<decltype(*begin)>* end = nullptr;
    return std::bit_cast<std::uint64_t>(util::stringToDouble(begin, &end));
};

template <class Value>
std::uint64_t fromChars(const char* begin, const char* end) {
    Value value = 0;
    std::from_chars(begin, end, value);
    return static_cast<std::uint64_t>(value);
}

void compareIntegers(Family& family, const std::string& name, std::uint64_t limit, unsigned int mostDigits) {
    Random random(20261121);
    BothWidths texts;
    for (std::size_t number = 0; number < kNumbers; ++number) {
        texts.add(std::to_string(integerOf(1, mostDigits, random) % limit));
    }
    const bool isShort = mostDigits <= 10;
    const std::vector<Peer> peers = {
        {"std::from_chars", over(texts.narrow, isShort ? fromChars<int> : fromChars<long long>)}};
    family.compare("parse " + name + ", narrow", kNumbers,
                   isShort ? over(texts.narrow, kOurInt) : over(texts.narrow, kOurInteger), peers);
    family.compare("parse " + name + ", wide", kNumbers,
                   isShort ? over(texts.wide, kOurInt) : over(texts.wide, kOurInteger), peers);
}

void compareDoubles(Family& family, const std::string& name, const char* format, double (*value)(Random&)) {
    const BothWidths texts = textsOf(format, value);
    const std::vector<Peer> peers = {{"fast_float", over(texts.narrow,
                                                         [](const char* begin, const char* end) {
                                                             double number = 0;
                                                             fast_float::from_chars(begin, end, number);
                                                             return std::bit_cast<std::uint64_t>(number);
                                                         })},
                                     {"strtod of the runtime", over(texts.narrow, [](const char* begin, const char*) {
                                          char* end = nullptr;
                                          return std::bit_cast<std::uint64_t>(_strtod_l(begin, &end, nullptr));
                                      })}};
    family.compare("parse " + name + ", narrow", kNumbers, over(texts.narrow, kOurDouble), peers);
    family.compare("parse " + name + ", wide", kNumbers, over(texts.wide, kOurDouble), peers);
}

}  // namespace

void parseIntegers(Family& family) {
    compareIntegers(family, "int of 1 to 10 digits", 2147483648u, 10);
    compareIntegers(family, "int64 of 1 to 19 digits", 9223372036854775808u, 19);
}

void parseDoubles(Family& family) {
    compareDoubles(family, "double %.3f", "%.3f", threeDecimals);
    compareDoubles(family, "double of 17 digits", "%.17g",
                   [](Random& random) { return static_cast<double>(random()) / 1.8446744073709552e16; });
    compareDoubles(family, "double %.8e", "%.8e", randomBits);
}

}  // namespace bench
