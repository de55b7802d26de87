#include "algorithms/UnitSearch.h"

#include <cstddef>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "support/PageEdge.h"
#include "support/RandomInputs.h"
#include "support/Widths.h"

namespace {

using vorel::algorithms::countUnit;
using vorel::algorithms::findText;
using vorel::algorithms::findUnit;
using vorel::algorithms::UnitSet;

constexpr std::size_t kMaxLength = 40;

template <class T>
class UnitSearch : public ::testing::Test {
protected:
    using Text = std::basic_string<T>;
    using View = std::basic_string_view<T>;

    static constexpr std::size_t kNone = View::npos;

    /// Calls `check` twice with a copy of `text`. In the first call, an inaccessible page follows the text, and in the
    /// second call, an inaccessible page precedes it.
    template <class Check>
    void atBothEdges(const Text& text, Check check) {
        check(View(m_edge.placeAtEnd(text), text.size()));
        check(View(m_edge.placeAtStart(text), text.size()));
    }

private:
    test::PageEdge<T> m_edge{4096};
};

TYPED_TEST_SUITE(UnitSearch, test::CharacterTypes, test::CharacterNames);

TYPED_TEST(UnitSearch, UnitIsFoundAndCountedAtEveryPositionOfEveryLength) {
    for (std::size_t length = 0; length <= kMaxLength; ++length) {
        std::basic_string<TypeParam> text(length, TypeParam{'a'});
        this->atBothEdges(text, [&](auto view) { EXPECT_EQ(findUnit(view, TypeParam{','}), this->kNone); });
        for (std::size_t position = length; position-- != 0;) {
            text[position] = ',';  // the commas at later positions remain
            this->atBothEdges(text, [&](auto view) {
                ASSERT_EQ(findUnit(view, TypeParam{','}), position) << length;
                ASSERT_EQ(countUnit(view, TypeParam{','}), length - position) << length;
            });
        }
    }
}

TYPED_TEST(UnitSearch, UnitsThatDifferInOneBitAreNotFound) {
    const std::basic_string<TypeParam> text(20, TypeParam{','});
    for (unsigned int bit = 0; bit < 8 * sizeof(TypeParam); ++bit) {
        const auto other = static_cast<TypeParam>(static_cast<unsigned int>(',') ^ 1u << bit);
        EXPECT_EQ(findUnit(std::basic_string_view<TypeParam>(text), other), this->kNone) << bit;
        EXPECT_EQ(countUnit(std::basic_string_view<TypeParam>(text), other), 0u) << bit;
    }
}

TYPED_TEST(UnitSearch, FindText_FindsTheFirstWholeOccurrence) {
    struct Row {
        const char* text;
        const char* wanted;
        std::size_t position;
    };
    for (const Row& row :
         {Row{"", "a", this->kNone}, Row{"a", "a", 0}, Row{"ab", "ab", 0}, Row{"a", "ab", this->kNone},
          Row{"aab", "ab", 1}, Row{"aaab", "aab", 1}, Row{"abacab", "ab", 0}, Row{"xabab", "ab", 1},
          Row{"aaaa", "ab", this->kNone}, Row{"abca", "ca", 2}, Row{"abc", "cd", this->kNone},
          Row{"0123456789abcdef0123456789abcdeXY", "XY", 31}, Row{"abcabcabcabcabcabcabcabd", "abcabd", 18}}) {
        const auto wanted = test::text<TypeParam>(row.wanted);
        this->atBothEdges(test::text<TypeParam>(row.text), [&](auto view) {
            EXPECT_EQ(findText(view, std::basic_string_view<TypeParam>(wanted)), row.position)
                << row.text << " " << row.wanted;
        });
    }
}

TYPED_TEST(UnitSearch, Set_ContainsOnlyItsMembers) {
    for (const char* const members : {"", ",", ",;", "\x01\x7F\x80\xFF", "@`", "zyxwvutsrqponmlkjihgfedcba"}) {
        const auto units = test::text<TypeParam>(members);
        const UnitSet<TypeParam> set{std::basic_string_view<TypeParam>(units)};
        for (unsigned int value = 0; value < 1u << 8 * sizeof(TypeParam); ++value) {
            const auto unit = static_cast<TypeParam>(value);
            ASSERT_EQ(set.contains(unit), units.find(unit) != units.npos) << value;
        }
    }
}

TEST(UnitSearchInWideText, Set_MayContainUnitsFrom256On) {
    const UnitSet<wchar_t> set{std::wstring_view(L",\x012C\xFFFF")};
    EXPECT_TRUE(set.contains(L','));
    EXPECT_TRUE(set.contains(L'\x012C'));
    EXPECT_TRUE(set.contains(L'\xFFFF'));
    EXPECT_FALSE(set.contains(L'\x002B'));
    EXPECT_FALSE(set.contains(L'\x022C'));
    EXPECT_FALSE(set.contains(L'\x00FF'));
    EXPECT_EQ(set.findIn(L"ab\x022C\xFFFF,"), 3u);
    EXPECT_EQ(set.countIn(L"\x012C ab,\x022C,"), 3u);
}

TYPED_TEST(UnitSearch, Set_FindsAndCountsMembersAtEveryLength) {
    for (const char* const members : {",", ",;", ""}) {
        const auto units = test::text<TypeParam>(members);
        const UnitSet<TypeParam> set{std::basic_string_view<TypeParam>(units)};
        for (std::size_t length = 0; length <= kMaxLength; ++length) {
            std::basic_string<TypeParam> text(length, TypeParam{'a'});
            this->atBothEdges(text, [&](auto view) { EXPECT_EQ(set.findIn(view), this->kNone); });
            for (std::size_t position = length; position-- != 0;) {
                text[position] = units.empty() ? TypeParam{','} : units[position % units.size()];
                this->atBothEdges(text, [&](auto view) {
                    ASSERT_EQ(set.findIn(view), units.empty() ? this->kNone : position) << members << length;
                    ASSERT_EQ(set.countIn(view), units.empty() ? 0 : length - position) << members << length;
                });
            }
        }
    }
}

TYPED_TEST(UnitSearch, RandomTextsAgreeWithTheStandardLibrary) {
    test::forEachRandomInput(20000, [&](test::RandomText& random) {
        const auto text = test::text<TypeParam>(random.from("ab,", random.below(60)));
        const auto wanted = test::text<TypeParam>(random.from("ab,", 1 + random.below(3)));
        this->atBothEdges(text, [&](auto view) {
            EXPECT_EQ(findText(view, std::basic_string_view<TypeParam>(wanted)), text.find(wanted));
            EXPECT_EQ(UnitSet<TypeParam>(wanted).findIn(view), text.find_first_of(wanted));
        });
    });
}

}  // namespace
