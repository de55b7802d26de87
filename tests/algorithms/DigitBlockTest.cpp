#include "algorithms/DigitBlock.h"

#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "support/PageEdge.h"
#include "support/RandomText.h"
#include "support/Widths.h"

namespace {

namespace algorithms = vorel::algorithms;

template <class T>
class DigitBlock : public ::testing::Test {};
TYPED_TEST_SUITE(DigitBlock, test::CharacterTypes, test::CharacterNames);

TYPED_TEST(DigitBlock, DigitMask_SetsABitForEachDigit) {
    std::basic_string<TypeParam> text = test::text<TypeParam>("0123456789/:.-\x7F\xB5");
    EXPECT_EQ(algorithms::digitMask(text.data()), 0x03FFu);
    for (std::uint32_t unit = 0; unit < 1u << 8 * sizeof(TypeParam); ++unit) {
        const std::basic_string<TypeParam> row(16, static_cast<TypeParam>(unit));
        ASSERT_EQ(algorithms::digitMask(row.data()), unit >= '0' && unit <= '9' ? 0xFFFFu : 0u) << unit;
    }
}

TEST(DigitBlockMasks, LeadingDigitsEndAtTheFirstZeroBit) {
    for (unsigned int count = 0; count <= 32; ++count) {
        const std::uint64_t ones = (std::uint64_t{1} << count) - 1;
        EXPECT_EQ(algorithms::leadingDigits(ones), count);
        EXPECT_EQ(algorithms::leadingDigits(ones | std::uint64_t{2} << count), count);
    }
}

TYPED_TEST(DigitBlock, ValueOfDigits_IsExactForEveryDigitCount) {
    test::RandomText random(20261121);
    for (int round = 0; round < 2000; ++round) {
        for (std::uint64_t count = 0; count <= 16; ++count) {
            // The characters before and after the digits must be ignored.
            const std::string digits = random.digits(count);
            const auto text = test::text<TypeParam>(random.from("09ax", 16) + digits + "77");
            const std::uint64_t wanted = count == 0 ? 0 : std::stoull(digits);
            ASSERT_EQ(algorithms::valueOfDigits(text.data() + 16, count), wanted) << digits;
        }
    }
}

TYPED_TEST(DigitBlock, ValueAcrossPoint_IgnoresTheDecimalPoint) {
    test::RandomText random(20261121);
    for (std::uint64_t whole = 0; whole <= 14; ++whole) {
        for (std::uint64_t fraction = 0; whole + fraction <= 14; ++fraction) {
            const std::string before = random.digits(whole);
            const std::string after = random.digits(fraction);
            const auto text = test::text<TypeParam>(random.from("09ax", 16) + before + '.' + after + "77");
            const std::uint64_t wanted = whole + fraction == 0 ? 0 : std::stoull(before + after);
            EXPECT_EQ(algorithms::valueAcrossPoint(text.data() + 16, whole, fraction), wanted)
                << before << '.' << after;
        }
    }
}

template <class T>
algorithms::HexDigits hexDigitsOf(const std::basic_string<T>& text) {
    return algorithms::HexDigits(algorithms::hexBlock(text.data()));
}

TYPED_TEST(DigitBlock, HexDigitsMask_SetsABitForEachDigit) {
    const std::string digits = "0123456789abcdefABCDEF";
    constexpr std::size_t kBlock = algorithms::kHexBlock<TypeParam>;
    for (std::uint32_t unit = 0; unit < 1u << 8 * sizeof(TypeParam); ++unit) {
        const bool isDigit = unit != 0 && unit < 0x80 && digits.find(static_cast<char>(unit)) != std::string::npos;
        for (const std::size_t position : {std::size_t{0}, kBlock - 1}) {
            std::basic_string<TypeParam> text(kBlock, TypeParam{'x'});
            text[position] = static_cast<TypeParam>(unit);
            ASSERT_EQ(hexDigitsOf(text).mask, isDigit ? std::uint64_t{1} << position : 0u) << unit;
        }
    }
}

TYPED_TEST(DigitBlock, ValueOfHexDigits_IsExactForEveryDigitCount) {
    test::RandomText random(20261121);
    constexpr std::size_t kBlock = algorithms::kHexBlock<TypeParam>;
    for (int round = 0; round < 2000; ++round) {
        for (std::size_t count = 0; count <= kBlock; ++count) {
            const std::string digits = random.from("0123456789abcdefABCDEF", count);
            const auto text = test::text<TypeParam>(digits + random.from("g@`/:G \x7F\xE1", kBlock - count));
            const std::uint64_t wanted = count == 0 ? 0 : std::stoull(digits, nullptr, 16);
            const algorithms::HexDigits block = hexDigitsOf(text);
            ASSERT_EQ(algorithms::leadingDigits(block.mask), count) << digits;
            ASSERT_EQ(algorithms::valueOfHexDigits(block, count), wanted) << digits;
        }
    }
}

TYPED_TEST(DigitBlock, AreDigitBlocksInPage_IsTrueOnlyIfAllBlocksAreInThePage) {
    test::PageEdge<TypeParam> edge(4096 / sizeof(TypeParam));
    const TypeParam* const first = edge.firstElement();
    for (std::size_t position = 0; position < 4096 / sizeof(TypeParam); ++position) {
        // The algorithms read a block before the position and two blocks from the position on.
        const bool fits = position >= 16 && position + 32 <= 4096 / sizeof(TypeParam);
        ASSERT_EQ(algorithms::areDigitBlocksInPage(first + position), fits) << position;
        if (fits) {  // these reads must not fault
            static_cast<void>(algorithms::digitMask(first + position + 16));
            static_cast<void>(algorithms::valueOfDigits(first + position, 0));
        }
    }
}

}  // namespace
