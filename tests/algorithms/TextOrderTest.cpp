#include "algorithms/TextOrder.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "support/PageEdge.h"
#include "support/RandomInputs.h"
#include "support/Widths.h"

namespace {

using vorel::algorithms::boundedDifference;
using vorel::algorithms::compareNonNull;
using vorel::algorithms::compareTexts;
using vorel::algorithms::kOrderBlock;
using vorel::algorithms::OrderRules;
using vorel::algorithms::sameInBlock;
using vorel::algorithms::Steps;

TEST(TextOrder, BoundedDifferenceKeepsItsSignAndCanBeNegated) {
    constexpr int kMax = std::numeric_limits<int>::max();
    struct Case {
        std::ptrdiff_t difference;
        int bounded;
    };
    for (const Case& c : {Case{0, 0}, Case{1, 1}, Case{-1, -1}, Case{kMax, kMax}, Case{-std::ptrdiff_t{kMax}, -kMax},
                          Case{std::ptrdiff_t{kMax} + 1, kMax}, Case{-std::ptrdiff_t{kMax} - 1, -kMax},
                          Case{std::ptrdiff_t{1} << 32, kMax}, Case{-(std::ptrdiff_t{1} << 32), -kMax}}) {
        EXPECT_EQ(boundedDifference(c.difference), c.bounded) << c.difference;
    }
}

/// Narrow text is compared as signed numbers.
template <class T>
using Compared = std::conditional_t<sizeof(T) == 1, signed char, T>;

template <class T>
const Compared<T>* compared(const T* text) {
    return reinterpret_cast<const Compared<T>*>(text);
}

template <class T>
class TextOrderBlocks : public ::testing::Test {};
TYPED_TEST_SUITE(TextOrderBlocks, test::CharacterTypes, test::CharacterNames);

/// Compares every pair of narrow units, and every pair of wide units below 0x180, at the first and at the last position
/// of a block.
TYPED_TEST(TextOrderBlocks, SameInBlock_ComparesUnitsAndIgnoresCaseOnRequest) {
    constexpr std::uint32_t kEnd = sizeof(TypeParam) == 1 ? 0x100 : 0x180;
    constexpr std::size_t kUnits = kOrderBlock<Compared<TypeParam>>;
    const auto isPair = [](std::uint32_t lower, std::uint32_t upper) {
        return lower >= 'a' && lower <= 'z' && upper >= 'A' && upper <= 'Z' && lower - 'a' == upper - 'A';
    };
    for (const bool ignoreCase : {false, true}) {
        for (std::uint32_t first = 0; first < kEnd; ++first) {
            for (std::uint32_t second = 0; second < kEnd; ++second) {
                const bool isSame =
                    (first == second && first != 0) || (ignoreCase && (isPair(first, second) || isPair(second, first)));
                for (const std::size_t position : {std::size_t{0}, kUnits - 1}) {
                    std::basic_string<TypeParam> a(kUnits, TypeParam{'x'});
                    std::basic_string<TypeParam> b = a;
                    a[position] = static_cast<TypeParam>(first);
                    b[position] = static_cast<TypeParam>(second);
                    ASSERT_EQ(sameInBlock(compared(a.data()), compared(b.data()), ignoreCase),
                              isSame ? kUnits : position)
                        << first << " and " << second;
                }
            }
        }
    }
}

/// Pairs of random texts of up to 69 units. The second text is a copy of the first with random changes: letters in the
/// other case, exchanged slashes, one other character, or a shorter length. Each text is placed at an edge of a page or
/// at a random position.
TYPED_TEST(TextOrderBlocks, CompareTexts_AgreesWithTheComparisonUnitByUnit) {
    test::PageEdge<TypeParam> pagesOfA(2048);
    test::PageEdge<TypeParam> pagesOfB(2048);
    test::forEachRandomInput(100000, [&](test::RandomText& random) {
        const auto a = test::text<TypeParam>(random.from("aAbBzZ@[`{/\\09\xC1\xE1", random.below(70)));
        std::basic_string<TypeParam> b = a;
        for (TypeParam& unit : b) {
            const bool isLetter = (unit >= 'a' && unit <= 'z') || (unit >= 'A' && unit <= 'Z');
            const bool isSlash = unit == '/' || unit == '\\';
            unit = isLetter && random.oneIn(2)  ? static_cast<TypeParam>(unit ^ 0x20)
                   : isSlash && random.oneIn(4) ? static_cast<TypeParam>(unit ^ '/' ^ '\\')
                                                : unit;
        }
        if (!b.empty() && random.oneIn(2)) {
            b[random.below(b.size())] = static_cast<TypeParam>(random.oneOf("aZ@[/\\7\xE1"));
        }
        b.resize(random.oneIn(3) ? random.below(b.size() + 1) : b.size());
        const auto* const left = compared(test::placeAnywhere(random, pagesOfA, a));
        const auto* const right = compared(test::placeAnywhere(random, pagesOfB, b));
        for (int bits = 0; bits < 8; ++bits) {
            const OrderRules rules = {(bits & 1) != 0, (bits & 2) != 0, (bits & 4) != 0};
            ASSERT_EQ(compareTexts(left, right, rules), compareNonNull<Steps::Units>(left, right, rules)) << bits;
            ASSERT_EQ(compareTexts(right, left, rules), compareNonNull<Steps::Units>(right, left, rules)) << bits;
        }
    });
}

}  // namespace
