/// \file
/// Two rules of the hash map: the comparison of names, and the search for the next prime. When a map grows, its number
/// of buckets becomes the next prime above twice the old number.

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/Widths.h"
#include "vorel/core/HashMap.h"

namespace {

using vorel::NameEqual;
using vorel::nextPrime;

template <class T>
class NameEqualTest : public ::testing::Test {
protected:
    static bool equal(std::string_view a, std::string_view b) {
        return NameEqual()(test::text<T>(a).c_str(), test::text<T>(b).c_str());
    }
};

TYPED_TEST_SUITE(NameEqualTest, test::CharacterTypes, test::CharacterNames);

TYPED_TEST(NameEqualTest, IgnoresTheCaseOfAToZOnly) {
    for (int a = 1; a < 256; ++a) {
        for (int b = 1; b < 256; ++b) {
            const auto first = static_cast<char>(a);
            const auto second = static_cast<char>(b);
            const bool differOnlyInCase =
                (a >= 'A' && a <= 'Z' && b == a + 32) || (b >= 'A' && b <= 'Z' && a == b + 32);
            ASSERT_EQ(this->equal({&first, 1}, {&second, 1}), a == b || differOnlyInCase) << a << " and " << b;
        }
    }
}

TYPED_TEST(NameEqualTest, ComparesWholeNames) {
    EXPECT_TRUE(this->equal("", ""));
    EXPECT_TRUE(this->equal("ISO-8859-1", "iso-8859-1"));
    EXPECT_TRUE(this->equal("Utf-8", "uTF-8"));
    EXPECT_FALSE(this->equal("utf-8", "utf-88"));
    EXPECT_FALSE(this->equal("utf-88", "utf-8"));
    EXPECT_FALSE(this->equal("", "a"));
    EXPECT_FALSE(this->equal("utf-7", "utf-8"));
}

TYPED_TEST(NameEqualTest, NullEqualsOnlyNull) {
    const TypeParam* const null = nullptr;
    const auto empty = test::text<TypeParam>("");
    EXPECT_TRUE(NameEqual()(null, null));
    EXPECT_FALSE(NameEqual()(null, empty.c_str()));
    EXPECT_FALSE(NameEqual()(empty.c_str(), null));
}

TYPED_TEST(NameEqualTest, IsTheDefaultComparisonOfMapsWithTextKeys) {
    const auto stored = test::text<TypeParam>("Utf-8[");
    const auto other = test::text<TypeParam>("uTF-8[");
    const auto notLetters = test::text<TypeParam>("utf-8{");
    const auto empty = test::text<TypeParam>("");
    const TypeParam* const null = nullptr;
    vorel::HashMap<const TypeParam*, int> map(31);
    map.put(5, stored.c_str(), 1);
    EXPECT_FALSE(map.find(other.c_str(), 5) == map.end());
    EXPECT_TRUE(map.find(other.c_str(), 36) == map.end()) << "same bucket, different hash";
    EXPECT_TRUE(map.find(notLetters.c_str(), 5) == map.end());
    EXPECT_TRUE(map.find(null, 5) == map.end());
    map.put(5, null, 2);
    EXPECT_TRUE(map.find(empty.c_str(), 5) == map.end());
    ASSERT_FALSE(map.find(null, 5) == map.end());
    EXPECT_EQ(map.find(null, 5).value(), 2);
    EXPECT_TRUE(map.remove(other.c_str(), 5));

    auto changeable = stored;
    auto sameText = other;
    vorel::HashMap<TypeParam*, int> mapOfChangeable(31);
    mapOfChangeable.put(5, changeable.data(), 1);
    EXPECT_FALSE(mapOfChangeable.find(sameText.data(), 5) == mapOfChangeable.end());

    vorel::HashMap<const TypeParam*, int, std::equal_to<>> byAddress(31);
    byAddress.put(5, stored.c_str(), 1);
    EXPECT_TRUE(byAddress.find(other.c_str(), 5) == byAddress.end());
    EXPECT_FALSE(byAddress.find(stored.c_str(), 5) == byAddress.end());
}

TEST(NameEqualOfWideText, DoesNotIgnoreTheCaseOfLettersBeyondAToZ) {
    EXPECT_FALSE(NameEqual()(L"\x0141", L"\x0161")) << "the low bytes are A and a";
    EXPECT_FALSE(NameEqual()(L"\xFF21", L"\xFF41")) << "full-width A and a";
    EXPECT_FALSE(NameEqual()(L"\x00C4", L"\x00E4")) << "A and a with diaeresis";
    EXPECT_FALSE(NameEqual()(L"\x0130", L"i")) << "I with a dot";
}

TEST(NextPrime, ReturnsTheListedValues) {
    struct Case {
        std::uint64_t n;
        std::uint64_t prime;
    };
    for (const auto& [n, prime] : {Case{0, 1}, Case{1, 2}, Case{2, 3}, Case{3, 5}, Case{4, 5}, Case{5, 7}, Case{7, 11},
                                   Case{8, 11}, Case{24, 29}, Case{48, 53}, Case{62, 67}, Case{65536, 65537},
                                   Case{65537, 65539}, Case{2147483646, 2147483647}, Case{2147483647, 2147483659},
                                   Case{4294967290, 4294967291}, Case{4294967291, 4294967311}}) {
        EXPECT_EQ(nextPrime(n), prime) << n;
    }
}

TEST(NextPrime, AgreesWithASieve) {
    constexpr std::size_t kLimit = 200000;
    std::vector<bool> composite(kLimit);
    for (std::size_t n = 2; n * n < kLimit; ++n) {
        for (std::size_t multiple = n * n; !composite[n] && multiple < kLimit; multiple += n) {
            composite[multiple] = true;
        }
    }
    std::uint64_t next = 0;
    for (std::size_t n = kLimit - 1; n >= 2; --n) {
        if (next != 0) {
            ASSERT_EQ(nextPrime(n), next) << n;
        }
        next = composite[n] ? next : n;
    }
}

}  // namespace
