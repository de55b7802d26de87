#include "vorellog/Utf8.h"

#include <string>

#include <gtest/gtest.h>

namespace {

using vorellog::appendVisible;
using vorellog::isUtf8;

TEST(Utf8Test, SoundTextHasSequencesOfEveryLength) {
    EXPECT_TRUE(isUtf8(""));
    EXPECT_TRUE(isUtf8("abcdefgh\xC3\xA9\xE2\x82\xAC"
                       "abcdefgh\xF0\x9F\x98\x80\xF1\x80\x80\x80i"));
    EXPECT_FALSE(isUtf8("abcdefgh\xED\xA0\x80i"));
    EXPECT_FALSE(isUtf8("abcdefgh\xE2\x82"));
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
