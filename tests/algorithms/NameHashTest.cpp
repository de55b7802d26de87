#include "algorithms/NameHash.h"

#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "support/Widths.h"

namespace {

using vorel::algorithms::nameHash;

struct Case {
    const char* name;
    std::uint32_t hash;
};

// Calculated by hand: "ab" is 97 * 31 + 98.
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

TYPED_TEST(NameHash, NullNameIsZero) {
    EXPECT_EQ(nameHash(static_cast<const TypeParam*>(nullptr)), 0u);
}

TEST(NameHashOfBytes, BytesAreUnsigned) {
    EXPECT_EQ(nameHash("\xE9"), 233u);
    EXPECT_EQ(nameHash(L"\xFFE9"), 0xFFE9u);
}

}  // namespace
