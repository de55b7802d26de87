#include "values/DoubleFormat.h"

#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "support/GuardedBuffer.h"

namespace {

using vorel::baseutil::makeDoubleFormatConsistent;
using vorel::util::FO_Default;
using vorel::util::FO_JSON;
using vorel::util::FormattingOptions;

/// The text after formatting in a buffer of `capacity` characters.
std::string formatted(const std::string& text, std::size_t capacity, FormattingOptions options) {
    test::GuardedBuffer<char> buffer(capacity);
    std::memcpy(buffer.data(), text.c_str(), text.size() + 1);
    EXPECT_EQ(makeDoubleFormatConsistent(buffer.data(), capacity, options), buffer.data());
    EXPECT_TRUE(buffer.isIntact());
    return buffer.data();
}

struct Row {
    const char* text;
    const char* plain;
    const char* json;
};

TEST(DoubleFormat, NormalisesTextsWithAnExponent) {
    for (const Row& row :
         {Row{"5.00000000000000e-02", "5.e-002", "5.0e-002"}, Row{"1.20000000000000e-02", "1.2e-002", "1.2e-002"},
          Row{"1.5E+20", "1.5e+020", "1.5e+020"}, Row{"1E+20", "1e+020", "1.0e+020"},
          Row{"-1e+20", "-1e+020", "-1.0e+020"}, Row{"1.e-05", "1.e-005", "1.0e-005"},
          Row{"1.0e-05", "1.e-005", "1.0e-005"}, Row{"1.05e-05", "1.05e-005", "1.05e-005"},
          Row{"1.0500e-05", "1.05e-005", "1.05e-005"}, Row{"10.10e+05", "10.1e+005", "10.1e+005"},
          Row{"100e+05", "100e+005", "100.0e+005"},  // only zeros after a point are removed
          Row{".00e+05", ".e+005", ".0e+005"}, Row{"0.00e+05", "0.e+005", "0.0e+005"}, Row{"e+05", "e+005", ".0e+005"},
          Row{"1.5e-123", "1.5e-123", "1.5e-123"},
          Row{"1.5e-7", "1.5e-7", "1.5e-7"},  // a digit is added only to two-digit exponents
          Row{"1.5e", "1.5e", "1.5e"}}) {
        EXPECT_EQ(formatted(row.text, 64, FO_Default), row.plain) << row.text;
        EXPECT_EQ(formatted(row.text, 64, FO_JSON), row.json) << row.text;
    }
}

TEST(DoubleFormat, DoesNotChangeTextsWithoutAnExponent) {
    for (const char* text : {"", "0", "123.456", "1.000", "100", "-0.5000", "NaN", "Inf", "."}) {
        EXPECT_EQ(formatted(text, 64, FO_Default), text);
        EXPECT_EQ(formatted(text, 64, FO_JSON), text);
    }
}

TEST(DoubleFormat, AddsOnlyCharactersThatFitTheCapacity) {
    struct Case {
        const char* text;
        std::size_t capacity;
        const char* plain;
        const char* json;
    };
    // A zero after the point and a third digit of the exponent each require a capacity of at least the length of the
    // text plus 2. ".0" requires at least the length plus 3. The length does not include the terminator and the removed
    // zeros. The digit of the exponent is added last, so the length then includes the other additions.
    for (const Case& row : {Case{"1e+20", 6, "1e+20", "1e+20"}, Case{"1e+20", 7, "1e+020", "1e+020"},
                            Case{"1e+20", 8, "1e+020", "1.0e+20"}, Case{"1e+20", 9, "1e+020", "1.0e+020"},
                            Case{"1.e-05", 7, "1.e-05", "1.e-05"}, Case{"1.e-05", 8, "1.e-005", "1.0e-05"},
                            Case{"1.e-05", 9, "1.e-005", "1.0e-005"}, Case{"1.00e-05", 9, "1.e-005", "1.0e-005"}}) {
        EXPECT_EQ(formatted(row.text, row.capacity, FO_Default), row.plain) << row.text << " in " << row.capacity;
        EXPECT_EQ(formatted(row.text, row.capacity, FO_JSON), row.json) << row.text << " in " << row.capacity;
    }
}

TEST(DoubleFormat, AddsNothingIfTheCapacityIsBelowTheLength) {
    char text[] = "1.e-05";
    EXPECT_STREQ(makeDoubleFormatConsistent(text, 0, FO_JSON), "1.e-05");
    EXPECT_STREQ(makeDoubleFormatConsistent(text, 3, FO_Default), "1.e-05");
}

}  // namespace
