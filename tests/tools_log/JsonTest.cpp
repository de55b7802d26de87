#include "vorellog/Json.h"

#include <string>

#include <gtest/gtest.h>

namespace {

TEST(JsonTest, Strings) {
    struct Case {
        std::string text;
        std::string json;
    };
    const Case cases[] = {{"", R"("")"},
                          {"plain", R"("plain")"},
                          {R"(a"b\c/d)", R"("a\"b\\c/d")"},
                          {"\n\r\t", R"("\n\r\t")"},
                          {std::string("\0\x1B\x7F", 3), R"("\u0000\u001b\u007f")"},
                          {"caf\xC3\xA9 \xF0\x9F\x98\x80", "\"caf\xC3\xA9 \xF0\x9F\x98\x80\""},
                          {"\xE9\xE2\x82", "\"\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\""}};
    for (const Case& c : cases) {
        std::string out;
        vorellog::appendJson(out, c.text);
        EXPECT_EQ(out, c.json);
    }
}

TEST(JsonTest, Objects) {
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
