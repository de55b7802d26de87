#include "vorellog/Pattern.h"

#include <string>

#include <gtest/gtest.h>

#include "support/Tool.h"

namespace {

using vorellog::Pattern;

TEST(PatternTest, Matches) {
    struct Case {
        const char* expression;
        const char* text;
        bool isIn;
        const char* why;
    };
    const Case cases[] = {
        {"", "a", true, "empty expression"},
        {"order \\d+", "order 7", true, "digits"},
        {"order \\d+", "order x", false, "no digits"},
        {"order \\d+", "Order 7", false, "letters in another case"},
        {"^two$", "one\ntwo\nthree", true, "a whole line"},
        {"^one.two$", "one\ntwo", false, "a period does not match a line feed"},
        {"a|b", "xb", true, "alternatives"},
        {"caf\xC3\xA9+", "caf\xC3\xA9\xC3\xA9", true, "UTF-8"},
        {"^.$", "\xC3\xA9", true, "one character of two bytes"},
        {"late", "\xE9 late", true, "a text with invalid UTF-8"},
        {"(a+)+$", "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaab", false, "does not take exponential time"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Pattern(c.expression, false).isIn(c.text), c.isIn) << c.why;
    }
}

TEST(PatternTest, ExpressionCannotCloseTheGroupAroundIt) {
    EXPECT_THROW(Pattern("a)|(?:b", false), tools::UsageError);
}

TEST(PatternTest, IgnoresCase) {
    EXPECT_TRUE(Pattern("order", true).isIn("an ORDER"));
    EXPECT_TRUE(Pattern("\xC3\xA9", true).isIn("\xC3\x89"));
}

TEST(PatternTest, RequiredTexts) {
    struct Case {
        const char* expression;
        const char* required;
    };
    const Case cases[] = {
        {"overran", "overran"},
        {"Operation \\d+ of \\d+ overran", "Operation "},
        {"\\d+ of (\\d+ overran)+", " overran"},
        {"(?:late){2,}", "late"},
        {"(late)*", ""},
        {"(late){0,3}", ""},
        {"a|b", ""},
        {"(?i)late", ""},
        {"x(?i)late", "x"},
        {"caf\xC3\xA9\\d", "caf\xC3\xA9"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Pattern(c.expression, false).requiredText(), c.required) << c.expression;
    }
    EXPECT_EQ(Pattern("late", true).requiredText(), "");
}

TEST(PatternTest, InvalidExpressionsAreExplained) {
    // The message names the reason and then the invalid part, unless the invalid part is the whole expression.
    constexpr struct {
        const char* expression;
        const wchar_t* text;
    } kCases[] = {
        {"(", L"--regexp \"(\": missing )"},
        {"a)", L"--regexp \"a)\": unexpected )"},
        {"[", L"--regexp \"[\": missing ]"},
        {"a[b", L"--regexp \"a[b\": missing ]: [b"},
        {"*", L"--regexp \"*\": no argument for repetition operator"},
        {"a|*", L"--regexp \"a|*\": no argument for repetition operator: *"},
        {"a{1001}", L"--regexp \"a{1001}\": invalid repetition size: {1001}"},
        {"(?<=a)b", L"--regexp \"(?<=a)b\": invalid perl operator: (?<"},
        {"\\1", L"--regexp \"\\1\": invalid escape sequence"},
    };
    for (const auto& [expression, text] : kCases) {
        try {
            const Pattern pattern(expression, false);
            ADD_FAILURE() << "accepted: " << expression;
        } catch (const tools::UsageError& e) {
            EXPECT_EQ(e.text(), text);
        }
    }
}

}  // namespace
