#include "tools/support/Utf8.h"

#include <string>

#include <gtest/gtest.h>

namespace {

using tools::isUtf8;
using tools::utf8SequenceSize;

/// The sequence of `size` bytes for a code point, by the definition of UTF-8. The sequence is overlong if `size` is
/// larger than necessary.
std::string encoded(unsigned int codePoint, unsigned int size) {
    constexpr unsigned int kLeads[] = {0, 0x00, 0xC0, 0xE0, 0xF0};
    std::string bytes(size, '\0');
    for (unsigned int index = size - 1; index != 0; --index, codePoint >>= 6) {
        bytes[index] = static_cast<char>(0x80 | (codePoint & 0x3F));
    }
    bytes[0] = static_cast<char>(kLeads[size] | codePoint);
    return bytes;
}

unsigned int shortestSize(unsigned int codePoint) {
    return codePoint < 0x80 ? 1 : codePoint < 0x800 ? 2 : codePoint < 0x10000 ? 3 : 4;
}

TEST(Utf8Test, EveryCodePointExceptSurrogatesHasASequence) {
    for (unsigned int codePoint = 0; codePoint != 0x110000; ++codePoint) {
        const unsigned int size = shortestSize(codePoint);
        const bool isSurrogate = codePoint >= 0xD800 && codePoint <= 0xDFFF;
        const std::string bytes = encoded(codePoint, size);
        ASSERT_EQ(utf8SequenceSize(bytes), isSurrogate ? 0 : size) << codePoint;
        ASSERT_EQ(utf8SequenceSize(bytes + "x"), isSurrogate ? 0 : size) << codePoint;
    }
}

TEST(Utf8Test, OverlongFormsAreInvalid) {
    for (unsigned int codePoint = 0; codePoint != 0x10000; ++codePoint) {
        for (unsigned int size = shortestSize(codePoint) + 1; size <= 4; ++size) {
            ASSERT_EQ(utf8SequenceSize(encoded(codePoint, size)), 0u) << codePoint << " in " << size << " bytes";
        }
    }
}

TEST(Utf8Test, MalformedSequencesAndValuesAboveTheLastCodePointAreInvalid) {
    EXPECT_EQ(utf8SequenceSize(""), 0u);
    EXPECT_EQ(utf8SequenceSize("\x80"), 0u);
    EXPECT_EQ(utf8SequenceSize("\xC3"), 0u);
    EXPECT_EQ(utf8SequenceSize("\xC3("), 0u);
    EXPECT_EQ(utf8SequenceSize("\xE2\x82"), 0u);
    EXPECT_EQ(utf8SequenceSize("\xE2\x82x"), 0u);
    EXPECT_EQ(utf8SequenceSize("\xF0\x9F\x98"), 0u);
    EXPECT_EQ(utf8SequenceSize("\xF0\x9F\x98\xC0"), 0u);
    EXPECT_EQ(utf8SequenceSize("\xF4\x90\x80\x80"), 0u);
    EXPECT_EQ(utf8SequenceSize("\xF5\x80\x80\x80"), 0u);
    EXPECT_EQ(utf8SequenceSize("\xFF"), 0u);
}

TEST(Utf8Test, SequenceAt_CountsTheValidBytes) {
    struct Case {
        const char* text;
        std::size_t size;
        std::size_t found;
    };
    const Case cases[] = {
        {"", 0, 0},
        {"a", 1, 1},
        {"\x80", 0, 0},
        {"\xC1\x80", 0, 0},
        {"\xF5\x80", 0, 0},
        {"\xC3", 2, 1},
        {"\xC3(", 2, 1},
        {"\xE0\x9F\xBF", 3, 1},
        {"\xED\xA0\x80", 3, 1},
        {"\xE2\x82", 3, 2},
        {"\xE2\x82\xAC\x80", 3, 3},
        {"\xF0\x9F\x98", 4, 3},
        {"\xF0\x9F\x98z", 4, 3},
        {"\xF4\x90\x80\x80", 4, 1},
    };
    for (const Case& each : cases) {
        const tools::Utf8Sequence sequence = tools::utf8SequenceAt(each.text);
        EXPECT_EQ(sequence.size, each.size) << testing::PrintToString(each.text);
        EXPECT_EQ(sequence.found, each.found) << testing::PrintToString(each.text);
    }
}

TEST(Utf8Test, IsUtf8_AcceptsSequencesOfEveryLength) {
    EXPECT_TRUE(isUtf8(""));
    EXPECT_TRUE(isUtf8("abcdefgh\xC3\xA9\xE2\x82\xAC"
                       "abcdefgh\xF0\x9F\x98\x80\xF1\x80\x80\x80i"));
    EXPECT_FALSE(isUtf8("abcdefgh\xED\xA0\x80i"));
    EXPECT_FALSE(isUtf8("abcdefgh\xE2\x82"));
}

TEST(Utf8Test, IsUtf8_FindsAnInvalidByteAtEveryPosition) {
    for (std::size_t size = 0; size != 40; ++size) {
        for (std::size_t at = 0; at != size; ++at) {
            std::string text(size, 'a');
            ASSERT_TRUE(isUtf8(text));
            text[at] = '\xE9';
            ASSERT_FALSE(isUtf8(text)) << at << " of " << size;
        }
    }
}

}  // namespace
