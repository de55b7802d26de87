// Splitting, joining, comparing, truth values and lists.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/Expect.h"
#include "vorel/vorelCore.h"

namespace {

using vorel::Array;
using vorel::BaseString;
using vorel::Exception;
namespace util = vorel::util;
using Wides = std::vector<std::wstring>;
using Strings = Array<BaseString<wchar_t>>;

Wides texts(const Strings& strings) {
    Wides result;
    for (const BaseString<wchar_t>& string : strings) {
        result.emplace_back(string.view());
    }
    return result;
}

Strings stringsOf(const Wides& items) {
    Strings result;
    for (const std::wstring& item : items) {
        result.append(BaseString<wchar_t>(item.c_str()));
    }
    return result;
}

template <class T>
std::vector<T> valuesOf(const Array<T>& array) {
    return std::vector<T>(array.begin(), array.end());
}

TEST(Splitting, SplitString_CutsAtTheWholeDelimiter) {
    struct Case {
        const wchar_t* text;
        const wchar_t* delimiter;
        Wides parts;
    };
    for (const Case& c : {Case{L"a::b::", L"::", {L"a", L"b"}}, Case{L"a::::b", L"::", {L"a", L"", L"b"}},
                          Case{L"abc", L"", {L"abc"}}, Case{L"abc", nullptr, {L"abc"}}, Case{nullptr, L",", {}},
                          Case{L"", L",", {}}, Case{L",a", L",", {L"", L"a"}}, Case{L":a:", L"::", {L":a:"}}}) {
        Strings parts;
        util::splitString(c.text, c.delimiter, parts);
        EXPECT_EQ(texts(parts), c.parts);
    }
}

TEST(Splitting, SplitString_AppendsAndMaySplitAPartItself) {
    Strings parts = stringsOf({L"a,b"});
    util::splitString(parts[0].c_str(), L",", parts);
    EXPECT_EQ(texts(parts), (Wides{L"a,b", L"a", L"b"}));
}

TEST(Splitting, QuotedItemsMayHoldDelimitersAndQuotes) {
    struct Case {
        const wchar_t* text;
        bool trim;
        Wides items;
    };
    for (const Case& c :
         {Case{L"a,\"b,c\",\"d\"\"e\"", false, {L"a", L"b,c", L"d\"e"}}, Case{L"\"ab\"x,c", false, {L"\"ab\"x", L"c"}},
          Case{L"\"ab", false, {L"\"ab"}}, Case{L"\"a,b", false, {L"\"a", L"b"}},
          Case{L",a,,b,", false, {L"", L"a", L"", L"b"}}, Case{L" a , \"b\" ", true, {L"a", L"\"b\""}},
          Case{L" a ", false, {L" a "}}, Case{L"\" a \"", true, {L"a"}}, Case{L"", false, {}}, Case{nullptr, false, {}},
          Case{L"\"\"", false, {L""}}}) {
        Strings items = stringsOf({L"old"});
        util::singleStringToMultipleStrings(c.text, L",", items, c.trim);
        EXPECT_EQ(texts(items), c.items) << (c.text ? c.text : L"null");
    }
    Strings whole;
    util::singleStringToMultipleStrings(L"a,b", nullptr, whole, false);
    EXPECT_EQ(texts(whole), Wides{L"a,b"});
    Array<BaseString<char>> narrow;
    util::singleCStringToMultipleCStrings("a;\"b;c\"", ";", narrow, false);
    ASSERT_EQ(narrow.size(), 2u);
    EXPECT_EQ(narrow[1], "b;c");
}

TEST(Splitting, TokenizeString_CutsInPlace) {
    struct Case {
        std::wstring text;
        const wchar_t* delimiter;
        int most;
        Wides tokens;
    };
    for (const Case& c :
         {Case{L"a,b,,c", L",", -1, {L"a", L"b", L"", L"c"}}, Case{L"a,b,,c", L",", 2, {L"a", L"b,,c"}},
          Case{L"a,b", L",", 0, {L"a,b"}}, Case{L"", L",", -1, {L""}}, Case{L"a,", L",", -1, {L"a", L""}},
          Case{L"a,b", nullptr, -1, {L"a,b"}}, Case{L"a,;b", L",;", -1, {L"a", L";b"}}}) {
        std::wstring text = c.text;
        Array<wchar_t*> tokens;
        EXPECT_EQ(util::tokenizeString(text.data(), c.delimiter, tokens, c.most), static_cast<int>(c.tokens.size()));
        EXPECT_EQ(Wides(tokens.begin(), tokens.end()), c.tokens);
    }
    Array<char*> none;
    EXPECT_EQ(util::tokenizeString(static_cast<char*>(nullptr), ",", none, -1), 0);
}

TEST(Joining, QuotesWhatHoldsTheDelimiterOrAQuote) {
    struct Case {
        Wides items;
        const wchar_t* delimiter;
        std::wstring joined;
    };
    for (const Case& c :
         {Case{{L"a", L"b,c", L"d\"e"}, L",", L"a,\"b,c\",\"d\"\"e\""}, Case{{L"\"q\""}, L",", L"\"q\""},
          Case{{L"\""}, L",", L"\"\"\"\""}, Case{{}, L",", L""}, Case{{L"", L""}, L",", L","},
          Case{{L"aab", L"ab"}, L"ab", L"aabab\"ab\""}, Case{{L"a", L"b"}, nullptr, L"ab"}}) {
        BaseString<wchar_t> result(L"old");
        util::multipleStringsToSingleString(stringsOf(c.items), c.delimiter, result);
        EXPECT_EQ(result, c.joined.c_str());
        EXPECT_EQ(util::multipleStringsToSingleString(stringsOf(c.items), c.delimiter), c.joined.c_str());
    }
}

TEST(Comparing, StrcmpAdvanced_FollowsItsFlags) {
    using util::SCMP_IgnoreCase;
    using util::SCMP_Numeric;
    using util::SCMP_Reverse;
    using util::SCMP_SlashesEqual;
    using util::strcmpAdvanced;
    using util::strcmpAdvFlag;
    EXPECT_LT(strcmpAdvanced(L"file9", L"file10", SCMP_Numeric), 0);
    EXPECT_GT(strcmpAdvanced(L"file9", L"file10", strcmpAdvFlag{}), 0);
    EXPECT_EQ(strcmpAdvanced(L"a/b", L"A\\B", SCMP_IgnoreCase | SCMP_SlashesEqual), 0);
    EXPECT_EQ(strcmpAdvanced("007", "7", SCMP_Numeric), 0);
    EXPECT_LT(strcmpAdvanced("a007b", "a7c", SCMP_Numeric), 0);
    EXPECT_GT(strcmpAdvanced("a", "b", SCMP_Reverse), 0);
    EXPECT_NE(strcmpAdvanced("a/b", "a\\b", strcmpAdvFlag{}), 0);
    EXPECT_EQ(strcmpAdvanced("Z\xC4", "z\xC4", SCMP_IgnoreCase), 0);
    EXPECT_LT(strcmpAdvanced("\xC4", "a", strcmpAdvFlag{}), 0);    // narrow characters are signed …
    EXPECT_GT(strcmpAdvanced(L"\xC4", L"a", strcmpAdvFlag{}), 0);  // … wide ones are not
    EXPECT_LT(strcmpAdvanced("ab", "abc", strcmpAdvFlag{}), 0);
    const char* const null = nullptr;
    EXPECT_EQ(strcmpAdvanced(null, null, strcmpAdvFlag{}), 0);
    EXPECT_EQ(strcmpAdvanced(null, "", strcmpAdvFlag{}), -1);
    EXPECT_EQ(strcmpAdvanced("", null, strcmpAdvFlag{}), 1);
    EXPECT_EQ(strcmpAdvanced("", null, SCMP_Reverse), -1);
}

TEST(Comparing, StringVersionAtLeast_WantsEveryNumber) {
    using util::stringVersionAtLeast;
    EXPECT_TRUE(stringVersionAtLeast(L"10.2", L"9.9"));
    EXPECT_TRUE(stringVersionAtLeast(L"1.2.3", L"1.2"));
    EXPECT_TRUE(stringVersionAtLeast(L"1.2", L"1.2"));
    EXPECT_FALSE(stringVersionAtLeast(L"1.2", L"1.2.0"));
    EXPECT_FALSE(stringVersionAtLeast(L"1.2", L"1.2.3"));
    EXPECT_FALSE(stringVersionAtLeast(L"1.2", L""));
    EXPECT_FALSE(stringVersionAtLeast(L"", L"1"));
    EXPECT_FALSE(stringVersionAtLeast(nullptr, L"1"));
    EXPECT_FALSE(stringVersionAtLeast(L"1", nullptr));
    EXPECT_TRUE(stringVersionAtLeast(L"1-3", L"1_2"));
}

TEST(BooleanParsing, StringToBoolean_ReadsCharactersWordsAndIntegers) {
    struct Case {
        const wchar_t* text;
        bool value;
        std::ptrdiff_t read;
    };
    for (const Case& c :
         {Case{L"  Yes", true, 5}, Case{L"yes ", false, 0}, Case{L"ON", true, 2}, Case{L"off", false, 3},
          Case{L"7", true, 1}, Case{L"0010", true, 4}, Case{L"0.0", false, 1}, Case{L"x", false, 0},
          Case{L"t", true, 1}, Case{L"N", false, 1}, Case{L"", false, 0}, Case{L"-3", true, 2}, Case{L"  ", false, 2},
          Case{L"TRUE", true, 4}, Case{L"truex", false, 0}}) {
        wchar_t* end = nullptr;
        EXPECT_EQ(util::stringToBoolean(c.text, &end), c.value) << c.text;
        EXPECT_EQ(end - c.text, c.read) << c.text;
    }
    EXPECT_FALSE(util::stringToBoolean("7", nullptr));  // in narrow text a digit alone means nothing but 0 and 1
    EXPECT_TRUE(util::stringToBoolean("1", nullptr));
    EXPECT_STREQ(util::TAL_True, L"true");
    EXPECT_STREQ(util::TAL_False, L"false");
}

TEST(BooleanParsing, CanCoerceToBoolean_AcceptsTenWords) {
    for (const char* word : {"true", "False", "YES", "no", "0", "1", "t", "F", "y", " N"}) {
        EXPECT_TRUE(util::canCoerceToBoolean(word)) << word;
    }
    for (const char* word : {"on", "off", "2", "10", "", "yes ", "tru"}) {
        EXPECT_FALSE(util::canCoerceToBoolean(word)) << word;
    }
    EXPECT_FALSE(util::canCoerceToBoolean(static_cast<const wchar_t*>(nullptr)));
}

TEST(ListParsing, Integers_CountEveryEmptyItem) {
    struct Case {
        const char* text;
        bool result;
        std::vector<int> values;
    };
    for (const Case& c : {Case{"1, 2", true, {1, 0, 2}}, Case{"1 ,2", true, {1, 2}}, Case{"1 2", true, {1, 2}},
                          Case{",5", true, {0, 5}}, Case{"1,", true, {1}}, Case{"2.9", true, {2}},
                          Case{"1;2", false, {1}}, Case{"-", true, {0}}, Case{"", true, {}}, Case{"  ", true, {}},
                          Case{nullptr, true, {}}, Case{"-4.5,+6", true, {-4, 6}}}) {
        Array<int> values;
        values.append(99);
        EXPECT_EQ(util::stringToIntegerArray(c.text, values, false), c.result);
        EXPECT_EQ(valuesOf(values), c.values);
    }
    Array<unsigned int> bits;
    bits.append(7);
    EXPECT_TRUE(util::stringToUIntegerArray(L"-1", bits, true));
    EXPECT_EQ(valuesOf(bits), (std::vector<unsigned int>{7, 4294967295u}));
}

TEST(ListParsing, WordsThatAreNoNumbersArePassedOver) {
    Array<double> numbers;
    EXPECT_TRUE(util::stringToDoubleArray(L"1.5 2e3 abc 4", numbers, false));
    EXPECT_EQ(valuesOf(numbers), (std::vector<double>{1.5, 2000, 4}));
    EXPECT_TRUE(util::stringToDoubleArray("1,5", numbers, false));
    EXPECT_TRUE(numbers.empty());
    Array<bool> truths;
    EXPECT_TRUE(util::stringToBooleanArray("T f 1 0 yes 3", truths, false));
    EXPECT_EQ(valuesOf(truths), (std::vector<bool>{true, false, true, false, true}));
}

TEST(ListParsing, AWordOf80CharactersEndsTheList) {
    Array<double> numbers;
    EXPECT_TRUE(util::stringToDoubleArray(("1 " + std::string(79, '0') + " 2").c_str(), numbers, false));
    EXPECT_EQ(numbers.size(), 3u);
    EXPECT_FALSE(util::stringToDoubleArray(("1 " + std::string(80, '0') + " 2").c_str(), numbers, false));
    EXPECT_EQ(numbers.size(), 1u);
}

TEST(ListParsing, CanCoerceToIntegerArray_TakesNoCommas) {
    EXPECT_TRUE(util::canCoerceToIntegerArray(" 1 -2  +3"));
    EXPECT_TRUE(util::canCoerceToIntegerArray(""));
    EXPECT_TRUE(util::canCoerceToIntegerArray(static_cast<const char*>(nullptr)));
    EXPECT_FALSE(util::canCoerceToIntegerArray("1,2"));
    EXPECT_FALSE(util::canCoerceToIntegerArray(L"1.5"));
}

TEST(ListParsing, Ranges_UseMinusOneForAnOpenEnd) {
    struct Case {
        const wchar_t* text;
        std::vector<int> starts;
        std::vector<int> ends;
    };
    for (const Case& c :
         {Case{L"1-5,7", {1, 7}, {5, 7}}, Case{L" 3 - 9 , 12-", {3, 12}, {9, -1}}, Case{L"-5", {-1}, {5}},
          Case{L"-", {-1}, {-1}}, Case{L"", {}, {}}, Case{L",,4,", {4}, {4}}, Case{nullptr, {}, {}}}) {
        Array<int> starts;
        Array<int> ends;
        util::stringToLongRanges(c.text, starts, ends);
        EXPECT_EQ(valuesOf(starts), c.starts);
        EXPECT_EQ(valuesOf(ends), c.ends);
    }
}

TEST(ListParsing, Ranges_RefuseTextAndKeepWhatWasRead) {
    struct Case {
        const wchar_t* text;
        std::wstring item;
        std::vector<int> starts;
        std::vector<int> ends;
    };
    for (const Case& c :
         {Case{L"2, 1-a ", L"1-a", {2, 1}, {2, 0}}, Case{L"a-1", L"a-1", {0}, {}}, Case{L"5x", L"5x", {5}, {5}}}) {
        Array<int> starts;
        Array<int> ends;
        test::expectThrows<Exception>([&] { util::stringToLongRanges(c.text, starts, ends); },
                                      {L"Found nonnumeric text in numeric item: \"" + c.item + L"\""});
        EXPECT_EQ(valuesOf(starts), c.starts);
        EXPECT_EQ(valuesOf(ends), c.ends);
    }
}

}  // namespace
