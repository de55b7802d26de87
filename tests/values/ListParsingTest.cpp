// Lists of integers, doubles and booleans. Ranges and random lists are in separate files.

#include "vorel/values/ListParsing.h"

#include <algorithm>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "support/Arrays.h"
#include "support/Scans.h"
#include "support/Widths.h"

namespace {

using vorel::Array;
namespace util = vorel::util;

template <class T>
class ListParsing : public ::testing::Test {};
TYPED_TEST_SUITE(ListParsing, test::CharacterTypes, test::CharacterNames);

template <class Value>
struct Row {
    const char* text;
    bool result;
    std::vector<Value> values;
};

template <class Value>
bool areSame(const std::vector<Value>& a, const std::vector<Value>& b) {
    if constexpr (std::is_same_v<Value, double>) {
        return test::bitsOf(a) == test::bitsOf(b);
    } else {
        return a == b;
    }
}

/// Parses a row into an array that contains `old`, first without and then with `append`. The parsed values must replace
/// `old` in the first case, and follow `old` in the second case.
template <class T, class Value>
void expectRow(bool (*read)(const T*, Array<Value>&, bool), const Row<Value>& row, const std::vector<Value>& old) {
    const test::OptionalText<T> text(row.text);
    for (const bool append : {false, true}) {
        Array<Value> values = test::arrayOf(old);
        EXPECT_EQ(read(text.get(), values, append), row.result) << (row.text ? row.text : "null");
        std::vector<Value> wanted = append ? old : std::vector<Value>();
        wanted.insert(wanted.end(), row.values.begin(), row.values.end());
        EXPECT_TRUE(areSame(test::valuesOf(values), wanted))
            << ::testing::PrintToString(test::valuesOf(values)) << " from " << (row.text ? row.text : "null");
    }
}

/// Parses a row as integers. Wide text is also parsed as unsigned integers, which must have the same bits.
template <class T>
void expectIntegers(const Row<int>& row) {
    expectRow<T, int>(&util::stringToIntegerArray, row, {99, -99});
    if constexpr (sizeof(T) > 1) {
        std::vector<unsigned int> asUnsigned;
        for (const int value : row.values) {
            asUnsigned.push_back(static_cast<unsigned int>(value));
        }
        expectRow<wchar_t, unsigned int>(&util::stringToUIntegerArray, {row.text, row.result, asUnsigned},
                                         {99, 4294967295u});
    }
}

constexpr int kSmallest = std::numeric_limits<int>::min();

TYPED_TEST(ListParsing, Integers_AreSeparatedByWhiteSpaceOrCommas) {
    for (const Row<int>& row : std::vector<Row<int>>{{"7", true, {7}},
                                                     {"1,2", true, {1, 2}},
                                                     {"1 ,2", true, {1, 2}},
                                                     {"1 2", true, {1, 2}},
                                                     {"1 \t\r\n 2", true, {1, 2}},
                                                     {" \t\n\r7", true, {7}},
                                                     {"7 ", true, {7}},
                                                     {"-4,+6", true, {-4, 6}},
                                                     {"1+2-3", true, {1, 2, -3}},  // a sign starts the next item
                                                     {"007", true, {7}}}) {
        expectIntegers<TypeParam>(row);
    }
}

TYPED_TEST(ListParsing, Integers_ReadEmptyItemsAsZero) {
    for (const Row<int>& row :
         std::vector<Row<int>>{{"1, 2", true, {1, 0, 2}},  // the item between the comma and the space is empty
                               {"1 , 2", true, {1, 0, 2}},
                               {"1,  ,2", true, {1, 0, 2}},
                               {",5", true, {0, 5}},
                               {" ,5", true, {0, 5}},
                               {"1,,2", true, {1, 0, 2}},
                               {"1,", true, {1}},
                               {"1,,", true, {1, 0}},
                               {"1, ", true, {1, 0}},
                               {",", true, {0}},
                               {",,", true, {0, 0}},
                               {"-", true, {0}},
                               {"-,5", true, {0, 5}},
                               {"5-", true, {5, 0}},
                               {"--1", true, {0, -1}},
                               {"+-1", true, {0, -1}},
                               {"- 1", true, {0, 1}}}) {
        expectIntegers<TypeParam>(row);
    }
}

TYPED_TEST(ListParsing, Integers_TruncateFractions) {
    for (const Row<int>& row : std::vector<Row<int>>{{"2.9", true, {2}},
                                                     {"-1.9", true, {-1}},
                                                     {"1.9 ,2.1", true, {1, 2}},
                                                     {"1.,2", true, {1, 2}},
                                                     {"1. 5", true, {1, 5}},
                                                     {"1.5-2", true, {1, -2}},
                                                     {"2.9.9", true, {2, 0}},
                                                     {".5", true, {0}},
                                                     {".", true, {0}},
                                                     {"-.5", true, {0}},
                                                     {"1.99999999999999999999", true, {1}}}) {
        expectIntegers<TypeParam>(row);
    }
}

TYPED_TEST(ListParsing, Integers_WrapAroundAt32Bits) {
    for (const Row<int>& row : std::vector<Row<int>>{{"2147483647,2147483648", true, {2147483647, kSmallest}},
                                                     {"-2147483648 -2147483649", true, {kSmallest, 2147483647}},
                                                     {"4294967295", true, {-1}},
                                                     {"4294967297", true, {1}},
                                                     {"-4294967297", true, {-1}},
                                                     {"99999999999", true, {1215752191}}}) {
        expectIntegers<TypeParam>(row);
    }
}

TYPED_TEST(ListParsing, Integers_StopAtOtherCharactersAndKeepEarlierValues) {
    for (const Row<int>& row : std::vector<Row<int>>{{"x", false, {}},
                                                     {" x", false, {}},
                                                     {"1;2", false, {1}},
                                                     {"1,x,2", false, {1}},
                                                     {"1 x", false, {1}},
                                                     {"1,2 3;", false, {1, 2, 3}},
                                                     {"1e3", false, {1}},
                                                     {"0x10", false, {0}},
                                                     {"-x", false, {0}},
                                                     {",x", false, {0}},
                                                     {"1.5x", false, {1}},
                                                     {"1\v2", false, {1}},
                                                     {"2147483648:", false, {kSmallest}}}) {
        expectIntegers<TypeParam>(row);
    }
}

TYPED_TEST(ListParsing, EmptyTextIsAnEmptyList) {
    for (const char* const nothing : {static_cast<const char*>(nullptr), "", " ", " \t\r\n"}) {
        expectIntegers<TypeParam>({nothing, true, {}});
        expectRow<TypeParam, double>(&util::stringToDoubleArray, {nothing, true, {}}, {9.0});
        expectRow<TypeParam, bool>(&util::stringToBooleanArray, {nothing, true, {}}, {true});
        const test::OptionalText<TypeParam> text(nothing);
        EXPECT_TRUE(util::canCoerceToIntegerArray(text.get()));
    }
}

TYPED_TEST(ListParsing, Doubles_AreSeparatedByWhiteSpace) {
    constexpr double kInfinite = std::numeric_limits<double>::infinity();
    for (const Row<double>& row : std::vector<Row<double>>{{"7", true, {7}},
                                                           {"1.5 2e3 abc 4", true, {1.5, 2000, 4}},
                                                           {"\t-.5\r\n+5. ", true, {-0.5, 5}},
                                                           {"1e0 1E+2 1e-2", true, {1, 100, 1.0 / 100.0}},
                                                           {"-0 0", true, {-0.0, 0.0}},
                                                           {"1e400 1e-400", true, {kInfinite, 0}},
                                                           {"0.000000000000000000001", true, {0}},
                                                           {"1e33", true, {0x1.8a6e32246c99dp+109}},
                                                           {"007 .5", true, {7, 0.5}}}) {
        expectRow<TypeParam, double>(&util::stringToDoubleArray, row, {-9.5, 99});
    }
}

TYPED_TEST(ListParsing, Doubles_SkipWordsThatAreNotNumbers) {
    for (const Row<double>& row : std::vector<Row<double>>{{"1 x 2", true, {1, 2}},
                                                           {"x", true, {}},
                                                           {"1,5", true, {}},  // a comma is part of a word
                                                           {"1, 2", true, {2}},
                                                           {"1e 1e+ 1e- 3", true, {3}},
                                                           {". + - -. e5 .e5 3", true, {3}},
                                                           {"1x 1.2.3 1e5e5 1e5.0 --1 3", true, {3}},
                                                           {"NaN Inf Infinity 0x10 3", true, {3}}}) {
        expectRow<TypeParam, double>(&util::stringToDoubleArray, row, {-9.5, 99});
    }
}

TYPED_TEST(ListParsing, Booleans_AreWordsInAnyCaseOrIntegers) {
    for (const Row<bool>& row :
         std::vector<Row<bool>>{{"T f 1 0 yes 3", true, {true, false, true, false, true}},
                                {"true FALSE t F tRuE fAlSe", true, {true, false, true, false, true, false}},
                                {"\tt\r\nf ", true, {true, false}},
                                {"2 9 10 -3 +1 007", true, {true, true, true, true, true, true}},
                                {"00 -0 +0 0. 0.000", true, {false, false, false, false, false}},
                                {"2.0 2. -1.00", true, {true, true, true}},
                                {"4294967296 4294967297", true, {false, true}}}) {
        expectRow<TypeParam, bool>(&util::stringToBooleanArray, row, {true, false});
    }
}

TYPED_TEST(ListParsing, Booleans_SkipWordsThatAreNotBooleans) {
    for (const Row<bool>& row : std::vector<Row<bool>>{{"yes no on off y n Y N t", true, {true}},
                                                       {"truex tru fals falsee tt f", true, {false}},
                                                       {"2.5 .5 .0 1x 1e0 - + . t", true, {true}},
                                                       {"true,false 1,0 f", true, {false}}}) {
        expectRow<TypeParam, bool>(&util::stringToBooleanArray, row, {true, false});
    }
}

/// A list with a word of `count` characters between two numbers.
std::string listAround(char c, std::size_t count) {
    return "1 " + std::string(count, c) + " 2";
}

TYPED_TEST(ListParsing, DoublesAndBooleans_StopAtAWordOf80Characters) {
    const auto doubles = [](const std::string& text, bool result, const std::vector<double>& values) {
        expectRow<TypeParam, double>(&util::stringToDoubleArray, {text.c_str(), result, values}, {-9.5});
    };
    doubles(listAround('0', 79), true, {1, 0, 2});
    doubles(listAround('x', 79), true, {1, 2});
    doubles(listAround('0', 80), false, {1});
    doubles(listAround('x', 80), false, {1});
    doubles(listAround('0', 200), false, {1});
    doubles(std::string(79, '0'), true, {0});
    doubles(std::string(80, '0'), false, {});
    doubles("  " + std::string(79, '0') + "\t", true, {0});
    const auto booleans = [](const std::string& text, bool result, const std::vector<bool>& values) {
        expectRow<TypeParam, bool>(&util::stringToBooleanArray, {text.c_str(), result, values}, {false});
    };
    booleans(listAround('0', 79), true, {true, false, true});
    booleans(listAround('x', 79), true, {true, true});
    booleans(listAround('0', 80), false, {true});
    booleans(listAround('x', 80), false, {true});
    booleans(std::string(79, '1'), true, {true});
    booleans(std::string(80, '1'), false, {});
    // Integers have no maximum length.
    expectIntegers<TypeParam>({(std::string(300, '0') + "5").c_str(), true, {5}});
}

TYPED_TEST(ListParsing, CanCoerceToIntegerArray_AcceptsSignsDigitsAndWhiteSpace) {
    for (const char* const list :
         {"7", "1 2", " 1 -2  +3\t\r\n", "1-2", "1+2-3", "-", "+", "+-", "--1", "+ 4", "007", "99999999999999999999"}) {
        EXPECT_TRUE(util::canCoerceToIntegerArray(test::text<TypeParam>(list).c_str())) << list;
    }
}

TYPED_TEST(ListParsing, CanCoerceToIntegerArray_RejectsOtherCharacters) {
    for (const char* const list :
         {"1,2", "1 ,2", ",", "1,", "1.5", "1.", ".", "x", " x", "1 x", "1x", "1;2", "1e3", "0x1", "1\v2"}) {
        EXPECT_FALSE(util::canCoerceToIntegerArray(test::text<TypeParam>(list).c_str())) << list;
    }
}

TEST(ListParsingWidths, NoBreakSpaceIsWhiteSpaceOnlyInWideLists) {
    constexpr const char* kList = "\xA0"
                                  "1\xA0"
                                  "2 0";
    expectIntegers<wchar_t>({kList, true, {1, 2, 0}});
    expectIntegers<char>({kList, false, {}});
    expectIntegers<char>({"1 2\xA0", false, {1, 2}});
    expectRow<wchar_t, double>(&util::stringToDoubleArray, {kList, true, {1, 2, 0}}, {9});
    expectRow<char, double>(&util::stringToDoubleArray, {kList, true, {0}}, {9});
    expectRow<wchar_t, bool>(&util::stringToBooleanArray, {kList, true, {true, true, false}}, {true});
    expectRow<char, bool>(&util::stringToBooleanArray, {kList, true, {false}}, {true});
    EXPECT_TRUE(util::canCoerceToIntegerArray(test::text<wchar_t>(kList).c_str()));
    EXPECT_FALSE(util::canCoerceToIntegerArray(kList));
    EXPECT_FALSE(util::canCoerceToIntegerArray("1\xA0"));
}

}  // namespace
