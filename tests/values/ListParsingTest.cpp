#include "vorel/values/ListParsing.h"

#include <bit>
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/Arrays.h"
#include "support/Expect.h"
#include "support/ListReference.h"
#include "support/RandomText.h"
#include "support/Shape.h"
#include "support/Widths.h"
#include "vorel/exceptions/Exception.h"

namespace {

using test::valuesOf;
using vorel::Array;
using vorel::Exception;
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

/// Reads a row over an array that already holds `old`, without and with append.
template <class T, class Value>
void expectRow(bool (*read)(const T*, Array<Value>&, bool), const Row<Value>& row, Value old) {
    const test::OptionalText<T> text(row.text);
    for (const bool append : {false, true}) {
        Array<Value> values;
        values.append(old);
        EXPECT_EQ(read(text.get(), values, append), row.result) << (row.text ? row.text : "null");
        std::vector<Value> wanted(append ? 1 : 0, old);
        for (const Value value : row.values) {
            wanted.push_back(value);
        }
        EXPECT_EQ(valuesOf(values), wanted) << (row.text ? row.text : "null");
    }
}

TYPED_TEST(ListParsing, Integers_CountEveryEmptyItem) {
    const std::vector<Row<int>> rows = {
        {"1,2", true, {1, 2}},
        {"1 ,2", true, {1, 2}},
        {"1 2", true, {1, 2}},
        {"1, 2", true, {1, 0, 2}},  // the blank behind a comma is an item of its own
        {",5", true, {0, 5}},
        {"1,,2", true, {1, 0, 2}},
        {"1,", true, {1}},
        {"1, ", true, {1, 0}},
        {" \t\n\r7", true, {7}},
        {"2.9", true, {2}},
        {"2.9.9", true, {2, 0}},
        {".5", true, {0}},
        {"-", true, {0}},
        {"+-1", true, {0, -1}},
        {"-4.5,+6", true, {-4, 6}},
        {"4294967297", true, {1}},
        {"2147483648", true, {-2147483647 - 1}},
        {"1;2", false, {1}},
        {"x", false, {}},
        {"", true, {}},
        {"  ", true, {}},
        {nullptr, true, {}},
    };
    for (const Row<int>& row : rows) {
        expectRow<TypeParam>(&util::stringToIntegerArray, row, 99);
    }
}

TEST(ListParsingWidths, UnsignedIntegers_KeepTheBits) {
    for (const Row<unsigned int>& row : std::vector<Row<unsigned int>>{{"-1", true, {4294967295u}},
                                                                       {"4294967295 ,2.9", true, {4294967295u, 2}},
                                                                       {"3;", false, {3}},
                                                                       {nullptr, true, {}}}) {
        expectRow<wchar_t>(&util::stringToUIntegerArray, row, 7u);
    }
}

TEST(ListParsingWidths, TheNoBreakSpaceIsABlankInWideListsOnly) {
    expectRow<wchar_t, int>(&util::stringToIntegerArray,
                            {"\xA0"
                             "1\xA0,2",
                             true,
                             {1, 2}},
                            0);
    expectRow<char, int>(&util::stringToIntegerArray, {"1\xA0", false, {1}}, 0);
    expectRow<wchar_t, double>(&util::stringToDoubleArray,
                               {"1\xA0"
                                "2",
                                true,
                                {1, 2}},
                               0);
    expectRow<char, double>(&util::stringToDoubleArray,
                            {"1\xA0"
                             "2 3",
                             true,
                             {3}},
                            0);
    EXPECT_TRUE(util::canCoerceToIntegerArray(L"1\u00A0"
                                              L"2"));
    EXPECT_FALSE(util::canCoerceToIntegerArray("1\xA0"));
}

TYPED_TEST(ListParsing, Doubles_PassOverWordsThatAreNoNumbers) {
    const std::vector<Row<double>> rows = {
        {"1.5 2e3 abc 4", true, {1.5, 2000, 4}},
        {"1,5", true, {}},
        {"\t-.5\r\n+5. ", true, {-0.5, 5}},
        {"1e0 1e 1e+ . + 007", true, {1, 7}},  // an exponent of zero is one here
        {"NaN Inf 1", true, {1}},
        {"", true, {}},
        {" ", true, {}},
        {nullptr, true, {}},
    };
    for (const Row<double>& row : rows) {
        expectRow<TypeParam>(&util::stringToDoubleArray, row, 99.0);
    }
}

TYPED_TEST(ListParsing, Booleans_PassOverEveryOtherWord) {
    const std::vector<Row<bool>> rows = {
        {"T f 1 0 yes 3", true, {true, false, true, false, true}},
        {"true FALSE t F", true, {true, false, true, false}},
        {"yes no on off y n truex", true, {}},
        {"-2 2.0 0.0 007 2.5", true, {true, true, false, true}},
        {"", true, {}},
        {nullptr, true, {}},
    };
    for (const Row<bool>& row : rows) {
        expectRow<TypeParam>(&util::stringToBooleanArray, row, true);
    }
}

TYPED_TEST(ListParsing, AWordOf80CharactersEndsTheList) {
    const std::string longest = "1 " + std::string(79, '0') + " 2";
    const std::string tooLong = "1 " + std::string(80, '0') + " 2";
    const std::string last = "1 " + std::string(80, '1');
    expectRow<TypeParam, double>(&util::stringToDoubleArray, {longest.c_str(), true, {1, 0, 2}}, 9.0);
    expectRow<TypeParam, double>(&util::stringToDoubleArray, {tooLong.c_str(), false, {1}}, 9.0);
    expectRow<TypeParam, double>(&util::stringToDoubleArray, {last.c_str(), false, {1}}, 9.0);
    expectRow<TypeParam, bool>(&util::stringToBooleanArray, {longest.c_str(), true, {true, false, true}}, true);
    expectRow<TypeParam, bool>(&util::stringToBooleanArray, {tooLong.c_str(), false, {true}}, true);
}

TYPED_TEST(ListParsing, CanCoerceToIntegerArray_TakesNeitherCommasNorPoints) {
    for (const char* list : {" 1 -2  +3", "", " ", "7", "1-2", "-", "+ 4\t"}) {
        EXPECT_TRUE(util::canCoerceToIntegerArray(test::text<TypeParam>(list).c_str())) << list;
    }
    for (const char* list : {"1,2", "1.5", "x", "1 x", "1;2"}) {
        EXPECT_FALSE(util::canCoerceToIntegerArray(test::text<TypeParam>(list).c_str())) << list;
    }
    EXPECT_TRUE(util::canCoerceToIntegerArray(static_cast<const TypeParam*>(nullptr)));
}

/// Texts that are lists of something, more or less.
std::string listText(test::RandomText& random, std::string_view alphabet) {
    std::string text;
    for (std::size_t words = random.below(6); words != 0; --words) {
        text += random.from(alphabet, random.oneIn(200) ? 76 + random.below(8) : random.below(8));
        text += random.from(" ,\t\n\xA0", random.oneIn(3) ? random.below(3) : 1);
    }
    return text;
}

std::vector<std::uint64_t> bitsOf(const std::vector<double>& values) {
    std::vector<std::uint64_t> bits;
    for (const double value : values) {
        bits.push_back(value != value ? 0 : std::bit_cast<std::uint64_t>(value));  // one NaN is as good as another
    }
    return bits;
}

TYPED_TEST(ListParsing, RandomListsAgreeWithTheReference) {
    test::RandomText random(20261121);
    for (int count = 0; count < 30000; ++count) {
        const std::basic_string<TypeParam> text =
            test::text<TypeParam>(listText(random, random.oneIn(2) ? "0123456789+-" : "0011289.eE+-tfTF; "));
        const std::string shape = test::shapeOf(std::basic_string_view<TypeParam>(text));
        Array<int> integers;
        const auto asIntegers = test::readIntegers(shape);
        EXPECT_EQ(util::stringToIntegerArray(text.c_str(), integers, false), asIntegers.whole);
        EXPECT_EQ(valuesOf(integers), std::vector<int>(asIntegers.values.begin(), asIntegers.values.end()));
        EXPECT_EQ(util::canCoerceToIntegerArray(text.c_str()), test::canBeIntegers(shape));
        Array<double> doubles;
        const auto asDoubles = test::readDoubles(shape);
        EXPECT_EQ(util::stringToDoubleArray(text.c_str(), doubles, false), asDoubles.whole);
        EXPECT_EQ(bitsOf(valuesOf(doubles)), bitsOf(asDoubles.values));
        Array<bool> booleans;
        const auto asBooleans = test::readBooleans(shape);
        EXPECT_EQ(util::stringToBooleanArray(text.c_str(), booleans, false), asBooleans.whole);
        EXPECT_EQ(valuesOf(booleans), asBooleans.values);
        ASSERT_FALSE(this->HasFailure()) << "list " << count << ": \"" << shape << '"';
    }
}

struct RangesRow {
    const wchar_t* text;
    std::vector<int> starts;
    std::vector<int> ends;
    std::wstring refused;  ///< the item that is none; nothing is thrown when it is empty
};

void expectRanges(const RangesRow& row) {
    Array<int> starts;
    Array<int> ends;
    starts.append(99);
    ends.append(99);
    if (row.refused.empty()) {
        util::stringToLongRanges(row.text, starts, ends);
    } else {
        test::expectThrows<Exception>([&] { util::stringToLongRanges(row.text, starts, ends); },
                                      {L"Found nonnumeric text in numeric item: \"" + row.refused + L"\""});
    }
    EXPECT_EQ(valuesOf(starts), row.starts) << (row.text ? row.text : L"null");
    EXPECT_EQ(valuesOf(ends), row.ends) << (row.text ? row.text : L"null");
}

TEST(ListParsingRanges, UseMinusOneForAnOpenEnd) {
    for (const RangesRow& row :
         {RangesRow{L"1-5,7", {1, 7}, {5, 7}, {}}, RangesRow{L" 3 - 9 , 12-", {3, 12}, {9, -1}, {}},
          RangesRow{L"-5", {-1}, {5}, {}}, RangesRow{L"5-", {5}, {-1}, {}}, RangesRow{L"-", {-1}, {-1}, {}},
          RangesRow{L"--5", {-1}, {-5}, {}},
          RangesRow{L"\u00A0"
                    L"4\u00A0",
                    {4},
                    {4},
                    {}},
          RangesRow{L"4294967297", {1}, {1}, {}}, RangesRow{L"+3", {3}, {3}, {}}, RangesRow{L"", {}, {}, {}},
          RangesRow{L" , ,", {}, {}, {}}, RangesRow{L",,4,", {4}, {4}, {}}, RangesRow{nullptr, {}, {}, {}}}) {
        expectRanges(row);
    }
}

TEST(ListParsingRanges, RefuseTextAndKeepWhatWasRead) {
    for (const RangesRow& row : {RangesRow{L"2, 1-a ", {2, 1}, {2, 0}, L"1-a"}, RangesRow{L"a-1", {0}, {}, L"a-1"},
                                 RangesRow{L"5x,6", {5}, {5}, L"5x"}, RangesRow{L"1-2-3", {1}, {2}, L"1-2-3"},
                                 RangesRow{L"\"1,2\"", {0}, {0}, L"\"1"},  // quotes mean nothing here
                                 RangesRow{L"1 2", {1}, {1}, L"1 2"}}) {
        expectRanges(row);
    }
}

TEST(ListParsingRanges, RandomTextsAgreeWithTheReference) {
    test::RandomText random(20261121);
    for (int count = 0; count < 3000; ++count) {
        const std::wstring text = test::text<wchar_t>(listText(random, "0123456789- +x"));
        const test::Ranges wanted = test::readRanges(test::shapeOf(std::wstring_view(text)));
        Array<int> starts;
        Array<int> ends;
        bool refused = false;
        try {
            util::stringToLongRanges(text.c_str(), starts, ends);
        } catch (const Exception&) {
            refused = true;
        }
        EXPECT_EQ(refused, !wanted.refused.empty());
        EXPECT_EQ(valuesOf(starts), wanted.starts);
        EXPECT_EQ(valuesOf(ends), wanted.ends);
        ASSERT_FALSE(HasFailure()) << "text " << count << ": \"" << test::shapeOf(std::wstring_view(text)) << '"';
    }
}

}  // namespace
