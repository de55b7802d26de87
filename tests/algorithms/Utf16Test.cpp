#include "algorithms/Utf16.h"

#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "algorithms/NotableValues.h"
#include "support/Utf8Reference.h"

namespace {

using vorel::algorithms::isHighSurrogate;
using vorel::algorithms::isLowSurrogate;
using vorel::algorithms::isSurrogate;
using vorel::algorithms::pairedValue;
using vorel::algorithms::writeUnits;

TEST(Utf16, WriteUnits_SplitsValuesFrom0x10000AndWrapsAbove0x10FFFF) {
    struct Case {
        std::uint32_t value;
        std::wstring units;
    };
    // From 0x10000 on, the first unit is (value >> 10) - 0x2840, modulo 2^16.
    const Case cases[] = {
        {0x41, L"\x0041"},
        {0xD800, L"\xD800"},
        {0xFFFF, L"\xFFFF"},
        {0x10000, L"\xD800\xDC00"},
        {0x1F600, L"\xD83D\xDE00"},
        {0x10FFFF, L"\xDBFF\xDFFF"},
        {0x110000, L"\xDC00\xDC00"},    // value >> 10 is 0x440
        {0x3FFFFF, L"\xE7BF\xDFFF"},    // value >> 10 is 0xFFF
        {0x40000000, L"\xD7C0\xDC00"},  // value >> 10 is 0x100000
        {0x7FFFFFFF, L"\xD7BF\xDFFF"},  // value >> 10 is 0x1FFFFF
    };
    for (const Case& c : cases) {
        wchar_t units[2] = {};
        const unsigned int count = writeUnits(c.value, units);
        EXPECT_EQ(std::wstring(units, count), c.units) << std::hex << c.value;
    }
    for (const std::uint32_t value : test::notableValues()) {
        std::wstring expected;
        test::appendUtf16(expected, value);
        wchar_t units[2] = {};
        EXPECT_EQ(std::wstring(units, writeUnits(value, units)), expected) << std::hex << value;
    }
}

TEST(Utf16, SurrogateRanges) {
    for (unsigned int unit = 0; unit <= 0xFFFF; ++unit) {
        ASSERT_EQ(isHighSurrogate(unit), unit >= 0xD800 && unit <= 0xDBFF) << std::hex << unit;
        ASSERT_EQ(isLowSurrogate(unit), unit >= 0xDC00 && unit <= 0xDFFF) << std::hex << unit;
        ASSERT_EQ(isSurrogate(unit), unit >= 0xD800 && unit <= 0xDFFF) << std::hex << unit;
    }
}

TEST(Utf16, PairedValue_JoinsTheUnitsOfASurrogatePair) {
    EXPECT_EQ(pairedValue(0xD800, 0xDC00), 0x10000u);
    EXPECT_EQ(pairedValue(0xDBFF, 0xDFFF), 0x10FFFFu);
    EXPECT_EQ(pairedValue(0xD83D, 0xDE00), 0x1F600u);
}

}  // namespace
