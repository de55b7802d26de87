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

/// The text after it was brought into form in a buffer of `capacity` characters.
std::string formed(const std::string& text, std::size_t capacity, FormattingOptions options) {
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

TEST(DoubleFormat, BringsEveryTextWithAnExponentIntoOneForm) {
    for (const Row& row :
         {Row{"5.00000000000000e-02", "5.e-002", "5.0e-002"}, Row{"1.20000000000000e-02", "1.2e-002", "1.2e-002"},
          Row{"1.5E+20", "1.5e+020", "1.5e+020"}, Row{"1E+20", "1e+020", "1.0e+020"},
          Row{"-1e+20", "-1e+020", "-1.0e+020"}, Row{"1.e-05", "1.e-005", "1.0e-005"},
          Row{"1.0e-05", "1.e-005", "1.0e-005"}, Row{"1.05e-05", "1.05e-005", "1.05e-005"},
          Row{"1.0500e-05", "1.05e-005", "1.05e-005"}, Row{"10.10e+05", "10.1e+005", "10.1e+005"},
          Row{"100e+05", "100e+005", "100.0e+005"},  // zeros in front of a point do not count
          Row{".00e+05", ".e+005", ".0e+005"}, Row{"0.00e+05", "0.e+005", "0.0e+005"}, Row{"e+05", "e+005", ".0e+005"},
          Row{"1.5e-123", "1.5e-123", "1.5e-123"},
          Row{"1.5e-7", "1.5e-7", "1.5e-7"},  // only an exponent of two digits gets a third
          Row{"1.5e", "1.5e", "1.5e"}}) {
        EXPECT_EQ(formed(row.text, 64, FO_Default), row.plain) << row.text;
        EXPECT_EQ(formed(row.text, 64, FO_JSON), row.json) << row.text;
    }
}

TEST(DoubleFormat, LeavesTextsWithoutAnExponentAlone) {
    for (const char* text : {"", "0", "123.456", "1.000", "100", "-0.5000", "NaN", "Inf", "."}) {
        EXPECT_EQ(formed(text, 64, FO_Default), text);
        EXPECT_EQ(formed(text, 64, FO_JSON), text);
    }
}

TEST(DoubleFormat, AddsNothingThatHasNoRoom) {
    struct Cut {
        const char* text;
        std::size_t capacity;
        const char* plain;
        const char* json;
    };
    // Room is counted from the length without the terminator: a digit needs two, and ".0" needs three.
    for (const Cut& row : {Cut{"1e+20", 6, "1e+20", "1e+20"}, Cut{"1e+20", 7, "1e+020", "1e+020"},
                           Cut{"1e+20", 8, "1e+020", "1.0e+20"}, Cut{"1e+20", 9, "1e+020", "1.0e+020"},
                           Cut{"1.e-05", 7, "1.e-05", "1.e-05"}, Cut{"1.e-05", 8, "1.e-005", "1.0e-05"},
                           Cut{"1.e-05", 9, "1.e-005", "1.0e-005"}, Cut{"1.00e-05", 9, "1.e-005", "1.0e-005"}}) {
        EXPECT_EQ(formed(row.text, row.capacity, FO_Default), row.plain) << row.text << " in " << row.capacity;
        EXPECT_EQ(formed(row.text, row.capacity, FO_JSON), row.json) << row.text << " in " << row.capacity;
    }
}

TEST(DoubleFormat, TakesACapacityBelowTheLengthForNoRoom) {
    char text[] = "1.e-05";
    EXPECT_STREQ(makeDoubleFormatConsistent(text, 0, FO_JSON), "1.e-05");
    EXPECT_STREQ(makeDoubleFormatConsistent(text, 3, FO_Default), "1.e-05");
}

}  // namespace
