#include "vorel/values/BooleanParsing.h"

#include <string>

#include <gtest/gtest.h>

#include "support/ListReference.h"
#include "support/RandomText.h"
#include "support/Shape.h"
#include "support/Widths.h"

namespace {

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
void expectRow(const Row& row) {
    const std::basic_string<T> text = test::text<T>(row.text);
    T* end = nullptr;
    EXPECT_EQ(util::stringToBoolean(text.c_str(), &end), row.value) << row.text;
    EXPECT_EQ(end - text.c_str(), row.read) << row.text;
    EXPECT_EQ(util::stringToBoolean(text.c_str(), nullptr), row.value) << row.text;
}

TYPED_TEST(BooleanParsing, StringToBoolean_ReadsOneCharacterThatStandsAlone) {
    for (const Row& row :
         {Row{"1", true, 1}, Row{"t", true, 1}, Row{"T", true, 1}, Row{"y", true, 1}, Row{"Y", true, 1},
          Row{" \t\n\r1", true, 5}, Row{"0", false, 1}, Row{"f", false, 1}, Row{"F", false, 1}, Row{"n", false, 1},
          Row{"N", false, 1}, Row{"x", false, 0}, Row{" -", false, 1}, Row{" ", false, 1}, Row{"", false, 0}}) {
        expectRow<TypeParam>(row);
    }
}

TYPED_TEST(BooleanParsing, StringToBoolean_ReadsWholeWordsInAnyCase) {
    for (const Row& row : {Row{"true", true, 4}, Row{"TRUE", true, 4}, Row{"false", false, 5}, Row{"  Yes", true, 5},
                           Row{"no", false, 2}, Row{"ON", true, 2}, Row{"off", false, 3}, Row{"yes ", false, 0},
                           Row{"truex", false, 0}, Row{"tru", false, 0}, Row{"t ", false, 0}, Row{" ye", false, 1}}) {
        expectRow<TypeParam>(row);
    }
}

TYPED_TEST(BooleanParsing, StringToBoolean_TakesAnIntegerByItsValue) {
    for (const Row& row : {Row{"10", true, 2}, Row{"-3", true, 2}, Row{"2.0", true, 1}, Row{"00", false, 2},
                           Row{"0.000", false, 1}, Row{"0010", true, 4}, Row{"1 ", true, 2}, Row{"2.5", false, 0},
                           Row{"4294967296", false, 10}, Row{"12x", false, 0}}) {
        expectRow<TypeParam>(row);
    }
}

TEST(BooleanParsingWidths, StringToBoolean_KnowsTheDigitsFrom2To9InWideTextOnly) {
    for (const char* digit : {"2", "3", "4", "5", "6", "7", "8", "9"}) {
        expectRow<wchar_t>({digit, true, 1});
        expectRow<char>({digit, false, 0});
    }
}

TEST(BooleanParsingWidths, StringToBoolean_SkipsTheNoBreakSpaceInWideTextOnly) {
    expectRow<wchar_t>({"\xA0yes", true, 4});
    expectRow<char>({"\xA0yes", false, 0});
}

TYPED_TEST(BooleanParsing, CanCoerceToBoolean_AcceptsTenWords) {
    for (const char* word : {"true", "false", "yes", "no", "0", "1", "t", "f", "y", "n", "True", "NO", " N", "\t1"}) {
        EXPECT_TRUE(util::canCoerceToBoolean(test::text<TypeParam>(word).c_str())) << word;
    }
    for (const char* word : {"on", "off", "ON", "2", "9", "10", "00", "", " ", "yes ", "tru", "1.0", "-1"}) {
        EXPECT_FALSE(util::canCoerceToBoolean(test::text<TypeParam>(word).c_str())) << word;
    }
}

TYPED_TEST(BooleanParsing, NullIsFalseWithANullEnd) {
    const TypeParam* const null = nullptr;
    TypeParam character = 0;
    TypeParam* end = &character;
    EXPECT_FALSE(util::stringToBoolean(null, &end));
    EXPECT_EQ(end, nullptr);
    EXPECT_FALSE(util::stringToBoolean(null, nullptr));
    EXPECT_FALSE(util::canCoerceToBoolean(null));
}

TEST(BooleanParsingWidths, TheLibrarysOwnSpellings) {
    EXPECT_STREQ(util::TAL_True, L"true");
    EXPECT_STREQ(util::TAL_False, L"false");
}

TYPED_TEST(BooleanParsing, RandomTextsAgreeWithTheReference) {
    test::RandomText random(20261121);
    constexpr std::string_view kWords[] = {"true", "false", "yes", "no", "on", "off", "t", "f", "y", "n", "0", "12"};
    for (int count = 0; count < 50000; ++count) {
        std::string units = random.from(" \t\xA0", random.oneIn(4) ? random.below(3) : 0);
        units += random.oneIn(2) ? std::string(kWords[random.below(std::size(kWords))])
                                 : random.from("0123456789tTyYfFnNoOeEsS.-+ x", random.below(5));
        if (random.oneIn(3) && !units.empty()) {
            char& unit = units[random.below(units.size())];
            unit = unit >= 'a' && unit <= 'z' ? static_cast<char>(unit - 32) : unit;
        }
        const std::basic_string<TypeParam> text = test::text<TypeParam>(units);
        const std::string shape = test::shapeOf(std::basic_string_view<TypeParam>(text));
        const test::Reading<bool> wanted = test::readBoolean(shape, sizeof(TypeParam) > 1);
        TypeParam* end = nullptr;
        EXPECT_EQ(util::stringToBoolean(text.c_str(), &end), wanted.value);
        EXPECT_EQ(end - text.c_str(), static_cast<std::ptrdiff_t>(wanted.end));
        EXPECT_EQ(util::canCoerceToBoolean(text.c_str()), test::canBeBoolean(shape));
        ASSERT_FALSE(this->HasFailure()) << "text " << count << ": \"" << shape << '"';
    }
}

}  // namespace
