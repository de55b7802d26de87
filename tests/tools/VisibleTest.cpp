#include "tools/support/Visible.h"

#include <cstdint>
#include <cstdio>
#include <string>

#include <gtest/gtest.h>

namespace {

using tools::needsEscape;
using tools::visibleLines;

/// Ranges of code points. All code points of a range need an escape; the code points next to the range do not.
struct Range {
    std::uint32_t first;
    std::uint32_t last;
    const char* why;
};

constexpr Range kEscaped[] = {{0x7F, 0x9F, "DEL and C1"},
                              {0x061C, 0x061C, "Arabic letter mark"},
                              {0x200B, 0x200F, "zero width, directional marks"},
                              {0x2028, 0x202E, "line separators, directional embeddings"},
                              {0x2060, 0x2069, "invisible operators, directional isolates"},
                              {0xFEFF, 0xFEFF, "byte order mark"}};

TEST(VisibleTest, CharactersThatTerminalsInterpretNeedAnEscape) {
    std::size_t expected = 0x20;  // the C0 control characters
    for (const Range& range : kEscaped) {
        EXPECT_FALSE(needsEscape(range.first - 1)) << range.why;
        EXPECT_FALSE(needsEscape(range.last + 1)) << range.why;
        expected += range.last - range.first + 1;
    }
    std::size_t found = 0;
    for (std::uint32_t codePoint = 0; codePoint <= 0x10FFFF; ++codePoint) {
        found += needsEscape(codePoint) ? 1U : 0U;
    }
    EXPECT_EQ(found, expected);
    for (const Range& range : kEscaped) {
        for (std::uint32_t codePoint = range.first; codePoint <= range.last; ++codePoint) {
            EXPECT_TRUE(needsEscape(codePoint)) << codePoint;
        }
    }
}

std::string visible(const std::string& text) {
    std::string out = ">";
    tools::appendVisible(out, text);
    return out;
}

// NOLINTBEGIN(misc-misleading-bidirectional): the test needs these characters
TEST(VisibleTest, InterpretedCharactersAndInvalidBytesAreEscaped) {
    EXPECT_EQ(visible(""), ">");
    EXPECT_EQ(visible("plain text, longer than a word"), ">plain text, longer than a word");
    EXPECT_EQ(visible("a\tb"), ">a\tb");
    EXPECT_EQ(visible("a\\b"), ">a\\b");
    EXPECT_EQ(visible("\x1B[31mred"), ">\\x1B[31mred");
    EXPECT_EQ(visible(std::string("a\0b", 3)), ">a\\x00b");
    EXPECT_EQ(visible("\x7F\r\n"), ">\\x7F\\x0D\\x0A");
    EXPECT_EQ(visible("caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80"), ">caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80");
    EXPECT_EQ(visible("caf\xE9 "), ">caf\\xE9 ");
    EXPECT_EQ(visible("cut \xE2\x82"), ">cut \\xE2\\x82");
    EXPECT_EQ(visible("\xC2\x9B\x33\x31m\xC2\xA0"), ">\\xC2\\x9B31m\xC2\xA0");
    EXPECT_EQ(visible("\xD8\x9C."), ">\\xD8\\x9C.");           // U+061C
    EXPECT_EQ(visible("\xE2\x80\x8B."), ">\\xE2\\x80\\x8B.");  // U+200B
    EXPECT_EQ(visible("\xE2\x80\xA8."), ">\\xE2\\x80\\xA8.");  // U+2028
    EXPECT_EQ(visible("gpj.\xE2\x80\xAE"
                      "exe"),
              ">gpj.\\xE2\\x80\\xAEexe");                      // U+202E
    EXPECT_EQ(visible("\xE2\x81\xA6."), ">\\xE2\\x81\\xA6.");  // U+2066
    EXPECT_EQ(visible("\xEF\xBB\xBF."), ">\\xEF\\xBB\\xBF.");  // U+FEFF
}
// NOLINTEND(misc-misleading-bidirectional)

TEST(VisibleTest, EveryByteIsKeptOrEscapedAtEveryPosition) {
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

TEST(VisibleTest, LineEndsBecomeLineFeedsAndOtherControlsAreEscaped) {
    struct Case {
        const wchar_t* text;
        const wchar_t* visible;
    };
    const Case cases[] = {
        {L"", L""},
        {L"a.txt: l\u00E4uft nicht", L"a.txt: l\u00E4uft nicht"},
        {L"a\nb", L"a\nb"},
        {L"a\r\nb\n", L"a\nb\n"},
        {L"a\rb", L"a\\x0Db"},
        {L"a\r", L"a\\x0D"},
        {L"\x1B[2J\u202E\u009B", L"\\x1B[2J\\xE2\\x80\\xAE\\xC2\\x9B"},
        {L"\U0001F600 \U00040000", L"\U0001F600 \U00040000"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(visibleLines(c.text), c.visible);
    }
    EXPECT_EQ(visibleLines(std::wstring_view(L"a\0b", 3)), L"a\\x00b");
    EXPECT_EQ(visibleLines(std::wstring{L'a', wchar_t{0xD800}}), L"a?");
}

}  // namespace
