#include "vorellog/Utf8.h"

#include <string>

#include <gtest/gtest.h>

namespace {

using vorellog::isUtf8;

TEST(Utf8Test, SequencesOfEveryLength) {
    EXPECT_TRUE(isUtf8(""));
    EXPECT_TRUE(isUtf8("abcdefgh\xC3\xA9\xE2\x82\xAC"
                       "abcdefgh\xF0\x9F\x98\x80\xF1\x80\x80\x80i"));
    EXPECT_FALSE(isUtf8("abcdefgh\xED\xA0\x80i"));
    EXPECT_FALSE(isUtf8("abcdefgh\xE2\x82"));
}

TEST(Utf8Test, InvalidByteAtEveryPosition) {
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
