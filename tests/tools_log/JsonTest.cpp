#include "vorellog/Json.h"

#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace {

// NOLINTBEGIN(misc-misleading-bidirectional): the test needs these characters
TEST(JsonTest, UnsafeCharactersAreEscapedAndInvalidUtf8IsReplaced) {
    struct Case {
        std::string text;
        std::string json;
    };
    const Case cases[] = {
        {"", R"("")"},
        {"plain", R"("plain")"},
        {R"(a"b\c/d)", R"("a\"b\\c/d")"},
        {"\n\r\t", R"("\n\r\t")"},
        {std::string("\0\x1B\x7F", 3), R"("\u0000\u001b\u007f")"},
        {"\xC2\x80\xC2\x9F\xC2\xA0", "\"\\u0080\\u009f\xC2\xA0\""},
        {"\xD8\x9B\xD8\x9C\xD8\x9D", "\"\xD8\x9B\\u061c\xD8\x9D\""},
        {"\xE2\x80\x8A\xE2\x80\x8B\xE2\x80\x8F\xE2\x80\x90", "\"\xE2\x80\x8A\\u200b\\u200f\xE2\x80\x90\""},
        {"\xE2\x80\xA8\xE2\x80\xAE\xE2\x80\xAF", "\"\\u2028\\u202e\xE2\x80\xAF\""},
        {"\xE2\x81\xA0\xE2\x81\xA9\xE2\x81\xAA", "\"\\u2060\\u2069\xE2\x81\xAA\""},
        {"\xEF\xBB\xBF", R"("\ufeff")"},
        {"caf\xC3\xA9 \xF0\x9F\x98\x80", "\"caf\xC3\xA9 \xF0\x9F\x98\x80\""},
        {"\xE9\xE2\x82", "\"\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\""}};
    for (const Case& c : cases) {
        std::string out;
        vorellog::appendJson(out, c.text);
        EXPECT_EQ(out, c.json);
    }
}
// NOLINTEND(misc-misleading-bidirectional)

/// The UTF-8 encoding of a code point, from the definition of UTF-8.
std::string encoded(unsigned int codePoint) {
    const unsigned int following = codePoint < 0x80 ? 0 : codePoint < 0x800 ? 1 : codePoint < 0x10000 ? 2 : 3;
    constexpr unsigned int kLeads[] = {0x00, 0xC0, 0xE0, 0xF0};
    std::string bytes(1, static_cast<char>(kLeads[following] | codePoint >> (6 * following)));
    for (unsigned int left = following; left != 0; --left) {
        bytes += static_cast<char>(0x80 | (codePoint >> (6 * (left - 1)) & 0x3F));
    }
    return bytes;
}

/// The text of a JSON string. Supports only the escapes that appendJson writes.
std::string decoded(std::string_view json) {
    std::string text;
    for (std::size_t at = 1; at < json.size() - 1; ++at) {
        if (json[at] != '\\') {
            text += json[at];
        } else if (json[++at] == 'u') {
            text += encoded(static_cast<unsigned int>(std::stoul(std::string(json.substr(at + 1, 4)), nullptr, 16)));
            at += 4;
        } else {
            constexpr std::string_view kNames = "nrt\"\\";
            text += "\n\r\t\"\\"[kNames.find(json[at])];
        }
    }
    return text;
}

TEST(JsonTest, EveryCodePointRoundTrips) {
    for (unsigned int codePoint = 0; codePoint <= 0x10FFFF; ++codePoint) {
        if (codePoint < 0xD800 || codePoint > 0xDFFF) {
            const std::string text = encoded(codePoint);
            std::string out;
            vorellog::appendJson(out, text);
            ASSERT_EQ(decoded(out), text) << codePoint;
        }
    }
}

TEST(JsonTest, ObjectContainsItsMembersInOrder) {
    std::string out = ">";
    { const vorellog::JsonObject empty(out); }
    {
        vorellog::JsonObject object(out);
        object.add("text", "a\"b");
        object.add("number", 18446744073709551615ull);
        object.addName("list");
        out += "[1]";
    }
    EXPECT_EQ(out, R"(>{}{"text":"a\"b","number":18446744073709551615,"list":[1]})");
}

}  // namespace
