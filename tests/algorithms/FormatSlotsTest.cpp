#include "algorithms/FormatSlots.h"

#include <gtest/gtest.h>

#include "support/Widths.h"

namespace {

using vorel::algorithms::countFormatSlots;

template <class T>
class FormatSlots : public ::testing::Test {};

TYPED_TEST_SUITE(FormatSlots, test::CharacterTypes, test::CharacterNames);

struct Case {
    const char* format;
    unsigned int slots;
    const char* why;
};

constexpr Case kCases[] = {
    {"", 0, "empty format"},
    {"plain text", 0, "no conversion"},
    {"%d", 1, "one conversion"},
    {"%d%s%p", 3, "adjacent conversions"},
    {"100%%", 0, "an escaped percent sign has no slot"},
    {"%%%d", 1, "a conversion after an escaped percent sign"},
    {"%%d", 0, "the letter after an escaped percent sign is text"},
    {"%*d", 2, "width from the arguments"},
    {"%.*s", 2, "precision from the arguments"},
    {"%-*.*f|", 3, "width and precision from the arguments"},
    {"%-+ #08.3f", 1, "all flags, and a width and a precision as digits"},
    {"%hd %hhd %ld %lld %Lf %wc %jd %zu %tx", 9, "size prefixes"},
    {"%I64d %I32u %Ix", 3, "size prefixes with digits"},
    {"%hs %ls %S %C %n %Z", 6, "conversions of this runtime"},
    {"tail %", 0, "incomplete conversion at the end"},
    {"tail %-08l", 0, "incomplete conversion with flags, a width and a size prefix"},
    {"%d of %*s%%", 3, "example of the documentation"},
};

TYPED_TEST(FormatSlots, CountsOneSlotPerConversionAndAsterisk) {
    for (const Case& c : kCases) {
        EXPECT_EQ(countFormatSlots(test::text<TypeParam>(c.format).c_str()), c.slots) << c.format << ": " << c.why;
    }
}

TYPED_TEST(FormatSlots, UnitsAbove127AreConversionLetters) {
    EXPECT_EQ(countFormatSlots(test::text<TypeParam>("\xE4%\xE4%d\xFF").c_str()), 2u);
}

TEST(FormatSlotsOfWideText, ComparesWholeUnits) {
    // The low byte of U+012A is an asterisk; the low byte of U+0130 is the digit zero.
    EXPECT_EQ(countFormatSlots(L"%\x012A%d"), 2u);
    EXPECT_EQ(countFormatSlots(L"%\x0130%d"), 2u);
}

static_assert(countFormatSlots("%d%*d") == 3, "the function must work at compile time");

}  // namespace
