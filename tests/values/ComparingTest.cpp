#include "vorel/values/Comparing.h"

#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "support/RandomInputs.h"
#include "support/RandomText.h"
#include "support/Shape.h"
#include "support/TextReference.h"
#include "support/Widths.h"

namespace {

using vorel::util::SCMP_IgnoreCase;
using vorel::util::SCMP_Numeric;
using vorel::util::SCMP_Reverse;
using vorel::util::SCMP_SlashesEqual;
using vorel::util::strcmpAdvanced;
using vorel::util::strcmpAdvFlag;
using vorel::util::stringVersionAtLeast;

constexpr strcmpAdvFlag kNone{};

int signOf(int result) {
    return (result > 0 ? 1 : 0) - (result < 0 ? 1 : 0);
}

template <class T>
class Comparing : public ::testing::Test {};
TYPED_TEST_SUITE(Comparing, test::CharacterTypes, test::CharacterNames);

struct Row {
    std::string_view a;
    std::string_view b;
    strcmpAdvFlag flags;
    int result;
};

TYPED_TEST(Comparing, StrcmpAdvanced_FollowsItsFlags) {
    for (const Row& row : {Row{"abc", "abc", kNone, 0},
                           Row{"ab", "abc", kNone, -1},
                           Row{"b", "abc", kNone, 1},
                           Row{"", "", kNone, 0},
                           Row{"A", "a", kNone, -1},
                           Row{"A", "a", SCMP_IgnoreCase, 0},
                           Row{"Zebra", "zEBRA", SCMP_IgnoreCase, 0},
                           Row{"[", "{", SCMP_IgnoreCase, -1},        // the characters after Z and z are not letters
                           Row{"@", "`", SCMP_IgnoreCase, -1},        // the characters before A and a are not letters
                           Row{"\xC4", "\xE4", SCMP_IgnoreCase, -1},  // case is ignored only for A to Z
                           Row{"file9", "file10", SCMP_Numeric, -1},
                           Row{"file9", "file10", kNone, 1},
                           Row{"007", "7", SCMP_Numeric, 0},
                           Row{"a007b", "a7c", SCMP_Numeric, -1},
                           Row{"0", "", SCMP_Numeric, 1},
                           Row{"00", "0", SCMP_Numeric, 0},
                           Row{"1a", "1", SCMP_Numeric, 1},
                           Row{"12", "1x", SCMP_Numeric, 1},
                           Row{"9", "a", SCMP_Numeric, -1},
                           Row{"1.10", "1.9", SCMP_Numeric, 1},
                           Row{"123456789012345678901", "123456789012345678902", SCMP_Numeric, -1},
                           Row{"a/b", "a\\b", kNone, -1},
                           Row{"a/b", "a\\b", SCMP_SlashesEqual, 0},
                           Row{"a\\b", "a/c", SCMP_SlashesEqual, -1},
                           Row{"/", "", SCMP_SlashesEqual, 1},
                           Row{"a/b", "A\\B", SCMP_IgnoreCase | SCMP_SlashesEqual, 0},
                           Row{"a", "b", SCMP_Reverse, 1},
                           Row{"File9/x", "file10\\X", SCMP_IgnoreCase | SCMP_Numeric | SCMP_SlashesEqual, -1}}) {
        const auto a = test::text<TypeParam>(row.a);
        const auto b = test::text<TypeParam>(row.b);
        EXPECT_EQ(signOf(strcmpAdvanced(a.c_str(), b.c_str(), row.flags)), row.result) << row.a << " and " << row.b;
    }
}

TYPED_TEST(Comparing, StrcmpAdvanced_ReturnsTheDifferenceOfUnitsOrDigitCounts) {
    for (const Row& row : {Row{"a", "c", kNone, -2}, Row{"abc", "", kNone, 'a'}, Row{"", "abc", kNone, -'a'},
                           Row{"A", "c", SCMP_IgnoreCase, -2}, Row{"x15", "x19", SCMP_Numeric, -4},
                           Row{"file9", "file1000", SCMP_Numeric, -3}, Row{"00123456", "1", SCMP_Numeric, 5},
                           Row{"file9", "file1000", SCMP_Numeric | SCMP_Reverse, 3}}) {
        const auto a = test::text<TypeParam>(row.a);
        const auto b = test::text<TypeParam>(row.b);
        EXPECT_EQ(strcmpAdvanced(a.c_str(), b.c_str(), row.flags), row.result) << row.a << " and " << row.b;
    }
}

TEST(ComparingWidths, NarrowCharactersAreSignedAndWideCharactersUnsigned) {
    EXPECT_LT(strcmpAdvanced("\xC4", "a", kNone), 0);
    EXPECT_GT(strcmpAdvanced(L"\xC4", L"a", kNone), 0);
    EXPECT_LT(strcmpAdvanced("\x80", "", kNone), 0);
    EXPECT_GT(strcmpAdvanced(L"\xFFFF", L"\xD800", kNone), 0);
}

TYPED_TEST(Comparing, StrcmpAdvanced_OrdersNullBeforeEmptyText) {
    const TypeParam* const null = nullptr;
    const std::basic_string<TypeParam> empty;
    EXPECT_EQ(strcmpAdvanced(null, null, kNone), 0);
    EXPECT_EQ(strcmpAdvanced(null, empty.c_str(), kNone), -1);
    EXPECT_EQ(strcmpAdvanced(empty.c_str(), null, kNone), 1);
    EXPECT_EQ(strcmpAdvanced(null, empty.c_str(), SCMP_Reverse), 1);
    EXPECT_EQ(strcmpAdvanced(empty.c_str(), null, SCMP_Reverse), -1);
    EXPECT_EQ(strcmpAdvanced(null, null, SCMP_Reverse), 0);
}

TYPED_TEST(Comparing, RandomTextsAgreeWithTheReferenceForAllFlags) {
    using Character = std::conditional_t<sizeof(TypeParam) == 1, signed char, TypeParam>;
    const auto view = [](const std::basic_string<TypeParam>& text) {
        return std::basic_string_view<Character>(reinterpret_cast<const Character*>(text.data()), text.size());
    };
    test::forEachRandomInput(50000, [&](test::RandomText& random) {
        const auto a = test::text<TypeParam>(random.from("aAzZ/\\0019.\xE4", random.below(7)));
        const auto b = random.oneIn(3) ? a : test::text<TypeParam>(random.from("aAzZ/\\0019.\xE4", random.below(7)));
        for (int bits = 0; bits < 8; ++bits) {
            const auto flags = static_cast<strcmpAdvFlag>(bits);
            const test::CompareRules rules = {(bits & SCMP_IgnoreCase) != 0, (bits & SCMP_Numeric) != 0,
                                              (bits & SCMP_SlashesEqual) != 0};
            const int wanted = test::compared(view(a), view(b), rules);
            EXPECT_EQ(signOf(strcmpAdvanced(a.c_str(), b.c_str(), flags)), wanted);
            EXPECT_EQ(signOf(strcmpAdvanced(b.c_str(), a.c_str(), flags)), -wanted);
            EXPECT_EQ(signOf(strcmpAdvanced(a.c_str(), b.c_str(), flags | SCMP_Reverse)), -wanted);
        }
    });
}

TEST(ComparingVersions, StringVersionAtLeast_ComparesNumberByNumber) {
    struct Versions {
        const wchar_t* version;
        const wchar_t* required;
        bool result;
    };
    for (const Versions& row :
         {Versions{L"10.2", L"9.9", true}, Versions{L"9.9", L"10.2", false}, Versions{L"1.2.3", L"1.2", true},
          Versions{L"1.2", L"1.2", true}, Versions{L"1.2", L"1.2.0", false}, Versions{L"1.2", L"1.2.3", false},
          Versions{L"1.2.", L"1.2.0", false}, Versions{L"1.2", L"", false}, Versions{L"", L"1", false},
          Versions{nullptr, L"1", false}, Versions{L"1", nullptr, false}, Versions{nullptr, nullptr, false},
          Versions{L"1-3", L"1_2", true}, Versions{L" 1 . 2 ", L"1.2", true}, Versions{L"-1", L"0", false},
          Versions{L"4294967298", L"1", true}, Versions{L"x", L"0", true}, Versions{L"1.x.3", L"1.0.2", false}}) {
        EXPECT_EQ(stringVersionAtLeast(row.version, row.required), row.result)
            << (row.version ? row.version : L"null") << " and " << (row.required ? row.required : L"null");
    }
}

TEST(ComparingVersions, RandomVersionsAgreeWithTheReference) {
    test::forEachRandomInput(100000, [&](test::RandomText& random) {
        const std::string version = random.from("0119..- +x", random.below(9));
        const std::string required = random.oneIn(3) ? version.substr(0, random.below(version.size() + 1))
                                                     : random.from("0119..- +x", random.below(9));
        ASSERT_EQ(stringVersionAtLeast(test::text<wchar_t>(version).c_str(), test::text<wchar_t>(required).c_str()),
                  test::isVersionAtLeast(version, required))
            << '"' << version << "\" and \"" << required << '"';
    });
}

}  // namespace
