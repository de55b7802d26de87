/// \file
/// Members of `BaseString`: construction, assignment, appending, length, clearing, comparison, and buffers that modules
/// pass to each other. BaseStringGrowthTest.cpp tests growth, and BaseStringFormatTest.cpp tests formatting.

#include "vorel/core/BaseString.h"

#include <cstddef>
#include <cstdlib>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include <gtest/gtest.h>

#include "core/StringFields.h"
#include "support/Widths.h"

namespace {

using vorel::BaseString;

static_assert(std::is_standard_layout_v<BaseString<char>>);
static_assert(std::is_standard_layout_v<BaseString<wchar_t>>);
static_assert(sizeof(BaseString<char>) == 16 && sizeof(BaseString<wchar_t>) == 16);
static_assert(alignof(BaseString<char>) == alignof(void*));
static_assert(std::is_nothrow_move_constructible_v<BaseString<char>>);
static_assert(std::is_nothrow_move_assignable_v<BaseString<wchar_t>>);
static_assert(!std::has_virtual_destructor_v<BaseString<char>>);

template <class T>
class BaseStringTest : public ::testing::Test {
protected:
    using String = BaseString<T>;
    using View = std::basic_string_view<T>;

    static std::basic_string<T> text(std::string_view units) { return test::text<T>(units); }

    /// Checks the text and the invariants of a string.
    static void expectText(const String& string, const std::basic_string<T>& expected) {
        EXPECT_EQ(string.length(), expected.size());
        EXPECT_EQ(string.empty(), expected.empty());
        EXPECT_TRUE(string.view() == View(expected));
        ASSERT_NE(string.view().data(), nullptr);
        if (string.c_str()) {
            EXPECT_EQ(string.view().data(), string.c_str());
            EXPECT_LT(string.length(), string.capacity());
            EXPECT_EQ(string.c_str()[string.length()], T{});
        } else {
            EXPECT_EQ(string.capacity(), 0u);
        }
    }

