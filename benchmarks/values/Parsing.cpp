#include <bit>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>
#include <type_traits>

#include <fast_float/fast_float.h>

#include "Cases.h"
#include "DigitLoop.h"
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

constexpr auto kOurHex = [](const auto* begin, const auto*) {
    std::decay_t<decltype(*begin)>* end = nullptr;
    return static_cast<std::uint64_t>(util::hexToInteger(begin, &end));
};

constexpr auto kOurDouble = [](const auto* begin, const auto*) {
    std::decay_t<decltype(*begin)>* end = nullptr;
    return std::bit_cast<std::uint64_t>(util::stringToDouble(begin, &end));
};

template <class Value, int base = 10>
std::uint64_t fromChars(const char* begin, const char* end) {
    Value value = 0;
    std::from_chars(begin, end, value, base);
    return static_cast<std::uint64_t>(value);
}

/// The library's parser for a type.
template <class Value>
struct OurParser;

template <>
struct OurParser<int> {
    static std::uint64_t parse(const auto* begin, const auto*) {
        std::decay_t<decltype(*begin)>* end = nullptr;
        return static_cast<std::uint64_t>(util::stringToInt(begin, &end));
    }
};

template <>
struct OurParser<long long> {
    static std::uint64_t parse(const auto* begin, const auto*) {
        std::decay_t<decltype(*begin)>* end = nullptr;
        return static_cast<std::uint64_t>(util::stringToInt64(begin, &end));
    }
};

template <>
struct OurParser<unsigned long long> {
    static std::uint64_t parse(const auto* begin, const auto*) {
        std::decay_t<decltype(*begin)>* end = nullptr;
        return util::stringToUInt64(begin, &end);
    }
};

/// Parses random numbers with `fewestDigits` to `mostDigits` digits. A number above the maximum of the type loses its
/// last digit. If `withSigns` is true, about half of the numbers are negative.
template <class Value>
void compareIntegers(Family& family, const std::string& name, unsigned int fewestDigits, unsigned int mostDigits,
                     bool withSigns = false) {
    constexpr auto kMax = static_cast<std::uint64_t>(std::numeric_limits<Value>::max());
    Random random(20261121);
    BothWidths texts;
    for (std::size_t number = 0; number < kNumbers; ++number) {
        const std::uint64_t drawn = integerOf(fewestDigits, mostDigits, random);
        const std::string sign = withSigns && random() % 2 == 0 ? "-" : "";
        texts.add(sign + std::to_string(drawn <= kMax ? drawn : drawn / 10));
    }
    const std::vector<Peer> peers = {{"std::from_chars", over(texts.narrow, fromChars<Value>)},
                                     {"the method of fast_float 5", over(texts.narrow, parseByTable<Value, 10>)}};
    const auto ours = [](const auto* begin, const auto* end) { return OurParser<Value>::parse(begin, end); };
    family.compare("parse " + name + ", narrow", kNumbers, over(texts.narrow, ours), peers);
    family.compare("parse " + name + ", wide", kNumbers, over(texts.wide, ours), peers);
}

void compareHex(Family& family, const std::string& name, unsigned int fewestDigits) {
    Random random(20261121);
    BothWidths texts;
    for (std::size_t number = 0; number < kNumbers; ++number) {
        const std::uint64_t digits = fewestDigits + random() % (9 - fewestDigits);
        char text[16];
        std::snprintf(text, sizeof text, random() % 2 == 0 ? "%x" : "%X",
                      static_cast<unsigned int>((8 + random() % 8) << 4 * (digits - 1) |
                                                random() % (std::uint64_t{1} << 4 * (digits - 1))));
        texts.add(text);
    }
    const std::vector<Peer> peers = {
        {"std::from_chars", over(texts.narrow, fromChars<unsigned int, 16>)},
        {"the method of fast_float 5", over(texts.narrow, parseByTable<unsigned int, 16>)}};
    family.compare("parse " + name + ", narrow", kNumbers, over(texts.narrow, kOurHex), peers);
    family.compare("parse " + name + ", wide", kNumbers, over(texts.wide, kOurHex), peers);
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
    compareIntegers<int>(family, "int of 1 to 10 digits", 1, 10);
    compareIntegers<int>(family, "int of 6 digits", 6, 6);
    compareIntegers<int>(family, "int of either sign", 1, 10, true);
    compareIntegers<long long>(family, "int64 of 1 to 19 digits", 1, 19);
    compareIntegers<unsigned long long>(family, "uint64 of 11 to 20 digits", 11, 20);
    compareHex(family, "hex of 1 to 8 digits", 1);
    compareHex(family, "hex of 8 digits", 8);
}

void parseDoubles(Family& family) {
    compareDoubles(family, "double %.3f", "%.3f", threeDecimals);
    compareDoubles(family, "double of 17 digits", "%.17g",
                   [](Random& random) { return static_cast<double>(random()) / 1.8446744073709552e16; });
    compareDoubles(family, "double %.8e", "%.8e", randomBits);
}

}  // namespace bench
