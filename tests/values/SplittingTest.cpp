#include "vorel/values/Splitting.h"

#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/Arrays.h"
#include "support/RandomInputs.h"
#include "support/RandomText.h"
#include "support/TextReference.h"
#include "support/Widths.h"

namespace {

using test::texts;
using test::textsOf;
using vorel::Array;
using vorel::BaseString;
namespace util = vorel::util;

template <class T>
class Splitting : public ::testing::Test {};
TYPED_TEST_SUITE(Splitting, test::CharacterTypes, test::CharacterNames);

/// Splits text whose items may be quoted. The function of the library has a different name for each width.
void splitQuoted(const char* text, const char* delimiters, Array<BaseString<char>>& items, bool trim) {
    util::singleCStringToMultipleCStrings(text, delimiters, items, trim);
}

void splitQuoted(const wchar_t* text, const wchar_t* delimiters, Array<BaseString<wchar_t>>& items, bool trim) {
    util::singleStringToMultipleStrings(text, delimiters, items, trim);
}

using Texts = std::vector<std::string_view>;

TYPED_TEST(Splitting, SplitString_SplitsAtTheWholeDelimiter) {
    struct Row {
        const char* text;
        const char* delimiter;
        Texts parts;
    };
    for (const Row& row :
         {Row{"a::b::", "::", {"a", "b"}}, Row{"a::::b", "::", {"a", "", "b"}}, Row{"abc", "", {"abc"}},
          Row{"abc", nullptr, {"abc"}}, Row{nullptr, ",", {}}, Row{"", ",", {}}, Row{"", "", {}},
          Row{",a", ",", {"", "a"}}, Row{",", ",", {""}}, Row{":a:", "::", {":a:"}}, Row{"a:::b", "::", {"a", ":b"}},
          Row{" a ,\"b,c\"", ",", {" a ", "\"b", "c\""}}}) {
        Array<BaseString<TypeParam>> parts;
        util::splitString(test::OptionalText<TypeParam>(row.text).get(),
                          test::OptionalText<TypeParam>(row.delimiter).get(), parts);
        EXPECT_EQ(textsOf(parts), texts<TypeParam>(row.parts)) << (row.text ? row.text : "null");
    }
}

TYPED_TEST(Splitting, SplitString_AppendsAndTheTextMayBeAnItemOfTheList) {
    Array<BaseString<TypeParam>> parts = test::stringsOf(texts<TypeParam>({"a,b"}));
    util::splitString(parts[0].c_str(), test::text<TypeParam>(",").c_str(), parts);
    EXPECT_EQ(textsOf(parts), texts<TypeParam>({"a,b", "a", "b"}));
}

TYPED_TEST(Splitting, SplitString_DelimiterMayBeAnItemOfTheList) {
    Array<BaseString<TypeParam>> parts = test::stringsOf(texts<TypeParam>({"::"}));
    util::splitString(test::text<TypeParam>("a::b::c::d::e::f").c_str(), parts[0].c_str(), parts);
    EXPECT_EQ(textsOf(parts), texts<TypeParam>({"::", "a", "b", "c", "d", "e", "f"}));
}

/// The expected capacity is the capacity of an array to which the parts are appended one by one.
TYPED_TEST(Splitting, SplitString_AllocatesTheSlotsThatAppendingWouldAllocate) {
    struct Row {
        const char* text;
        const char* delimiter;
        unsigned int before;
        unsigned int slots;
    };
    for (const Row& row :
         {Row{"", ",", 0, 0}, Row{nullptr, ",", 0, 0}, Row{"a", ",", 0, 5}, Row{"a,b,c,d,e", ",", 0, 5},
          Row{"a,b,c,d,e,", ",", 0, 5}, Row{"a,b,c,d,e,f", ",", 0, 10}, Row{"a::b::c::d::e::", "::", 0, 5},
          Row{"a::b::c::d::e:::", "::", 0, 10}, Row{"a,b,", ",", 3, 5}, Row{"a,b,c", ",", 3, 10},
          Row{"a,b,c,d,e,f", "", 0, 5}, Row{"a,b,c,d,e,f", "", 5, 10}}) {
        Array<BaseString<TypeParam>> parts;
        for (unsigned int part = 0; part < row.before; ++part) {
            parts.append(BaseString<TypeParam>());
        }
        util::splitString(test::OptionalText<TypeParam>(row.text).get(),
                          test::OptionalText<TypeParam>(row.delimiter).get(), parts);
        EXPECT_EQ(parts.allocated(), row.slots) << (row.text ? row.text : "null") << " after " << row.before;
    }
}

TYPED_TEST(Splitting, SplitString_FindsPartsOfEveryLength) {
    for (const char* const delimiter : {",", "::", ",\n\t"}) {
        const auto between = test::text<TypeParam>(delimiter);
        std::basic_string<TypeParam> text;
        std::vector<std::basic_string<TypeParam>> expected;
        for (std::size_t length = 0; length <= 70; ++length) {
            expected.emplace_back(length, static_cast<TypeParam>('a' + length % 26));
            text += (length == 0 ? std::basic_string<TypeParam>() : between) + expected.back();
        }
        Array<BaseString<TypeParam>> parts;
        util::splitString(text.c_str(), between.c_str(), parts);
        EXPECT_EQ(textsOf(parts), expected) << delimiter;
    }
}

TEST(SplittingOfWideText, DelimitersAreComparedAsWholeUnits) {
    // The low byte of U+012C and the high byte of U+2C01 are the byte of a comma.
    Array<BaseString<wchar_t>> parts;
    util::splitString(L"a\x012C,b\x2C01,c", L",", parts);
    EXPECT_EQ(textsOf(parts), (std::vector<std::wstring>{L"a\x012C", L"b\x2C01", L"c"}));
    splitQuoted(L"a\x012C,b\x2C01;c", L",\x2C01", parts, false);
    EXPECT_EQ(textsOf(parts), (std::vector<std::wstring>{L"a\x012C", L"b", L";c"}));
}

TYPED_TEST(Splitting, QuotedItemsMayContainDelimitersAndQuotes) {
    struct Row {
        const char* text;
        bool trim;
        Texts items;
    };
    for (const Row& row :
         {Row{R"(a,"b,c","d""e")", false, {"a", "b,c", "d\"e"}},
          Row{R"(a;b,c)", false, {"a", "b", "c"}},  // each delimiter character ends an item
          Row{R"("a";"b")", false, {"a", "b"}}, Row{R"("")", false, {""}}, Row{R"("""")", false, {"\""}},
          Row{R"("a","")", false, {"a", ""}}, Row{",a,,b,", false, {"", "a", "", "b"}},
          Row{R"(a"b,c"d)", false, {"a\"b", "c\"d"}},  // a quote within an item is an ordinary character
          Row{"", false, {}}, Row{nullptr, false, {}}}) {
        Array<BaseString<TypeParam>> items = test::stringsOf(texts<TypeParam>({"old"}));
        splitQuoted(test::OptionalText<TypeParam>(row.text).get(), test::text<TypeParam>(",;").c_str(), items,
                    row.trim);
        EXPECT_EQ(textsOf(items), texts<TypeParam>(row.items)) << (row.text ? row.text : "null");
    }
}

TYPED_TEST(Splitting, MalformedQuotesAreOrdinaryCharacters) {
    struct Row {
        const char* text;
        Texts items;
    };
    for (const Row& row : {Row{R"("ab"x,c)", {"\"ab\"x", "c"}}, Row{R"("ab)", {"\"ab"}}, Row{R"("a,b)", {"\"a", "b"}},
                           Row{R"(")", {R"(")"}}, Row{R"(""")", {R"(""")"}}, Row{R"("a""b,c)", {R"("a""b)", "c"}},
                           Row{R"("a" ,b)", {"\"a\" ", "b"}}, Row{R"(x,"a,"b)", {"x", "\"a", "\"b"}}}) {
        Array<BaseString<TypeParam>> items;
        splitQuoted(test::text<TypeParam>(row.text).c_str(), test::text<TypeParam>(",").c_str(), items, false);
        EXPECT_EQ(textsOf(items), texts<TypeParam>(row.items)) << row.text;
    }
}

TYPED_TEST(Splitting, TrimmingAppliesToTheTextOfQuotedItems) {
    Array<BaseString<TypeParam>> items;
    const auto comma = test::text<TypeParam>(",");
    splitQuoted(test::text<TypeParam>(" a\t,\r\nb c\n,\" d \", \"e\" ,  ").c_str(), comma.c_str(), items, true);
    EXPECT_EQ(textsOf(items), texts<TypeParam>({"a", "b c", "d", "\"e\"", ""}));
    splitQuoted(test::text<TypeParam>(" a ,b ").c_str(), comma.c_str(), items, false);
    EXPECT_EQ(textsOf(items), texts<TypeParam>({" a ", "b "}));
    splitQuoted(test::text<TypeParam>("\xA0x\xA0").c_str(), comma.c_str(), items, true);
    EXPECT_EQ(textsOf(items), texts<TypeParam>({sizeof(TypeParam) > 1 ? "x" : "\xA0x\xA0"}));
}

TYPED_TEST(Splitting, DelimitersMayBeAnItemOfTheList) {
    Array<BaseString<TypeParam>> items = test::stringsOf(texts<TypeParam>({"kept until the end", ",;"}));
    splitQuoted(test::text<TypeParam>("a,b;c").c_str(), items[1].c_str(), items, false);
    EXPECT_EQ(textsOf(items), texts<TypeParam>({"a", "b", "c"}));
}

TYPED_TEST(Splitting, WithoutDelimitersThereIsOneItem) {
    for (const char* none : {"", static_cast<const char*>(nullptr)}) {
        Array<BaseString<TypeParam>> items;
        splitQuoted(test::text<TypeParam>("a,b").c_str(), test::OptionalText<TypeParam>(none).get(), items, false);
        EXPECT_EQ(textsOf(items), texts<TypeParam>({"a,b"}));
    }
}

TYPED_TEST(Splitting, TokenizeString_SplitsInPlace) {
    struct Row {
        const char* text;
        const char* delimiter;
        int most;
        Texts tokens;
    };
    for (const Row& row :
         {Row{"a,b,,c", ",", -1, {"a", "b", "", "c"}}, Row{"a,b,,c", ",", 2, {"a", "b,,c"}},
          Row{"a,b,,c", ",", 4, {"a", "b", "", "c"}}, Row{"a,b", ",", 9, {"a", "b"}}, Row{"a,b", ",", 0, {"a,b"}},
          Row{"a,b", ",", 1, {"a,b"}}, Row{"", ",", -1, {""}}, Row{",", ",", -1, {"", ""}},
          Row{"a,", ",", -1, {"a", ""}}, Row{"a,b", nullptr, -1, {"a,b"}}, Row{"a,b", "", -1, {"a,b"}},
          Row{"a,;b", ",;", -1, {"a", ";b"}}}) {  // only the first character of the delimiter is used
        std::basic_string<TypeParam> text = test::text<TypeParam>(row.text);
        const std::basic_string<TypeParam> before = text;
        TypeParam other = 'x';
        Array<TypeParam*> tokens;
        tokens.append(&other);
        EXPECT_EQ(
            util::tokenizeString(text.data(), test::OptionalText<TypeParam>(row.delimiter).get(), tokens, row.most),
            static_cast<int>(row.tokens.size()));
        EXPECT_EQ((std::vector<std::basic_string<TypeParam>>(tokens.begin(), tokens.end())),
                  texts<TypeParam>(row.tokens));
        EXPECT_EQ(tokens[0], text.data());
        for (std::size_t at = 0; at < text.size(); ++at) {
            EXPECT_TRUE(text[at] == before[at] ||
                        (text[at] == 0 && before[at] == static_cast<TypeParam>(row.delimiter[0])));
        }
    }
}

TYPED_TEST(Splitting, TokenizeString_ReservesSlotsForAMaximumUpTo1024) {
    std::basic_string<TypeParam> text = test::text<TypeParam>("a,b");
    Array<TypeParam*> tokens;
    util::tokenizeString(text.data(), test::text<TypeParam>(",").c_str(), tokens, 37);
    TypeParam* const* const data = tokens.data();
    while (tokens.size() < 37) {
        tokens.append(text.data());
    }
    EXPECT_EQ(tokens.data(), data);
}

TYPED_TEST(Splitting, TokenizeString_ForALargerMaximumReservesOnlyForPossibleTokens) {
    constexpr int kNoLimit = std::numeric_limits<int>::max();
    for (const int most : {1025, 1'000'000, kNoLimit}) {
        std::basic_string<TypeParam> text = test::text<TypeParam>("a,b");
        Array<TypeParam*> tokens;
        EXPECT_EQ(util::tokenizeString(text.data(), test::text<TypeParam>(",").c_str(), tokens, most), 2);
        EXPECT_EQ(tokens.allocated(), 5u);
    }
    std::basic_string<TypeParam> delimiters(2000, TypeParam{','});
    Array<TypeParam*> tokens;
    EXPECT_EQ(util::tokenizeString(delimiters.data(), test::text<TypeParam>(",").c_str(), tokens, kNoLimit), 2001);
    EXPECT_EQ(tokens.allocated(), 2560u) << "5 slots, doubled nine times";
}

TYPED_TEST(Splitting, TokenizeString_OfNullHasNoTokens) {
    TypeParam other = 'x';
    Array<TypeParam*> tokens;
    tokens.append(&other);
    EXPECT_EQ(util::tokenizeString(static_cast<TypeParam*>(nullptr), test::text<TypeParam>(",").c_str(), tokens, -1),
              0);
    EXPECT_TRUE(tokens.empty());
}

TYPED_TEST(Splitting, RandomTextsAgreeWithTheReference) {
    test::forEachRandomInput(20000, [&](test::RandomText& random) {
        const auto text = test::text<TypeParam>(random.from("ab,;\"\" \t\xA0", random.below(20)));
        const auto delimiters = test::text<TypeParam>(random.from(",;a\" ", random.below(4)));
        const bool trim = random.oneIn(2);
        Array<BaseString<TypeParam>> parts;
        util::splitString(text.c_str(), delimiters.c_str(), parts);
        EXPECT_EQ(textsOf(parts), test::splitAtText(text, delimiters));
        splitQuoted(text.c_str(), delimiters.c_str(), parts, trim);
        EXPECT_EQ(textsOf(parts), test::splitAtAnyOf(text, delimiters, trim));
        const int most = static_cast<int>(random.below(6)) - 1;
        std::basic_string<TypeParam> cut = text;
        Array<TypeParam*> tokens;
        util::tokenizeString(cut.data(), delimiters.c_str(), tokens, most);
        // Joining the tokens with the first character of `delimiters` gives the text.
        std::basic_string<TypeParam> again;
        for (TypeParam* const token : tokens) {
            again += (again.empty() && token == cut.data() ? std::basic_string<TypeParam>() : delimiters.substr(0, 1)) +
                     token;
        }
        EXPECT_EQ(again, text);
    });
}

}  // namespace