    static void expectNeverAllocated(const String& string) {
        const auto fields = test::fieldsOf(string);
        EXPECT_EQ(fields.data, nullptr);
        EXPECT_EQ(fields.capacity, 0u);
        EXPECT_EQ(fields.length, 0xFFFFFFFFu);
    }
};

TYPED_TEST_SUITE(BaseStringTest, test::CharacterTypes, test::CharacterNames);

// ---- Construction ---------------------------------------------------------------------------------------------------

TYPED_TEST(BaseStringTest, Default_IsEmptyWithoutABuffer) {
    const BaseString<TypeParam> string;
    this->expectNeverAllocated(string);
    EXPECT_EQ(string.c_str(), nullptr);
    EXPECT_EQ(string.capacity(), 0u);
    this->expectText(string, {});
}

TYPED_TEST(BaseStringTest, Fields_ArePointerCapacityLength) {
    BaseString<TypeParam> string(this->text("four").c_str());
    const auto fields = test::fieldsOf(string);
    EXPECT_EQ(fields.data, string.data());
    EXPECT_EQ(fields.capacity, 16u);
    EXPECT_EQ(fields.length, 4u);
}

TYPED_TEST(BaseStringTest, NullTexts_GiveTheEmptyString) {
    const TypeParam* const null = nullptr;
    this->expectNeverAllocated(BaseString<TypeParam>(null));
    this->expectNeverAllocated(BaseString<TypeParam>(null, 0));
    this->expectNeverAllocated(BaseString<TypeParam>(null, 7));
}

TYPED_TEST(BaseStringTest, EmptyTexts_AllocateNothing) {
    const auto empty = this->text("");
    this->expectNeverAllocated(BaseString<TypeParam>(empty.c_str()));
    this->expectNeverAllocated(BaseString<TypeParam>(this->text("abc").c_str(), 0));
    this->expectNeverAllocated(BaseString<TypeParam>(BaseString<TypeParam>(empty.c_str())));
}

TYPED_TEST(BaseStringTest, Text_IsCopiedUpToItsTerminator) {
    auto source = this->text(std::string_view("abc\0def", 7));
    const BaseString<TypeParam> string(source.c_str());
    source[0] = 'X';
    this->expectText(string, this->text("abc"));
    EXPECT_TRUE(test::knowsLength(string));
}

TYPED_TEST(BaseStringTest, ExplicitLength_KeepsEmbeddedZeros) {
    const auto source = this->text(std::string_view("abc\0def", 7));
    const BaseString<TypeParam> string(source.c_str(), 7);
    this->expectText(string, source);
    this->expectText(BaseString<TypeParam>(string), source);
    this->expectText(BaseString<TypeParam>(source.c_str(), 2), this->text("ab"));
}

TYPED_TEST(BaseStringTest, Copy_HasItsOwnBuffer) {
    BaseString<TypeParam> original(this->text("original").c_str());
    const BaseString<TypeParam> copy(original);
    EXPECT_NE(copy.c_str(), original.c_str());
    original.data()[0] = 'X';
    this->expectText(copy, this->text("original"));
}

TYPED_TEST(BaseStringTest, CopyOfAClearedString_AllocatesNothing) {
    BaseString<TypeParam> original(this->text("text").c_str());
    original.clear();
    this->expectNeverAllocated(BaseString<TypeParam>(original));
}

TYPED_TEST(BaseStringTest, Move_TransfersTheBuffer) {
    BaseString<TypeParam> original(this->text("original").c_str());
    const TypeParam* const buffer = original.c_str();
    const BaseString<TypeParam> taken(std::move(original));
    EXPECT_EQ(taken.c_str(), buffer);
    this->expectText(taken, this->text("original"));
    this->expectNeverAllocated(original);
}

// ---- Assignment -----------------------------------------------------------------------------------------------------

TYPED_TEST(BaseStringTest, AssignText_ReplacesTheTextAndReusesTheBuffer) {
    BaseString<TypeParam> string(this->text("fifteen units..").c_str());
    const TypeParam* const buffer = string.c_str();
    string = this->text("short").c_str();
    this->expectText(string, this->text("short"));
    string = this->text("another fifteen").c_str();
    this->expectText(string, this->text("another fifteen"));
    EXPECT_EQ(string.c_str(), buffer);
    EXPECT_EQ(string.capacity(), 16u);
    string = this->text("sixteen units...").c_str();
    this->expectText(string, this->text("sixteen units..."));
    EXPECT_EQ(string.capacity(), 32u);
}

TYPED_TEST(BaseStringTest, AssignNull_ClearsTheTextAndKeepsTheBuffer) {
    BaseString<TypeParam> string(this->text("text").c_str());
    const TypeParam* const buffer = string.c_str();
    const TypeParam* const null = nullptr;
    string = null;
    this->expectText(string, {});
    EXPECT_EQ(string.c_str(), buffer);
    EXPECT_EQ(string.capacity(), 16u);

    BaseString<TypeParam> fresh;
    fresh = null;
    this->expectNeverAllocated(fresh);
}

TYPED_TEST(BaseStringTest, AssignTailOfItself_CopiesTheTail) {
    BaseString<TypeParam> string(this->text("abcdefghij").c_str());
    string = string.c_str() + 3;
    this->expectText(string, this->text("defghij"));
    string = string.c_str();
    this->expectText(string, this->text("defghij"));
    string = string.c_str() + 7;
    this->expectText(string, {});
}

TYPED_TEST(BaseStringTest, AssignString_CopiesEmbeddedZeros) {
    const auto source = this->text(std::string_view("a\0b", 3));
    const BaseString<TypeParam> original(source.c_str(), 3);
    BaseString<TypeParam> string(this->text("old").c_str());
    string = original;
    this->expectText(string, source);
    EXPECT_NE(string.c_str(), original.c_str());
}

TYPED_TEST(BaseStringTest, AssignToItself_ChangesNothing) {
    BaseString<TypeParam> string(this->text("text").c_str());
    const TypeParam* const buffer = string.c_str();
    BaseString<TypeParam>& same = string;
    string = same;
    this->expectText(string, this->text("text"));
    string = std::move(same);
    this->expectText(string, this->text("text"));
    EXPECT_EQ(string.c_str(), buffer);
}

TYPED_TEST(BaseStringTest, MoveAssign_TransfersTheBuffer) {
    BaseString<TypeParam> original(this->text("original").c_str());
    const TypeParam* const buffer = original.c_str();
    BaseString<TypeParam> string(this->text("old").c_str());
    string = std::move(original);
    this->expectText(string, this->text("original"));
    EXPECT_EQ(string.c_str(), buffer);
    this->expectNeverAllocated(original);
}

// ---- Appending ------------------------------------------------------------------------------------------------------

TYPED_TEST(BaseStringTest, Append_EveryOverloadReturnsTheString) {
    BaseString<TypeParam> string;
    const BaseString<TypeParam> other(this->text("ef").c_str());
    const auto tail = this->text(std::string_view("cd\0!", 4));
    EXPECT_EQ(&string.append(this->text("ab").c_str()), &string);
    EXPECT_EQ(&string.append(tail.c_str(), 4), &string);
    EXPECT_EQ(&string.append(other), &string);
    EXPECT_EQ(&string.append(TypeParam{'g'}), &string);
    EXPECT_EQ(&(string += this->text("hi").c_str()), &string);
    EXPECT_EQ(&(string += other), &string);
    EXPECT_EQ(&(string += TypeParam{'j'}), &string);
    this->expectText(string, this->text(std::string_view("abcd\0!efghiefj", 14)));
    EXPECT_TRUE(test::knowsLength(string));
}

TYPED_TEST(BaseStringTest, AppendNothing_ChangesNothing) {
    const TypeParam* const null = nullptr;
    const BaseString<TypeParam> none;
    BaseString<TypeParam> fresh;
    fresh.append(null).append(null, 5).append(none).append(this->text("").c_str()).append(this->text("abc").c_str(), 0);
    fresh += null;
    fresh += none;
    this->expectNeverAllocated(fresh);

    BaseString<TypeParam> string(this->text("text").c_str());
    string.append(null).append(null, 5).append(none);
    this->expectText(string, this->text("text"));
}

TYPED_TEST(BaseStringTest, AppendZeroUnit_IncreasesTheLength) {
    BaseString<TypeParam> string(this->text("ab").c_str());
    string.append(TypeParam{}).append(TypeParam{'c'});
    this->expectText(string, this->text(std::string_view("ab\0c", 4)));
}

TYPED_TEST(BaseStringTest, AppendItself_WithAndWithoutGrowth) {
    BaseString<TypeParam> string(this->text("0123456").c_str());
    string.append(string);  // 14 units: fits
    EXPECT_EQ(string.capacity(), 16u);
    string += string;  // 28 units: grows
    EXPECT_EQ(string.capacity(), 32u);
    this->expectText(string, this->text("0123456012345601234560123456"));
}

TYPED_TEST(BaseStringTest, AppendPartOfItself_WithAndWithoutGrowth) {
    BaseString<TypeParam> string(this->text("abcdefgh").c_str());
    string.append(string.c_str() + 5);  // fits; copying overwrites the argument's terminator
    this->expectText(string, this->text("abcdefghfgh"));
    string.append(string.c_str() + 2, 6);  // grows
    this->expectText(string, this->text("abcdefghfghcdefgh"));
    string.append(string.c_str()[0]);
    this->expectText(string, this->text("abcdefghfghcdefgha"));
    string.append(string.c_str() + string.length());  // points to the terminator, so the text is empty
    EXPECT_EQ(string.length(), 18u);
}

TYPED_TEST(BaseStringTest, AppendPartOfItself_AtEveryLengthAroundTheGrowth) {
    for (unsigned int length = 1; length <= 40; ++length) {
        for (unsigned int from = 0; from < length; ++from) {
            std::basic_string<TypeParam> expected;
            for (unsigned int i = 0; i < length; ++i) {
                expected += static_cast<TypeParam>('A' + i);
            }
            BaseString<TypeParam> string(expected.c_str());
            string.append(string.c_str() + from);
            expected += std::basic_string<TypeParam>(expected, from);
            ASSERT_TRUE(string.view() == expected) << length << " units, from " << from;
        }
    }
}

// ---- Length and clearing --------------------------------------------------------------------------------------------

TYPED_TEST(BaseStringTest, Length_IsCountedOnceAndCached) {
    BaseString<TypeParam> string;
    string.reserve(10, true);
    const auto word = this->text("word");
    word.copy(string.data(), 4);
    string.data()[4] = 0;
    EXPECT_FALSE(test::knowsLength(string));
    EXPECT_EQ(string.length(), 4u);
    EXPECT_TRUE(test::knowsLength(string));
    string.data()[2] = 0;  // a direct write does not change the cached length
    EXPECT_EQ(string.length(), 4u);
}

TYPED_TEST(BaseStringTest, Clear_KeepsTheBuffer) {
    BaseString<TypeParam> string(this->text("text").c_str());
    const TypeParam* const buffer = string.c_str();
    string.clear();
    this->expectText(string, {});
    EXPECT_EQ(string.c_str(), buffer);
    EXPECT_EQ(string.capacity(), 16u);

    BaseString<TypeParam> fresh;
    fresh.clear();
    this->expectNeverAllocated(fresh);
}

TYPED_TEST(BaseStringTest, View_OfAStringWithoutABufferIsNotNull) {
    const BaseString<TypeParam> string;
    EXPECT_NE(string.view().data(), nullptr);
    EXPECT_TRUE(string.view().empty());
}

// ---- Comparison -----------------------------------------------------------------------------------------------------

TYPED_TEST(BaseStringTest, Comparison_IsUnitByUnit) {
    struct Case {
        const char* a;
        const char* b;
        int order;
    };
    for (const auto& [a, b, order] :
         {Case{"", "", 0}, Case{"abc", "abc", 0}, Case{"abc", "abd", -1}, Case{"b", "abc", 1}, Case{"ab", "abc", -1},
          Case{"abc", "ab", 1}, Case{"Z", "a", -1}, Case{"a\xE4", "az", 1}, Case{"\x7F", "\x80", -1}}) {
        const auto left = this->text(a);
        const auto right = this->text(b);
        const BaseString<TypeParam> first(left.c_str());
        const BaseString<TypeParam> second(right.c_str());
        SCOPED_TRACE(std::string(a) + " and " + b);
        EXPECT_EQ(first == second, order == 0);
        EXPECT_EQ(first != second, order != 0);
        EXPECT_EQ(first < second, order < 0);
        EXPECT_EQ(second<first, order> 0);
        EXPECT_EQ(first == right.c_str(), order == 0);
        EXPECT_EQ(first != right.c_str(), order != 0);
        EXPECT_EQ(left.c_str() == second, order == 0);
        EXPECT_EQ(first < right.c_str(), order < 0);
        EXPECT_EQ(right.c_str() < first, order > 0);
    }
}

TYPED_TEST(BaseStringTest, Comparison_IncludesUnitsAfterAZero) {
    const auto a = this->text(std::string_view("a\0b", 3));
    const auto b = this->text(std::string_view("a\0c", 3));
    const BaseString<TypeParam> first(a.c_str(), 3);
    const BaseString<TypeParam> second(b.c_str(), 3);
    EXPECT_TRUE(first != second);
    EXPECT_TRUE(first < second);
    EXPECT_TRUE(first != a.c_str()) << "a null-terminated text ends at the zero";
}

TYPED_TEST(BaseStringTest, Comparison_NullEqualsTheEmptyString) {
    const TypeParam* const null = nullptr;
    const BaseString<TypeParam> fresh;
    BaseString<TypeParam> emptied(this->text("x").c_str());
    emptied.clear();
    const BaseString<TypeParam> some(this->text("x").c_str());
    EXPECT_TRUE(fresh == null);
    EXPECT_TRUE(null == emptied);
    EXPECT_TRUE(fresh == emptied);
    EXPECT_FALSE(fresh < null);
    EXPECT_FALSE(null < emptied);
    EXPECT_TRUE(some != null);
    EXPECT_TRUE(null < some);
    EXPECT_FALSE(some < null);
}

TEST(BaseStringOfWideText, ComparesUnitsAsUnsignedNumbers) {
    EXPECT_TRUE(BaseString<wchar_t>(L"\x7FFF") < BaseString<wchar_t>(L"\x8000"));
    EXPECT_TRUE(BaseString<wchar_t>(L"\x00FF") < BaseString<wchar_t>(L"\x0100"));
}

// ---- Module boundary ------------------------------------------------------------------------------------------------

TYPED_TEST(BaseStringTest, Buffer_CanBePassedBetweenModules) {
    auto* const block = static_cast<TypeParam*>(std::malloc(8 * sizeof(TypeParam)));
    if (!block) {
        FAIL();
    }
    block[0] = 'm';
    block[1] = 0;
    BaseString<TypeParam> adopted;
    test::setFields(adopted, {block, 8, BaseString<TypeParam>::kUnknownLength});
    this->expectText(adopted, this->text("m"));
    adopted.append(this->text("uch longer than the block").c_str());  // releases the program's block in the DLL
    this->expectText(adopted, this->text("much longer than the block"));
    std::free(adopted.data());  // releases the DLL's block in the program
    test::setFields<TypeParam>(adopted, {nullptr, 0, BaseString<TypeParam>::kUnknownLength});
}

}  // namespace
