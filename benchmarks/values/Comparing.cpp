#include <cstring>
#include <cwchar>
#include <string>

#include "Cases.h"
#include "Inputs.h"
#include "vorel/vorelCore.h"

namespace bench {

namespace {

namespace util = vorel::util;

constexpr std::size_t kPairs = 20000;

/// The range of the lengths. Both texts of a pair have the same length.
struct Lengths {
    std::size_t fewest;
    std::size_t most;
};

struct Pairs {
    BothWidths lower;
    BothWidths upper;
};

/// Pairs of texts that consist of letters. In the second text, x, y and z are in upper case. If `equal` is false, an
/// exclamation mark replaces a random letter of the second text.
Pairs pairsOf(Lengths lengths, bool equal) {
    Random random(20261121);
    Pairs pairs;
    for (std::size_t pair = 0; pair < kPairs; ++pair) {
        std::string text(lengths.fewest + random() % (lengths.most - lengths.fewest + 1), 'a');
        for (char& c : text) {
            c = static_cast<char>('a' + random() % 26);
        }
        pairs.lower.add(text);
        for (char& c : text) {
            c = c >= 'x' ? static_cast<char>(c - 'a' + 'A') : c;
        }
        if (!equal) {
            text[random() % text.size()] = '!';
        }
        pairs.upper.add(text);
    }
    return pairs;
}

template <class T, class Compare>
Pass over(const Texts<T>& a, const Texts<T>& b, Compare compare) {
    return [&a, &b, compare] {
        std::uint64_t sum = 0;
        for (std::size_t index = 0; index < a.size(); ++index) {
            sum += static_cast<std::uint64_t>(compare(a.begin(index), b.begin(index)));
        }
        return sum;
    };
}

constexpr auto kIgnoringCase = [](const auto* a, const auto* b) {
    return util::strcmpAdvanced(a, b, util::SCMP_IgnoreCase);
};

constexpr auto kAllFlags = [](const auto* a, const auto* b) {
    return util::strcmpAdvanced(a, b, util::SCMP_IgnoreCase | util::SCMP_Numeric | util::SCMP_SlashesEqual);
};

void compareIgnoringCase(Family& family, const std::string& name, Lengths lengths, bool equal) {
    const Pairs pairs = pairsOf(lengths, equal);
    const Texts<char>& lower = pairs.lower.narrow;
    const Texts<char>& upper = pairs.upper.narrow;
    family.compare("compare ignoring case, " + name + ", narrow", kPairs, over(lower, upper, kIgnoringCase),
                   {{"_stricmp of the runtime", over(lower, upper, _stricmp)}});
    const Texts<wchar_t>& wideLower = pairs.lower.wide;
    const Texts<wchar_t>& wideUpper = pairs.upper.wide;
    family.compare("compare ignoring case, " + name + ", wide", kPairs, over(wideLower, wideUpper, kIgnoringCase),
                   {{"_wcsicmp of the runtime", over(wideLower, wideUpper, _wcsicmp)}});
}

}  // namespace

void compareTexts(Family& family) {
    for (const std::size_t length : {8u, 24u, 256u}) {
        compareIgnoringCase(family, std::to_string(length) + " equal", {length, length}, true);
        compareIgnoringCase(family, std::to_string(length) + " different", {length, length}, false);
    }
    compareIgnoringCase(family, "4 to 40 equal", {4, 40}, true);
    const Pairs pairs = pairsOf({4, 40}, true);
    family.compare("compare with all flags, wide", kPairs, over(pairs.lower.wide, pairs.upper.wide, kAllFlags),
                   {{"_wcsicmp of the runtime", over(pairs.lower.wide, pairs.upper.wide, _wcsicmp)}});
}

}  // namespace bench
