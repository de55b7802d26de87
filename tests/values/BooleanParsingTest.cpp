#include "vorel/values/BooleanParsing.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/ListReference.h"
#include "support/RandomInputs.h"
#include "support/RandomText.h"
#include "support/Scans.h"
#include "support/Widths.h"

namespace {

using test::scan;
using test::Scanned;
namespace util = vorel::util;

template <class T>
class BooleanParsing : public ::testing::Test {};
TYPED_TEST_SUITE(BooleanParsing, test::CharacterTypes, test::CharacterNames);

struct Row {
    const char* text;
    bool value;
    std::ptrdiff_t read;
};

template <class T>
void expectRows(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
        EXPECT_EQ((scan<T, bool>(row.text, util::stringToBoolean)), (Scanned<bool>{row.value, row.read})) << row.text;
    }
}

TYPED_TEST(BooleanParsing, StringToBoolean_ReadsWordsOfOneCharacter) {
    expectRows<TypeParam>({{"1", true, 1},
                           {"t", true, 1},
                           {"T", true, 1},
                           {"y", true, 1},
                           {"Y", true, 1},
                           {"0", false, 1},
                           {"f", false, 1},
                           {"F", false, 1},
                           {"n", false, 1},
                           {"N", false, 1},
                           {" \t\n\r1", true, 5},
                           {"  N", false, 3}});
}

TYPED_TEST(BooleanParsing, StringToBoolean_StopsBeforeOtherCharacters) {
    expectRows<TypeParam>({{"x", false, 0},
                           {"o", false, 0},
                           {"-", false, 0},
                           {" -", false, 1},
                           {"+", false, 0},
                           {".", false, 0},
                           {"/", false, 0},
                           {":", false, 0},
                           {"\x11", false, 0},  // '1' without the bit that distinguishes upper and lower case
                           {"\x10", false, 0},  // '0' without this bit
                           {"\x14", false, 0},  // '4' without this bit
                           {"\x7F", false, 0}});
}

TYPED_TEST(BooleanParsing, StringToBoolean_IsFalseForEmptyText) {
    expectRows<TypeParam>({{"", false, 0}, {" ", false, 1}, {" \t\r\n", false, 4}});
}

TYPED_TEST(BooleanParsing, StringToBoolean_ReadsWordsInAnyCase) {
    expectRows<TypeParam>({{"true", true, 4},
                           {"TRUE", true, 4},
                           {"tRuE", true, 4},
                           {"false", false, 5},
                           {"FALSE", false, 5},
                           {"yes", true, 3},
                           {"  Yes", true, 5},
                           {"no", false, 2},
                           {"\tNO", false, 3},
                           {"on", true, 2},
                           {"ON", true, 2},
                           {"off", false, 3},
                           {" \r\nOff", false, 6}});
}

TYPED_TEST(BooleanParsing, StringToBoolean_RejectsIncompleteWordsAndTextAfterAWord) {
    for (const char* const text :
         {"true ", "TRUE\t", "false ", "yes ", "no\n", "on ",  "off\r", "t ", "y ", "f ", "n ",        "truex",
          "true1", "tru",    "ye",     "of",   "onn",  "yess", "tt",    "yn", "t1", "1t", "true false"}) {
        expectRows<TypeParam>({{text, false, 0}});
        expectRows<TypeParam>({{(std::string("  ") + text).c_str(), false, 2}});
    }
}

TYPED_TEST(BooleanParsing, StringToBoolean_ReadsIntegers) {
    expectRows<TypeParam>({{"10", true, 2},
                           {"-3", true, 2},
                           {"+1", true, 2},
                           {"00", false, 2},
                           {"-0", false, 2},
                           {"0010", true, 4},
                           {" 42", true, 3},
                           {"1 ", true, 2},
                           {"0 ", false, 2},
                           {"7 \t", true, 3},  // not a single character, so the digit is parsed as an integer
                           {"4294967296", false, 10},
                           {"4294967297", true, 10}});
}

TYPED_TEST(BooleanParsing, StringToBoolean_StopsAtADecimalPoint) {
    expectRows<TypeParam>({{"2.0", true, 1},
                           {"2.", true, 1},
                           {"0.0", false, 1},
                           {"0.000", false, 1},
                           {"-12.00 ", true, 3},
                           {" 1.0", true, 2}});
}

TYPED_TEST(BooleanParsing, StringToBoolean_RejectsFractionsAndMalformedIntegers) {
    expectRows<TypeParam>({{"2.5", false, 0},
                           {".0", false, 0},
                           {"12x", false, 0},
                           {"1 2", false, 0},
                           {"1e0", false, 0},
                           {"0x1", false, 0},
                           {"--1", false, 0},
                           {" - 1", false, 1},
                           {"1,", false, 0}});
}

TEST(BooleanParsingWidths, StringToBoolean_ReadsDigits2To9OnlyInWideText) {
    for (const char* const digit : {"2", "3", "4", "5", "6", "7", "8", "9"}) {
        expectRows<wchar_t>({{digit, true, 1}});
        expectRows<char>({{digit, false, 0}});
        expectRows<wchar_t>({{(std::string(" ") + digit).c_str(), true, 2}});
        expectRows<char>({{(std::string(" ") + digit).c_str(), false, 1}});
    }
}

