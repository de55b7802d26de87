/// \file
/// The commands that convert byte streams: base64, daylight, hex, url, utf16 and codepage.

#include <algorithm>

#include "Vorelconv.h"
#include "support/BitTextReference.h"
#include "support/RandomText.h"

namespace {

using namespace std::string_literals;
using test::BadConversion;
using test::Conversion;
using test::vorelconv;
using test::Words;

constexpr std::size_t kBlockBytes = std::size_t{1} << 20;

TEST(StreamCommandsTest, Base64) {
    const Conversion conversions[] = {
        {"empty input", {L"base64"}, "", ""},
        {"one byte in the last group", {L"base64"}, "A", "QQ=="},
        {"two bytes in the last group", {L"base64"}, "AB", "QUI="},
        {"a complete group", {L"base64"}, "ABC", "QUJD"},
        {"zero and high bytes", {L"base64"}, "\0\xFF\xFE"s, "AP/+"},
        {"decode nothing", {L"base64", L"-d"}, "", ""},
        {"padding and a line end", {L"base64", L"-d"}, "QUI=\r\n", "AB"},
        {"space between all characters", {L"base64", L"--decode"}, " Q\tU\nJ\rD ", "ABC"},
        {"a zero byte", {L"base64", L"-d"}, "AA==", "\0"s},
        {"text on the command line", {L"base64", L"--text", L"h\u00E9"}, "", "aMOp"},
        {"standard input as '-'", {L"base64", L"-"}, "A", "QQ=="},
    };
    std::for_each(std::begin(conversions), std::end(conversions), test::expectConversion);
}

TEST(StreamCommandsTest, Daylight) {
    const Conversion conversions[] = {
        {"empty input", {L"daylight"}, "", "3"},
        {"one byte in the last group", {L"daylight"}, "A", "EE..1"},
        {"two bytes in the last group", {L"daylight"}, "AB", "EI6.2"},
        {"a complete group", {L"daylight"}, "ABC", "EI713"},
        {"decode nothing", {L"daylight", L"-d"}, "3", ""},
        {"two bytes and a line end", {L"daylight", L"-d"}, "EI6.2\r\n", "AB"},
        {"text on the command line", {L"daylight", L"-d", L"-t", L"EE..1"}, "", "A"},
    };
    std::for_each(std::begin(conversions), std::end(conversions), test::expectConversion);
}

TEST(StreamCommandsTest, Hex) {
    const Conversion conversions[] = {
        {"empty input", {L"hex"}, "", ""},
        {"lower case", {L"hex"}, "J\x0F\xAB\0"s, "4a0fab00"},
        {"upper case", {L"hex", L"--upper"}, "J\x0F\xAB", "4A0FAB"},
        {"both cases, and space between and within the pairs", {L"hex", L"-d"}, "4a 0F\r\nA B\n", "J\x0F\xAB"},
        {"decode nothing", {L"hex", L"-d"}, "", ""},
        {"only space", {L"hex", L"-d"}, " \n", ""},
    };
    std::for_each(std::begin(conversions), std::end(conversions), test::expectConversion);
}

TEST(StreamCommandsTest, Url) {
    const std::string all = "a/b?c=d&e f~+\xC3\xA9\n";
    const Conversion conversions[] = {
        {"empty input", {L"url"}, "", ""},
        {"no options", {L"url"}, all, "a/b?c=d&e%20f%7E+%C3%A9\n"},
        {"reserved", {L"url", L"--reserved"}, all, "a%2Fb%3Fc%3Dd%26e%20f%7E%2B%C3%A9\n"},
        {"plus", {L"url", L"--plus"}, all, "a/b?c=d&e+f%7E+%C3%A9\n"},
        {"path", {L"url", L"--component", L"path"}, all, "a/b%3Fc=d&e%20f~+%C3%A9\n"},
        {"segment", {L"url", L"--component=segment"}, all, "a%2Fb%3Fc=d&e%20f~+%C3%A9\n"},
        {"query", {L"url", L"-c", L"query"}, all, "a/b?c=d&e+f~%2B%C3%A9\n"},
        {"parameter", {L"url", L"-cparameter"}, all, "a/b?c%3Dd%26e+f~%2B%C3%A9\n"},
        {"decode", {L"url", L"-d"}, "a%20b+c%C3%A9%4g%", "a b+c\xC3\xA9%4g%"},
        {"decode with plus", {L"url", L"-d", L"-p"}, "a%20b+c", "a b c"},
        {"decode an escaped zero byte", {L"url", L"-d"}, "a%00b", "a\0b"s},
    };
    std::for_each(std::begin(conversions), std::end(conversions), test::expectConversion);
}

TEST(StreamCommandsTest, Utf16) {
    const std::string utf8 = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80";
    const std::string little = "a\0\xE9\0\xAC\x20\x3D\xD8\x00\xDE"s;
    const std::string big = "\0a\0\xE9\x20\xAC\xD8\x3D\xDE\x00"s;
    const Conversion conversions[] = {
        {"empty input", {L"utf16"}, "", ""},
        {"every length of a sequence", {L"utf16"}, utf8, little},
        {"big-endian", {L"utf16", L"--big-endian"}, utf8, big},
        {"a byte-order mark", {L"utf16", L"--mark"}, utf8, "\xFF\xFE" + little},
        {"a big-endian byte-order mark", {L"utf16", L"-bm"}, utf8, "\xFE\xFF" + big},
        {"a byte-order mark without text", {L"utf16", L"-m"}, "", "\xFF\xFE"},
        {"a byte-order mark in the input is not repeated",
         {L"utf16", L"-m"},
         "\xEF\xBB\xBF"
         "a",
         "\xFF\xFE"
         "a\0"s},
        {"zeros", {L"utf16"}, "\0a\0\0"s, "\0\0a\0\0\0\0\0"s},
        {"the last code point", {L"utf16"}, "\xF4\x8F\xBF\xBF", "\xFF\xDB\xFF\xDF"},
        {"U+40000, U+7FFFF, U+C0000 and U+FFFFF",
         {L"utf16"},
         "a\xF1\x80\x80\x80\xF1\xBF\xBF\xBF\0\xF3\x80\x80\x80\xF3\xBF\xBF\xBF"s,
         "a\0\xC0\xD8\x00\xDC\xBF\xD9\xFF\xDF\0\0\xC0\xDA\x00\xDC\xBF\xDB\xFF\xDF"s},
        {"decode nothing", {L"utf16", L"-d"}, "", ""},
        {"decode", {L"utf16", L"-d"}, little, utf8},
        {"decode big-endian", {L"utf16", L"-db"}, big, utf8},
        {"a byte-order mark selects the order and is dropped", {L"utf16", L"-d"}, "\xFE\xFF" + big, utf8},
        {"a byte-order mark overrides the option", {L"utf16", L"-db"}, "\xFF\xFE" + little, utf8},
        {"a later byte-order mark is a character", {L"utf16", L"-d"}, "a\0\xFF\xFE"s, "a\xEF\xBB\xBF"},
        {"decode zeros", {L"utf16", L"-d"}, "\0\0a\0\0\0\0\0"s, "\0a\0\0"s},
    };
    std::for_each(std::begin(conversions), std::end(conversions), test::expectConversion);
}

TEST(StreamCommandsTest, CodePage) {
    const Conversion conversions[] = {
        {"empty input", {L"codepage", L"--to", L"1252"}, "", ""},
        {"to a code page", {L"codepage", L"--to", L"windows-1252"}, "a\xC3\xA9\xE2\x82\xAC", "a\xE9\x80"},
        {"from a code page", {L"codepage", L"--from", L"LATIN1"}, "a\xE9", "a\xC3\xA9"},
        {"by number", {L"codepage", L"--from=1251", L"--to=20866"}, "\xEF\xF0", "\xD0\xD2"},
        {"from a multi-byte code page", {L"codepage", L"-f", L"shift_jis"}, "\x82\xA0\x0A", "\xE3\x81\x82\n"},
        {"to a multi-byte code page", {L"codepage", L"--to", L"932"}, "\xE3\x81\x82\n", "\x82\xA0\x0A"},
        {"zeros", {L"codepage", L"--to", L"1252"}, "\0a\0"s, "\0a\0"s},
        {"a character that only the default character can replace",
         {L"codepage", L"--to", L"1252", L"--replace"},
         "\xE3\x81\x82",
         "?"},
        {"a code page that does not report replaced characters",
         {L"codepage", L"--to", L"UTF-7", L"--replace"},
         "a\xC3\xA9",
         "a+AOk-"},
        {"a character of plane 15", {L"codepage"}, "\xF3\xB0\x80\x80", "\xF3\xB0\x80\x80"},
    };
    std::for_each(std::begin(conversions), std::end(conversions), test::expectConversion);
}

TEST(StreamCommandsTest, CodePage_ListContainsCommonCodePagesButNotUtf16) {
    const test::Captured run = vorelconv({L"codepage", L"--list"});
    EXPECT_EQ(run.exitCode, test::kDone);
    EXPECT_THAT("\n" + run.output, ::testing::AllOf(::testing::HasSubstr("\n1252\n"), ::testing::HasSubstr("\n65001\n"),
                                                    ::testing::Not(::testing::HasSubstr("\n1200\n"))));
}

TEST(StreamCommandsTest, CodePage_ReportsACodePageThatIsNotAvailable) {
    const test::Captured run = vorelconv({L"codepage", L"--from", L"12000"});
    EXPECT_EQ(run.exitCode, test::kFailed);
    EXPECT_THAT(run.error,
                ::testing::StartsWith("vorelconv: code page 12000 (\"12000\") is not available on this system"));
}

TEST(StreamCommandsTest, CodePage_RefersToTheCommandForUtf16) {
    for (const Words& arguments : {Words{L"codepage", L"--to", L"utf-16"}, Words{L"codepage", L"--to", L"1201"},
                                   Words{L"codepage", L"--from", L"1200"}}) {
        const test::Captured run = vorelconv(arguments);
        EXPECT_EQ(run.exitCode, test::kFailed);
        EXPECT_EQ(run.output, "");
        EXPECT_EQ(run.error,
                  "vorelconv: UTF-16 is not a code page of the system; \"vorelconv utf16\" converts between UTF-8 and "
                  "UTF-16\n");
    }
}

TEST(StreamCommandsTest, Base64_ReportsThePositionOfBadInput) {
    const BadConversion conversions[] = {
        {{L"base64", L"-d"}, "QUJD\nQ!==", "line 2, offset 6: expected a Base64 character, found '!' (0x21)"},
        {{L"base64", L"-d"}, "Q===", "line 1, offset 1: expected a Base64 character, found '=' (0x3D)"},
        {{L"base64", L"-d"}, "QQ=A", "line 1, offset 3: expected '=', found 'A' (0x41)"},
        {{L"base64", L"-d"}, "QQ==\nQQ==", "line 2, offset 5: expected nothing after the padding, found 'Q' (0x51)"},
        {{L"base64", L"-d"},
         "QUJDQQ",
         "line 1, offset 6: characters missing from the last group of four: 2 (pad with '=')"},
        {{L"base64", L"-d"}, "QQ\0="s, "line 1, offset 2: expected a Base64 character, found 0x00"},
    };
    std::for_each(std::begin(conversions), std::end(conversions), test::expectBadInput);
}

TEST(StreamCommandsTest, Daylight_ReportsThePositionOfBadInput) {
    const BadConversion conversions[] = {
        {{L"daylight", L"-d"},
         "",
         "line 1, offset 0: expected one character after the complete groups of four, found 0"},
        {{L"daylight", L"-d"},
         "EI6.",
         "line 1, offset 4: expected one character after the complete groups of four, found 0"},
        {{L"daylight", L"-d"}, "EI6.0", "line 1, offset 4: expected 1, 2 or 3 as the last character, found '0' (0x30)"},
        {{L"daylight", L"-d"}, "2", "line 1, offset 0: expected 3 as the only character, found '2' (0x32)"},
        {{L"daylight", L"-d"},
         "EI,.2",
         "line 1, offset 2: expected a Daylight character (. + 0-9 A-Z a-z), found ',' (0x2C)"},
        {{L"daylight", L"-d"},
         "EI\n6.2",
         "line 1, offset 2: expected a Daylight character (. + 0-9 A-Z a-z), found 0x0A"},
    };
    std::for_each(std::begin(conversions), std::end(conversions), test::expectBadInput);
}

TEST(StreamCommandsTest, Hex_ReportsThePositionOfBadInput) {
    const BadConversion conversions[] = {
        {{L"hex", L"-d"}, "0x41", "line 1, offset 1: expected a hexadecimal digit, found 'x' (0x78)"},
        {{L"hex", L"-d"}, "41\n4:", "line 2, offset 4: expected a hexadecimal digit, found ':' (0x3A)"},
        {{L"hex", L"-d"}, "414", "line 1, offset 3: the text ends within a byte; expected one more hexadecimal digit"},
    };
    std::for_each(std::begin(conversions), std::end(conversions), test::expectBadInput);
}

TEST(StreamCommandsTest, Url_ReportsThePositionOfBadInput) {
    const BadConversion conversions[] = {
        {{L"url"}, "ab\0"s, "line 1, offset 2: expected text, found a zero byte"},
        {{L"url", L"-d"}, "a\n\0b"s, "line 2, offset 2: expected text, found a zero byte"},
    };
    std::for_each(std::begin(conversions), std::end(conversions), test::expectBadInput);
}

TEST(StreamCommandsTest, Utf16_ReportsThePositionOfBadInput) {
    const BadConversion conversions[] = {
        {{L"utf16"}, "a\n\x80", "line 2, offset 2: invalid UTF-8: a sequence cannot begin with 0x80"},
        {{L"utf16"}, "\xC0\x80", "line 1, offset 0: invalid UTF-8: a sequence cannot begin with 0xC0"},
        {{L"utf16"},
         "\xE0\x9F\xBF",
         "line 1, offset 0: invalid UTF-8: a 3-byte sequence begins with 0xE0, but 0x9F cannot follow"},
        {{L"utf16"},
         "a\xED\xA0\x80",
         "line 1, offset 1: invalid UTF-8: a 3-byte sequence begins with 0xED, but 0xA0 cannot follow"},
        {{L"utf16"},
         "\xF4\x90\x80\x80",
         "line 1, offset 0: invalid UTF-8: a 4-byte sequence begins with 0xF4, but 0x90 cannot follow"},
        {{L"utf16"},
         "\xF0\x9F\x98"
         "a",
         "line 1, offset 0: invalid UTF-8: a 4-byte sequence begins with 0xF0, but 'a' (0x61) cannot follow"},
        {{L"utf16"},
         "ab\xC3",
         "line 1, offset 2: invalid UTF-8: a 2-byte sequence begins with 0xC3, but the text ends within it"},
        {{L"utf16"}, "\xF5", "line 1, offset 0: invalid UTF-8: a sequence cannot begin with 0xF5"},
        {{L"utf16", L"-d"}, "a\0b"s, "offset 3: the text ends within a code unit; expected an even number of bytes"},
        {{L"utf16", L"-d"}, "a\0\x3D\xD8"s, "offset 2: expected a surrogate pair, found a single surrogate"},
        {{L"utf16", L"-d"}, "\xFF\xFE\0\0\x00\xDE"s, "offset 4: expected a surrogate pair, found a single surrogate"},
        {{L"utf16", L"-db"}, "\xD8\x3D\0a"s, "offset 0: expected a surrogate pair, found a single surrogate"},
    };
    std::for_each(std::begin(conversions), std::end(conversions), test::expectBadInput);
}

TEST(StreamCommandsTest, CodePage_ReportsThePositionOfBadInput) {
    const BadConversion conversions[] = {
        {{L"codepage", L"--to", L"latin1"},
         "a\nb\xE2\x82\xAC",
         "line 2, offset 3: code page 28591 has no character for U+20AC (--replace substitutes one)"},
        {{L"codepage", L"--to", L"1252"},
         "ab\xF0\x9F\x98\x80",
         "line 1, offset 2: code page 1252 has no character for U+1F600 (--replace substitutes one)"},
        {{L"codepage", L"--to", L"1252"},
         "\xC3\xA9\xC3",
         "line 1, offset 2: invalid UTF-8: a 2-byte sequence begins with 0xC3, but the text ends within it"},
        {{L"codepage", L"--from", L"932"},
         "ab\n\x82\xA0\x82",
         "line 2, offset 5: expected text in code page 932, found 0x82"},
    };
    std::for_each(std::begin(conversions), std::end(conversions), test::expectBadInput);
}

// ---- Blocks ---------------------------------------------------------------------------------------------------------

/// Sizes around the end of the first block, and a size in the third block.
constexpr std::size_t kEdgeSizes[] = {kBlockBytes - 1, kBlockBytes, kBlockBytes + 1, 2 * kBlockBytes + 2};

test::Bytes randomBytes(std::size_t count) {
    return test::RandomText(20).bytes(count);
}

std::string asText(const test::Bytes& bytes) {
    return {bytes.begin(), bytes.end()};
}

void expectSame(const std::string& found, const std::string& expected) {
    EXPECT_TRUE(found == expected)
        << found.size() << " bytes, first difference at "
        << std::mismatch(found.begin(), found.end(), expected.begin(), expected.end()).first - found.begin();
}

void expectBothWays(const std::wstring& command, const std::string& plain, const std::string& converted) {
    const test::Captured there = vorelconv({command}, plain);
    expectSame(there.output, converted);
    EXPECT_EQ(there.error, "");
    const test::Captured back = vorelconv({command, L"--decode"}, converted);
    expectSame(back.output, plain);
    EXPECT_EQ(back.error, "");
}

TEST(StreamCommandsTest, TextsThatEndNearBlockEndsAreEncodedAndDecoded) {
    const test::Bytes most = randomBytes(2 * kBlockBytes + 2);
    const std::string base64 = test::base64Of(most);
    const std::string daylight = test::daylightOf(most);
    for (const std::size_t size : kEdgeSizes) {
        SCOPED_TRACE(size);
        const std::size_t whole = size / 3;
        const test::Bytes tail(most.begin() + static_cast<std::ptrdiff_t>(3 * whole),
                               most.begin() + static_cast<std::ptrdiff_t>(size));
        const std::string plain = asText({most.begin(), most.begin() + static_cast<std::ptrdiff_t>(size)});
        expectBothWays(L"base64", plain, base64.substr(0, 4 * whole) + test::base64Of(tail));
        expectBothWays(L"daylight", plain, daylight.substr(0, 4 * whole) + test::daylightOf(tail));
    }
}

TEST(StreamCommandsTest, DecodingIsIndependentOfBlockEnds) {
    const std::string plain = asText(randomBytes(kBlockBytes));
    const std::string base64 = vorelconv({L"base64"}, plain).output;
    const std::string hex = vorelconv({L"hex"}, plain).output;
    for (std::size_t shift = 0; shift < 4; ++shift) {
        SCOPED_TRACE(shift);
        const std::string space(shift, '\n');
        expectSame(vorelconv({L"base64", L"-d"}, space + base64).output, plain);
        expectSame(vorelconv({L"hex", L"-d"}, space + hex).output, plain);
    }
}

TEST(StreamCommandsTest, EscapesAcrossTheEndOfABlockAreDecoded) {
    for (std::size_t shift = 0; shift < 4; ++shift) {
        SCOPED_TRACE(shift);
        const std::string front(kBlockBytes - shift, 'a');
        expectSame(vorelconv({L"url", L"-d"}, front + "%41%4").output, front + "A%4");
    }
}

TEST(StreamCommandsTest, SequencesAcrossTheEndOfABlockAreConverted) {
    const std::string utf8 = "\xF0\x9F\x98\x80\xE2\x82\xAC\xC3\xA9";
    const std::string utf16 = "\x3D\xD8\x00\xDE\xAC\x20\xE9\x00"s;
    // For each shift, the first block of UTF-8 text ends at a different position within a sequence.
    for (const std::size_t shift : {1U, 2U, 3U, 5U, 6U, 8U}) {
        SCOPED_TRACE(shift);
        const std::string front(kBlockBytes - shift, 'a');
        std::string wideFront;
        for (std::size_t count = 0; count < front.size(); ++count) {
            wideFront += "a\0"s;
        }
        expectBothWays(L"utf16", front + utf8, wideFront + utf16);
        expectSame(vorelconv({L"codepage"}, front + utf8).output, front + utf8);
    }
}

TEST(StreamCommandsTest, MultiByteCharactersAcrossTheEndOfABlockAreConverted) {
    // In at least one of the two texts, the first block ends within a character.
    for (const std::string& front : {"\n"s, "a\n"s}) {
        std::string japanese = front;
        std::string utf8 = front;
        while (japanese.size() < 2 * kBlockBytes) {
            japanese += "\x82\xA0\x82\xA0\x82\xA0\n";
            utf8 += "\xE3\x81\x82\xE3\x81\x82\xE3\x81\x82\n";
        }
        expectSame(vorelconv({L"codepage", L"--from", L"932"}, japanese).output, utf8);
        expectSame(vorelconv({L"codepage", L"--to", L"932"}, utf8).output, japanese);
    }
}

TEST(StreamCommandsTest, LineLongerThanABlockIsConverted) {
    std::string japanese;
    std::string utf8;
    while (japanese.size() < 3 * kBlockBytes) {
        japanese += "\x82\xA0";
        utf8 += "\xE3\x81\x82";
    }
    expectSame(vorelconv({L"codepage", L"--from", L"932"}, japanese).output, utf8);
}

TEST(StreamCommandsTest, PositionsAreCountedFromTheStartOfTheInput) {
    std::string text;
    while (text.size() < 3 * kBlockBytes) {
        text += "QUJD\n";
    }
    const std::string position =
        "line " + std::to_string(text.size() / 5 + 1) + ", offset " + std::to_string(text.size() + 1);
    test::expectBadInput(
        {{L"base64", L"-d"}, text + "Q!", position + ": expected a Base64 character, found '!' (0x21)"});
}

TEST(StreamCommandsTest, FailureReportsTheSizeOfTheUnfinishedOutput) {
    const std::string good(4 * kBlockBytes, 'Q');
    const test::Captured run = vorelconv({L"base64", L"-d"}, good + "!");
    EXPECT_EQ(run.exitCode, test::kFailed);
    EXPECT_EQ(run.output.size(), 3 * kBlockBytes);
    EXPECT_THAT(run.error, ::testing::HasSubstr("The output is unfinished: it ends after 3145728 bytes.\n"));
}

}  // namespace
