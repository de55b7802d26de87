#include "algorithms/NumberText.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "support/DoubleTextReference.h"
#include "support/PageEdge.h"
#include "support/RandomInputs.h"
#include "support/WideText.h"
#include "support/Widths.h"

namespace {

namespace algorithms = vorel::algorithms;
using algorithms::DoubleForm;
using algorithms::Rest;

constexpr std::uint64_t kMax = std::numeric_limits<std::uint64_t>::max();

std::string digitsOf(std::uint64_t number) {
    char digits[20];
    return {digits, std::to_chars(digits, digits + sizeof digits, number).ptr};
}

TEST(CountDigits, IsExactAroundPowersOfTenAndOfTwo) {
    const auto expectCount = [](std::uint64_t number) {
        EXPECT_EQ(algorithms::countDigits(number), digitsOf(number).size()) << number;
    };
    expectCount(kMax);
    for (const std::uint64_t power : algorithms::kIntegerPowersOfTen) {
        expectCount(power - 1);
        expectCount(power);
        expectCount(power + 1);
    }
    for (int bit = 0; bit < 64; ++bit) {
        expectCount(std::uint64_t{1} << bit);
        expectCount((std::uint64_t{1} << bit) - 1);
    }
}

template <class T>
class NumberText : public ::testing::Test {
protected:
    static constexpr T kFill = static_cast<T>(0x5A);

    /// Expects that `write` writes the text and a terminator to a buffer of `size` units, which ends at an inaccessible
    /// page. The units after the terminator must not change.
    template <class Write>
    void expectText(const std::string& text, std::size_t size, Write&& write) {
        T* const buffer = m_pages.lastElements(size);
        std::fill_n(buffer, size, kFill);
        const T* const end = write(buffer);
        const std::size_t after = size - text.size() - 1;
        ASSERT_EQ(end - buffer, static_cast<std::ptrdiff_t>(text.size())) << text;
        ASSERT_EQ(std::basic_string<T>(buffer), test::text<T>(text));
        ASSERT_EQ(std::basic_string<T>(end + 1, after), std::basic_string<T>(after, kFill))
            << "a unit after the terminator changed: " << text;
    }

    /// Writes an integer to buffers of several sizes. `writeInteger` accesses at least sixteen units.
    void expectInteger(std::uint64_t magnitude, bool negative) {
        const std::string text = (negative ? "-" : "") + digitsOf(magnitude);
        for (const std::size_t more : {0u, 1u, 9u}) {
            expectText(text, std::max<std::size_t>(text.size() + 1, 16) + more, [&](T* out) {
                return algorithms::writeInteger<Rest::Unchanged>(magnitude, negative, text.size(), out) + text.size();
            });
        }
    }

    test::PageEdge<T> m_pages{64};
};
TYPED_TEST_SUITE(NumberText, test::CharacterTypes, test::CharacterNames);

TYPED_TEST(NumberText, IntegersLeaveTheUnitsAfterTheirTextUnchanged) {
    for (const bool negative : {false, true}) {
        this->expectInteger(0, negative);
        for (const std::uint64_t power : algorithms::kIntegerPowersOfTen) {
            this->expectInteger(power, negative);
            this->expectInteger(power - 1, negative);
            this->expectInteger(power + power / 7, negative);
        }
    }
    this->expectInteger(std::uint64_t{1} << 63, true);
    this->expectInteger(kMax, false);
}

TYPED_TEST(NumberText, IntegersOfEveryLengthAgreeWithTheStandardLibrary) {
    test::forEachRandomInput(100000, [&](test::RandomText& random) {
        this->expectInteger(random.bits() >> random.below(64), random.oneIn(2));
    });
}

TYPED_TEST(NumberText, DoublesLeaveTheUnitsAfterTheirTextUnchanged) {
    test::forEachRandomInput(50000, [&](test::RandomText& random) {
        const auto bits = std::bit_cast<double>(random.bits());
        const double decimal =
            static_cast<double>(random.bits() >> random.below(64)) / std::pow(10.0, random.below(20));
        const double value = random.oneIn(2) ? bits : decimal;
        if (!std::isfinite(value) || value == 0) {
            return;
        }
        for (const bool json : {false, true}) {
            this->expectText(test::textOfDouble(value, json), algorithms::kDoubleCapacity, [&](TypeParam* out) {
                return algorithms::writeDouble<Rest::Unchanged>(value, json ? DoubleForm::Json : DoubleForm::Plain,
                                                                out);
            });
        }
    });
}

TYPED_TEST(NumberText, StoreFirst_StoresOnlyTheFirstCharactersForEveryCount) {
    const __m128i letters = algorithms::loadBlock("abcdefghijklmnop");
    for (std::size_t count = 0; count <= 16; ++count) {
        TypeParam* const buffer = this->m_pages.lastElements(16);
        std::fill_n(buffer, 16, this->kFill);
        algorithms::storeFirst<Rest::Unchanged>(letters, count, buffer);
        const std::string wanted = std::string("abcdefghijklmnop", count) + std::string(16 - count, 0x5A);
        EXPECT_EQ(std::basic_string<TypeParam>(buffer, 16), test::text<TypeParam>(wanted)) << count;
    }
}

}  // namespace
