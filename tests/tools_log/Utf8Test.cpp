#include "vorellog/Utf8.h"

#include <string>

#include <gtest/gtest.h>

namespace {

using vorellog::appendVisible;
using vorellog::isUtf8;
using vorellog::sequenceSize;

/// The sequence of a code point, by the definition of UTF-8; of more bytes than it needs when `size` says so.
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

TEST(Utf8Test, EveryCodePointButTheSurrogatesHasASequence) {
    for (unsigned int codePoint = 0; codePoint != 0x110000; ++codePoint) {
        const unsigned int size = shortestSize(codePoint);
        const bool isSurrogate = codePoint >= 0xD800 && codePoint <= 0xDFFF;
        const std::string bytes = encoded(codePoint, size);
        ASSERT_EQ(sequenceSize(bytes), isSurrogate ? 0 : size) << codePoint;
        ASSERT_EQ(sequenceSize(bytes + "x"), isSurrogate ? 0 : size) << codePoint;
        ASSERT_EQ(isUtf8("abcdefgh" + bytes + "i"), !isSurrogate) << codePoint;
    }
}

TEST(Utf8Test, OverlongFormsAreNone) {
    for (unsigned int codePoint = 0; codePoint != 0x10000; ++codePoint) {
        for (unsigned int size = shortestSize(codePoint) + 1; size <= 4; ++size) {
            ASSERT_EQ(sequenceSize(encoded(codePoint, size)), 0u) << codePoint << " in " << size;
        }
    }
}

TEST(Utf8Test, WhatIsCutOrBeyondTheLastCodePointIsNone) {
    EXPECT_EQ(sequenceSize(""), 0u);
    EXPECT_EQ(sequenceSize("\x80"), 0u);
    EXPECT_EQ(sequenceSize("\xC3"), 0u);
    EXPECT_EQ(sequenceSize("\xC3("), 0u);
    EXPECT_EQ(sequenceSize("\xE2\x82"), 0u);
    EXPECT_EQ(sequenceSize("\xE2\x82x"), 0u);
    EXPECT_EQ(sequenceSize("\xF0\x9F\x98"), 0u);
    EXPECT_EQ(sequenceSize("\xF0\x9F\x98\xC0"), 0u);
    EXPECT_EQ(sequenceSize("\xF4\x90\x80\x80"), 0u);
    EXPECT_EQ(sequenceSize("\xF5\x80\x80\x80"), 0u);
    EXPECT_EQ(sequenceSize("\xFF"), 0u);
}

TEST(Utf8Test, ABadByteIsFoundAtEveryPlace) {
    for (std::size_t size = 0; size != 40; ++size) {
        for (std::size_t at = 0; at != size; ++at) {
            std::string text(size, 'a');
            ASSERT_TRUE(isUtf8(text));
            text[at] = '\xE9';
            ASSERT_FALSE(isUtf8(text)) << at << " of " << size;
        }
    }
}

std::string visible(const std::string& text) {
    std::string out = ">";
    appendVisible(out, text);
    return out;
}

TEST(Utf8Test, ControlCharactersAndBadBytesAreMadeVisible) {
    EXPECT_EQ(visible(""), ">");
    EXPECT_EQ(visible("plain text, longer than a word"), ">plain text, longer than a word");
    EXPECT_EQ(visible("a\tb"), ">a\tb");
    EXPECT_EQ(visible("\x1B[31mred"), ">\\x1B[31mred");
    EXPECT_EQ(visible(std::string("a\0b", 3)), ">a\\x00b");
    EXPECT_EQ(visible("\x7F\r\n"), ">\\x7F\\x0D\\x0A");
    EXPECT_EQ(visible("caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80"), ">caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80");
    EXPECT_EQ(visible("caf\xE9 "), ">caf\\xE9 ");
    EXPECT_EQ(visible("cut \xE2\x82"), ">cut \\xE2\\x82");
    EXPECT_EQ(visible("\xC2\x9B\x33\x31m\xC2\xA0"), ">\\xC2\\x9B31m\xC2\xA0");
}

TEST(Utf8Test, EveryByteIsMadeVisibleAtEveryPlaceOfAWord) {
    for (int byte = 0; byte != 256; ++byte) {
        const bool isPlain = (byte >= ' ' && byte < 0x7F) || byte == '\t';
        char escape[8];
        std::snprintf(escape, sizeof escape, "\\x%02X", static_cast<unsigned int>(byte));
        const std::string shown = isPlain ? std::string(1, static_cast<char>(byte)) : std::string(escape);
        for (std::size_t at = 0; at != 17; ++at) {
            std::string text(17, ' ');
            text[at] = static_cast<char>(byte);
            ASSERT_EQ(visible(text), ">" + std::string(at, ' ') + shown + std::string(16 - at, ' '))
                << byte << " at " << at;
        }
    }
}

}  // namespace
