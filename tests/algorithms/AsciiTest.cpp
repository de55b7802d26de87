#include "algorithms/Ascii.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "support/Widths.h"

namespace {

namespace algorithms = vorel::algorithms;
using vorel::algorithms::nameHash;

template <class T>
class Ascii : public testing::Test {};

TYPED_TEST_SUITE(Ascii, test::CharacterTypes, test::CharacterNames);

constexpr std::string_view kUpper = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
constexpr std::string_view kLower = "abcdefghijklmnopqrstuvwxyz";

TYPED_TEST(Ascii, OnlyAsciiLettersAreFolded) {
    for (std::uint32_t value = 0; value < 1u << 8 * sizeof(TypeParam); ++value) {
        const auto unit = static_cast<TypeParam>(value);
        const bool isAscii = value < 0x80;
        const std::size_t upper = isAscii ? kUpper.find(static_cast<char>(value)) : std::string_view::npos;
        const std::size_t lower = isAscii ? kLower.find(static_cast<char>(value)) : std::string_view::npos;
        const bool isUpper = upper != std::string_view::npos;
        const bool isLower = lower != std::string_view::npos;
        ASSERT_EQ(algorithms::foldCase(unit), isUpper ? static_cast<TypeParam>(kLower[upper]) : unit) << value;
        ASSERT_EQ(algorithms::foldToUpperCase(unit), isLower ? static_cast<TypeParam>(kUpper[lower]) : unit) << value;
        ASSERT_EQ(algorithms::isLetter(unit), isUpper || isLower) << value;
        ASSERT_EQ(algorithms::isOneOf(unit, kUpper), isUpper) << value;
    }
}

struct Case {
    const char* name;
    std::uint32_t hash;
};

// Calculated by hand: the hash of "ab" is 97 * 31 + 98.
constexpr Case kCases[] = {
    {"", 0},
    {"a", 97},
    {"A", 97},
    {"ab", 3105},
    {"aB", 3105},
    {"abc", 96354},
    {"UTF-8", 111607186},
    {"zzzzzzzz", 2384944384},
    {"@[`{", 64 * 29791 + 91 * 961 + 96 * 31 + 123},
};

template <class T>
class NameHash : public testing::Test {};

TYPED_TEST_SUITE(NameHash, test::CharacterTypes, test::CharacterNames);

TYPED_TEST(NameHash, IsAPolynomialIn31AndIgnoresCase) {
    for (const Case& row : kCases) {
        const std::string name = row.name;
        EXPECT_EQ(nameHash(std::basic_string<TypeParam>(name.begin(), name.end()).c_str()), row.hash) << name;
    }
}

TYPED_TEST(NameHash, HashOfANullNameIsZero) {
    EXPECT_EQ(nameHash(static_cast<const TypeParam*>(nullptr)), 0u);
}

TEST(NameHashOfBytes, CharactersAreHashedAsUnsignedNumbers) {
    EXPECT_EQ(nameHash("\xE9"), 233u);
    EXPECT_EQ(nameHash(L"\xFFE9"), 0xFFE9u);
}

}  // namespace
