#include <ostream>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "support/PageEdge.h"
#include "support/Utf8Reference.h"
#include "vorel/text/Unicode.h"

namespace {

using vorel::BaseString;
using vorel::util::ConvertUTF8toString;

const unsigned char* bytesOf(const std::string& text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

/// The result of a conversion that does not throw.
struct Result {
    bool done;
    std::wstring units;

    friend bool operator==(const Result&, const Result&) = default;
    friend std::ostream& operator<<(std::ostream& out, const Result& result) {
        return out << (result.done ? "done " : "failed ") << testing::PrintToString(result.units);
    }
};

/// Converts `text`. Appends six zeros, because the decoder reads them if the last sequence is incomplete.
Result decoded(const std::string& text, int length = -1) {
    const std::string input = text + std::string(6, '\0');
    BaseString<wchar_t> output(L"previous content");
    const bool done = ConvertUTF8toString(output, bytesOf(input), length, false);
    BaseString<wchar_t> ofChars;
    EXPECT_EQ(ConvertUTF8toString(ofChars, input.c_str(), length, false), done) << "overload for char";
    EXPECT_EQ(ofChars.view(), output.view()) << "overload for char";
    return {done, std::wstring(output.view())};
}

TEST(UnicodeDecoding, ReadsSequencesOfEveryLength) {
    struct Case {
        std::string bytes;
        std::wstring units;
        const char* why;
    };
    const Case cases[] = {
        {"", L"", "empty text"},
        {"A\x7F", L"A\x7F", "ASCII"},
        {"\xC2\x80\xC3\xA9\xDF\xBF", L"\x80\xE9\x7FF", "two bytes"},
        {"\xE0\xA0\x80\xE2\x82\xAC\xEF\xBF\xBF", L"\x800\x20AC\xFFFF", "three bytes"},
        {"\xF0\x90\x80\x80", L"\xD800\xDC00", "four bytes: the first pair"},
        {"\xF0\x9F\x98\x80", L"\xD83D\xDE00", "four bytes: a pair between the first and the last"},
        {"\xF4\x8F\xBF\xBF", L"\xDBFF\xDFFF", "four bytes: the last pair"},
        {"\xFD\x80\x80\x80\x80\x80", L"\xD7C0\xDC00", "six bytes: 0x40000000, whose high unit overflows"},
        {"\xFD\xBF\xBF\xBF\xBF\xBF", L"\xA7BF\xDFFF",
         "six bytes: 0x4F3FFFFF, because only four bits of each of the first two trailing bytes are used"},
        {"\xEF\xBB\xBF"
         "A",
         L"\xFEFF"
         L"A",
         "a byte-order mark is text"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(decoded(c.bytes), (Result{true, c.units})) << c.why;
    }
}

TEST(UnicodeDecoding, AcceptsOverlongFormsAndSurrogates) {
    struct Case {
        std::string bytes;
        std::wstring units;
        const char* why;
    };
    const Case cases[] = {
        {"\xC1\x81", L"A", "two bytes for A"},
        {"\xE0\x81\x81", L"A", "three bytes for A"},
        {"\xF0\x80\x81\x81", L"A", "four bytes for A"},
        {"\xF0\x82\x82\xAC", L"\x20AC", "four bytes for a three-byte character"},
        {"\xED\xA0\x80", L"\xD800", "unpaired high surrogate"},
        {"\xED\xBF\xBF", L"\xDFFF", "unpaired low surrogate"},
        {"\xED\xA0\xBD\xED\xB8\x80", L"\xD83D\xDE00", "a pair as two sequences"},
        {"\xC0\x80"
         "A",
         std::wstring(L"\0A", 2), "an overlong zero does not end the text"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(decoded(c.bytes), (Result{true, c.units})) << c.why;
    }
}

TEST(UnicodeDecoding, EveryLeadByteAgreesWithTheReference) {
    constexpr std::string_view kStartNothing = "\xF1\xF3\xF5\xF7\xF9\xFB\xFF";
    for (unsigned int value = 1; value < 256; ++value) {
        SCOPED_TRACE(testing::Message() << "lead byte " << std::hex << value);
        const char lead = static_cast<char>(value);
        const bool startsNothing = (value >= 0x80 && value < 0xC0) || kStartNothing.find(lead) != kStartNothing.npos;
        // The bound of two bytes ends the text after '<' and the character that `lead` starts, however many bytes this
        // character has.
        const std::string text = std::string("<") + lead + "\x81\x92\xA3\xB4\xC5";
        const std::wstring units = startsNothing ? L"" : test::decodeUtf8(text, 2).units;
        EXPECT_EQ(decoded(text, 2), (Result{!startsNothing, units}));
    }
}

TEST(UnicodeDecoding, LowFourBitsOfALeadByteForFourBytesArePartOfTheValue) {
    // The low four bits of the lead byte are part of the value: F6 means 6 << 18, and so on up to FE.
    // The first unit is (value >> 10) - 0x2840, modulo 2^16.
    struct Case {
        const char* bytes;
        std::wstring units;
    };
    static const Case kCases[] = {
        {"\xF6\x80\x80\x80", L"\xDDC0\xDC00"},  // value 0x180000, value >> 10 is 0x600
        {"\xF8\x80\x80\x80", L"\xDFC0\xDC00"},  // value 0x200000, value >> 10 is 0x800
        {"\xFA\x80\x80\x80", L"\xE1C0\xDC00"},  // value 0x280000, value >> 10 is 0xA00
        {"\xFC\x80\x80\x80", L"\xE3C0\xDC00"},  // value 0x300000, value >> 10 is 0xC00
        {"\xFE\x80\x80\x80", L"\xE5C0\xDC00"},  // value 0x380000, value >> 10 is 0xE00
    };
    for (const Case& c : kCases) {
        EXPECT_EQ(decoded(c.bytes), (Result{true, c.units}));
    }
}

TEST(UnicodeDecoding, TrailingBytesAreNeverChecked) {
    struct Case {
        std::string bytes;
        std::wstring units;
        const char* why;
    };
    const Case cases[] = {
        {"\xC3"
         "AB",
         L"\xC1"
         L"B",
         "a letter is decoded as a trailing byte"},
        {"\xC3\xC3\xA9", L"", "a lead byte is decoded as a trailing byte, so the byte after it is invalid"},
        {"\xE2\x82", L"\x2080", "a zero is decoded as a trailing byte, the next zero ends the text"},
        {std::string("\xC3\0Az", 4),
         L"\xC0"
         L"Az",
         "the text continues after a zero decoded as a trailing byte"},
        {std::string("\xFD\0\0\0\0\0Az", 8),
         L"\xD7C0\xDC00"
         L"Az",
         "the text continues after five zeros decoded as trailing bytes"},
    };
    for (const Case& c : cases) {
        const Result result = decoded(c.bytes);
        EXPECT_EQ(result.units, c.units) << c.why;
        EXPECT_EQ(result.done, !c.units.empty()) << c.why;
    }
}

TEST(UnicodeDecoding, SequenceMayExceedTheLength) {
    struct Case {
        std::string bytes;
        int length;
        std::wstring units;
        const char* why;
    };
    const Case cases[] = {
        {"\xC3\xA9", 1, L"\xE9", "one trailing byte beyond the bound"},
        {"\xF0\x9F\x98\x80", 1, L"\xD83D\xDE00", "three trailing bytes beyond the bound"},
        {"\xFD\x80\x80\x80\x80\x80"
         "A",
         1, L"\xD7C0\xDC00", "five trailing bytes beyond the bound"},
        {"abc", 0, L"", "bound of 0"},
        {"abc", 2, L"ab", "bound within the text"},
        {"abc", 100, L"abc", "a zero ends the text before the bound"},
        {std::string("a\0b", 3), 3, L"a", "a zero ends the text within the bound"},
        {"abc", -1, L"abc", "no bound"},
        {"abc", -2147483647 - 1, L"abc", "any negative length means unbounded"},
        {"ab\x80", 2, L"ab", "an invalid byte beyond the bound is not read"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(decoded(c.bytes, c.length), (Result{true, c.units})) << c.why;
    }
}

TEST(UnicodeDecoding, NullGivesAnEmptyText) {
    for (const int length : {-1, 0, 5}) {
        BaseString<wchar_t> output(L"before");
        EXPECT_TRUE(ConvertUTF8toString(output, static_cast<const unsigned char*>(nullptr), length, true));
        EXPECT_TRUE(output.empty());
        output = L"before";
        EXPECT_TRUE(ConvertUTF8toString(output, static_cast<const char*>(nullptr), length, true));
        EXPECT_TRUE(output.empty());
    }
}

TEST(UnicodeDecoding, FailureLeavesOnlyTheWholeBlocksBeforeIt) {
    struct Case {
        std::string before;
        std::size_t kept;
        const char* why;
    };
    const std::string pair = "\xF0\x9F\x98\x80";
    const Case cases[] = {
        {"", 0, "invalid first byte"},
        {std::string(449, 'a'), 0, "one unit short of a block"},
        {std::string(450, 'a'), 450, "a full block is kept"},
        {std::string(451, 'a'), 450, "the incomplete second block is dropped"},
        {std::string(899, 'a'), 450, "one unit short of two blocks"},
        {std::string(900, 'a'), 900, "two blocks"},
        {std::string(448, 'a') + pair, 450, "a pair completes the block"},
        {std::string(449, 'a') + pair, 450, "a pair crosses the end of the block; its first unit is kept"},
        {std::string(898, 'a') + pair, 900, "a pair completes the second block"},
        {std::string(899, 'a') + pair, 900, "a pair crosses the end of the second block; its first unit is kept"},
        {std::string(100000, 'a'), 99900, "the 100 units after 222 blocks are dropped"},
    };
    for (const Case& c : cases) {
        const std::wstring all = test::decodeUtf8(c.before + std::string(1, '\0'), -1).units;
        EXPECT_EQ(decoded(c.before + "\xFF"
                                     "after"),
                  (Result{false, all.substr(0, c.kept)}))
            << c.why;
    }
}

TEST(UnicodeDecoding, FailureLeavesOnlyTheWholeBlocksBeforeItInAReservedString) {
    BaseString<wchar_t> output;
    output.reserve(5000, true);
    const std::string text = std::string(700, 'a') + "\x80";
    EXPECT_FALSE(ConvertUTF8toString(output, text.c_str(), -1, false));
    EXPECT_EQ(output.view(), std::wstring(450, L'a'));
    EXPECT_EQ(output.c_str()[450], L'\0');
}

TEST(UnicodeDecoding, CharactersNearBlockBoundariesAgreeWithTheReference) {
    // A pair, a character of one unit, another pair, and letters.
    const std::string across = "\xF0\x9F\x98\x80\xE2\x82\xAC\xF0\x9F\x98\x80" + std::string(40, 'y');
    for (std::size_t count = 440; count < 460; ++count) {
        for (const std::size_t blocks : {0u, 1u, 2u, 7u}) {
            const std::string text = std::string(450 * blocks + count, 'x') + across;
            const std::wstring expected = test::decodeUtf8(text + '\0', -1).units;
            ASSERT_EQ(decoded(text), (Result{true, expected})) << count << " units after " << blocks << " blocks";
        }
    }
}

TEST(UnicodeDecoding, ReadsNothingPastTheEnd) {
    struct Case {
        std::string bytes;
        int length;
    };
    const Case cases[] = {
        {"", 0},         {"a", 1},        {std::string("a\0", 2), -1},       {std::string("a\0", 2), 50},
        {"\xC3\xA9", 1}, {"\xC3\xA9", 2}, {"\xFD\x80\x80\x80\x80\x80", 1},   {std::string(449, 'a'), 449},
        {"\xFF", 1},     {"ab\x80", -1},  {std::string(33, 'a') + '\0', -1}, {std::string(33, 'a') + "\xC3", 34},
    };
    test::PageEdge<char> edge(4096);
    for (Case c : cases) {
        if (c.bytes.ends_with("\xC3")) {
            c.bytes += "\xA9";  // the decoder reads this trailing byte, although it is beyond the bound
        }
        SCOPED_TRACE(testing::PrintToString(c.bytes));
        BaseString<wchar_t> output;
        const test::DecodedText expected = test::decodeUtf8(c.bytes, c.length);
        EXPECT_EQ(ConvertUTF8toString(output, edge.placeAtEnd(c.bytes), c.length, false), !expected.error.has_value());
    }
}

TEST(UnicodeDecoding, OutputCanBeReused) {
    BaseString<wchar_t> output;
    EXPECT_TRUE(ConvertUTF8toString(output, std::string(2000, 'x').c_str(), -1, true));
    EXPECT_EQ(output.length(), 2000u);
    EXPECT_TRUE(ConvertUTF8toString(output, "ab", -1, true));
    EXPECT_EQ(output.view(), L"ab");
    EXPECT_EQ(output.c_str()[2], L'\0');
    EXPECT_TRUE(ConvertUTF8toString(output, "", -1, true));
    EXPECT_TRUE(output.empty());
}

}  // namespace
