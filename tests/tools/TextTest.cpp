#include "tools/support/Text.h"

#include <gtest/gtest.h>

namespace {

using namespace std::string_literals;

struct Pair {
    const char* why;
    std::wstring wide;
    std::string utf8;
};

TEST(TextTest, ConvertsToUtf8AndBack) {
    const Pair pairs[] = {
        {"empty", L"", ""},
        {"every length of a sequence", L"a\u00E9\u20AC\xD83D\xDE00", "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"},
        {"U+40000, U+7FFFF, U+C0000 and U+FFFFF", L"\xD8C0\xDC00\u00E9\xD9BF\xDFFF\xDAC0\xDC00z\xDBBF\xDFFF",
         "\xF1\x80\x80\x80\xC3\xA9\xF1\xBF\xBF\xBF\xF3\x80\x80\x80z\xF3\xBF\xBF\xBF"},
        {"a zero in the middle", L"a\0b"s, "a\0b"s},
        {"zeros at both ends", L"\0a\0"s, "\0a\0"s},
        {"only zeros", L"\0\0"s, "\0\0"s},
        {"more than one block of the decoder", std::wstring(1000, L'\u00E9'),
         [] {
             std::string bytes;
             for (int count = 0; count < 1000; ++count) {
                 bytes += "\xC3\xA9";
             }
             return bytes;
         }()},
    };
    for (const Pair& pair : pairs) {
        SCOPED_TRACE(pair.why);
        EXPECT_EQ(tools::toUtf8(pair.wide), pair.utf8);
        EXPECT_EQ(tools::fromUtf8(pair.utf8), pair.wide);
    }
}

TEST(TextTest, ToUtf8_DoesNotReadPastTheEnd) {
    const std::wstring_view cut = std::wstring_view(L"a\xD83D\xDE00").substr(0, 2);
    EXPECT_EQ(tools::toUtf8(cut), "a?");
}

TEST(TextTest, FromUtf8_FailsForInvalidLeadBytesAndMalformedF1AndF3Sequences) {
    EXPECT_EQ(tools::fromUtf8("abc\x80"), std::nullopt);
    EXPECT_EQ(tools::fromUtf8("a\0\xFF"s), std::nullopt);
    EXPECT_EQ(tools::fromUtf8("\xF1\x80\x80"), std::nullopt);
    EXPECT_EQ(tools::fromUtf8("\xF3\x80\x80z"), std::nullopt);
}

TEST(TextTest, FromUtf8_DoesNotReadPastTheEnd) {
    // The result is as if the missing trailing byte of the truncated sequence were zero.
    EXPECT_EQ(tools::fromUtf8(std::string_view("a\xC3\xA9").substr(0, 2)), L"a\u00C0");
}

TEST(TextTest, Formatted) {
    EXPECT_EQ(tools::formatted(L"%ls: %d of %u", L"name", -1, 2U), L"name: -1 of 2");
}

}  // namespace
