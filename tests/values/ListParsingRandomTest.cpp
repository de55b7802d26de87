// Parses random lists, narrow and wide, with every list parser except `stringToLongRanges`. The return values and the
// parsed values must be equal to the results of the reference. Doubles are compared bit by bit.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/Arrays.h"
#include "support/ListReference.h"
#include "support/RandomInputs.h"
#include "support/RandomText.h"
#include "support/Scans.h"
#include "support/Widths.h"
#include "vorel/values/ListParsing.h"

namespace {

using test::valuesOf;
using vorel::Array;
namespace util = vorel::util;

constexpr int kTexts = 40000;

/// Creates lists whose words consist of characters of one of the alphabets. White space or commas separate most words.
/// The lengths of some words are near the maximum length, below and above it.
struct WordsFrom {
    std::vector<std::string_view> alphabets;

    std::string operator()(test::RandomText& random) const {
        const std::string_view alphabet = alphabets[random.below(alphabets.size())];
        std::string text = random.from(" \t\xA0", random.oneIn(4) ? random.below(3) : 0);
        for (std::size_t words = random.below(6); words != 0; --words) {
            text += random.from(alphabet, random.oneIn(50) ? 76 + random.below(8) : random.below(8));
            text += random.from(" ,\t\n\r\xA0", random.oneIn(3) ? random.below(3) : 1);
        }
        return text + random.from("x;.,\v\xB2", random.oneIn(8) ? 1 : 0);
    }
};

/// Boolean values and similar words.
std::string truthValues(test::RandomText& random) {
    constexpr std::string_view kWords[] = {"true", "FALSE", "T",   "f",   "yes", "1",    "0",     "007",
                                           "2.0",  "2.5",   "tru", "-0.", "Off", "tRUE", "falSE", "4294967296"};
    std::string text;
    for (std::size_t words = random.below(8); words != 0; --words) {
        text += kWords[random.below(std::size(kWords))];
        text += random.from(" \t\n\r\xA0", random.oneIn(12) ? 0 : 1 + random.below(2));
    }
    return text;
}

constexpr std::string_view kSignsAndDigits = "0123456789+-";
constexpr std::string_view kNumbers = "001129.eE+-";

template <class T>
class ListParsingRandom : public ::testing::Test {
protected:
    static void expectBooleans(const T* text, const std::string& shape) {
        const auto wanted = test::readBooleans(shape);
        Array<bool> values;
        EXPECT_EQ(util::stringToBooleanArray(text, values, false), wanted.whole);
        EXPECT_EQ(valuesOf(values), wanted.values);
    }
};
TYPED_TEST_SUITE(ListParsingRandom, test::CharacterTypes, test::CharacterNames);

TYPED_TEST(ListParsingRandom, IntegersAgreeWithTheReference) {
    test::forEachRandomText<TypeParam>(
        kTexts, WordsFrom{{kSignsAndDigits, kNumbers}}, [](const TypeParam* text, const std::string& shape) {
            const auto wanted = test::readIntegers(shape);
            Array<int> values;
            EXPECT_EQ(util::stringToIntegerArray(text, values, false), wanted.whole);
            EXPECT_EQ(valuesOf(values), std::vector<int>(wanted.values.begin(), wanted.values.end()));
            if constexpr (sizeof(TypeParam) > 1) {
                Array<unsigned int> unsignedValues;
                EXPECT_EQ(util::stringToUIntegerArray(text, unsignedValues, false), wanted.whole);
                EXPECT_EQ(valuesOf(unsignedValues), wanted.values);
            }
        });
}

TYPED_TEST(ListParsingRandom, CanCoerceToIntegerArrayAgreesWithTheReference) {
    test::forEachRandomText<TypeParam>(kTexts, WordsFrom{{"0123456789", kSignsAndDigits}},
                                       [](const TypeParam* text, const std::string& shape) {
                                           EXPECT_EQ(util::canCoerceToIntegerArray(text), test::canBeIntegers(shape));
                                       });
}

TYPED_TEST(ListParsingRandom, DoublesAgreeWithTheReferenceInEveryBit) {
    test::forEachRandomText<TypeParam>(kTexts, WordsFrom{{kSignsAndDigits, kNumbers}},
                                       [](const TypeParam* text, const std::string& shape) {
                                           const auto wanted = test::readDoubles(shape);
                                           Array<double> values;
                                           EXPECT_EQ(util::stringToDoubleArray(text, values, false), wanted.whole);
                                           EXPECT_EQ(test::bitsOf(valuesOf(values)), test::bitsOf(wanted.values));
                                       });
}

TYPED_TEST(ListParsingRandom, BooleansAgreeWithTheReference) {
    test::forEachRandomText<TypeParam>(kTexts, truthValues, &TestFixture::expectBooleans);
}

TYPED_TEST(ListParsingRandom, BooleansAmongNumbersAgreeWithTheReference) {
    test::forEachRandomText<TypeParam>(kTexts, WordsFrom{{"tTfF01.-xyn", kNumbers}}, &TestFixture::expectBooleans);
}

}  // namespace