TEST(BooleanParsingWidths, NoBreakSpaceIsWhiteSpaceOnlyInWideText) {
    expectRows<wchar_t>({{"\xA0yes", true, 4}, {"\xA0", false, 1}, {"10\xA0", true, 3}, {"yes\xA0", false, 0}});
    expectRows<char>({{"\xA0yes", false, 0}, {"\xA0", false, 0}, {"10\xA0", false, 0}, {"yes\xA0", false, 0}});
    EXPECT_TRUE(util::canCoerceToBoolean(L"\u00A0yes"));
    EXPECT_FALSE(util::canCoerceToBoolean("\xA0yes"));
}

TEST(BooleanParsingWidths, WideUnitsAreNotTruncatedOrCaseFolded) {
    for (const wchar_t* const text : {L"\u0131", L"\u0154", L"\uFF11", L"\uFF34", L"\u0661", L"\u0174RUE", L"ye\u017F",
                                      L"fal\u017Fe", L"\uFF54\uFF52\uFF55\uFF45", L"\u01311"}) {
        EXPECT_EQ((test::scanUnits<wchar_t, bool>(text, util::stringToBoolean)), (Scanned<bool>{false, 0})) << text;
        EXPECT_FALSE(util::canCoerceToBoolean(text)) << text;
    }
}

TYPED_TEST(BooleanParsing, CanCoerceToBoolean_AcceptsTenWordsInAnyCase) {
    for (const char* const word : {"true",  "false", "yes", "no", "0", "1", "t", "f",  "y",   "n",         "True",
                                   "FALSE", "yEs",   "NO",  "T",  "F", "Y", "N", " N", "\t1", " \r\nfalse"}) {
        EXPECT_TRUE(util::canCoerceToBoolean(test::text<TypeParam>(word).c_str())) << word;
    }
}

TYPED_TEST(BooleanParsing, CanCoerceToBoolean_RejectsOnOffAndOtherIntegers) {
    for (const char* const word : {"on", "off", "ON", "Off", "2", "9", "10", "00", "1.0", "-1", "+1", "0.0"}) {
        EXPECT_FALSE(util::canCoerceToBoolean(test::text<TypeParam>(word).c_str())) << word;
    }
}

TYPED_TEST(BooleanParsing, CanCoerceToBoolean_RejectsOtherText) {
    for (const char* const word :
         {"", " ", "true ", "yes ", "no\t", "1 ", "0 ", "t ", "tru", "truex", "x", "\x11", "\x10", "yes no", "ye"}) {
        EXPECT_FALSE(util::canCoerceToBoolean(test::text<TypeParam>(word).c_str())) << word;
    }
}

TYPED_TEST(BooleanParsing, NullTextIsFalseAndSetsTheEndToNull) {
    const TypeParam* const null = nullptr;
    TypeParam character = 0;
    TypeParam* end = &character;
    EXPECT_FALSE(util::stringToBoolean(null, &end));
    EXPECT_EQ(end, nullptr);
    EXPECT_FALSE(util::stringToBoolean(null, nullptr));
    EXPECT_FALSE(util::canCoerceToBoolean(null));
}

TEST(BooleanParsingWidths, ConstantsContainTrueAndFalse) {
    EXPECT_STREQ(util::TAL_True, L"true");
    EXPECT_STREQ(util::TAL_False, L"false");
}

/// Words in upper and lower case, and text similar to words or numbers.
std::string booleanText(test::RandomText& random) {
    constexpr std::string_view kWords[] = {"true", "false", "yes", "no", "on", "off", "t", "f", "y", "n", "0", "12"};
    std::string text = random.from(" \t\n\r\xA0", random.oneIn(4) ? random.below(3) : 0);
    text += random.oneIn(2) ? std::string(kWords[random.below(std::size(kWords))])
                            : random.from("0123456789tTyYfFnNoOeEsS.-+ x", random.below(5));
    for (std::size_t units = random.below(4); units != 0 && !text.empty(); --units) {
        char& unit = text[random.below(text.size())];
        unit = unit >= 'a' && unit <= 'z' ? static_cast<char>(unit - 'a' + 'A') : unit;
    }
    return text + random.from(" \t\xA0x.0", random.oneIn(6) ? 1 : 0);
}

TYPED_TEST(BooleanParsing, RandomTextsAgreeWithTheReference) {
    test::forEachRandomText<TypeParam>(100000, booleanText, [](const TypeParam* text, const std::string& shape) {
        const test::Reading<bool> wanted = test::readBoolean(shape, sizeof(TypeParam) > 1);
        TypeParam* end = nullptr;
        EXPECT_EQ(util::stringToBoolean(text, &end), wanted.value);
        EXPECT_EQ(end - text, static_cast<std::ptrdiff_t>(wanted.end));
        EXPECT_EQ(util::canCoerceToBoolean(text), test::canBeBoolean(shape));
    });
}

}  // namespace
