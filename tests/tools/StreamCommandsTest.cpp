/// \file
/// The commands that convert streams of bytes: base64, daylight, hex, url, utf16 and codepage.

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
        {"nothing", {L"base64"}, "", ""},
        {"one byte in the last group", {L"base64"}, "A", "QQ=="},
        {"two bytes in it", {L"base64"}, "AB", "QUI="},
        {"all three", {L"base64"}, "ABC", "QUJD"},
        {"zero and high bytes", {L"base64"}, "\0\xFF\xFE"s, "AP/+"},
        {"nothing, back", {L"base64", L"-d"}, "", ""},
        {"padding and a line's end", {L"base64", L"-d"}, "QUI=\r\n", "AB"},
        {"space in every place", {L"base64", L"--decode"}, " Q\tU\nJ\rD ", "ABC"},
        {"a byte of zero", {L"base64", L"-d"}, "AA==", "\0"s},
        {"a text of the command line", {L"base64", L"--text", L"h\u00E9"}, "", "aMOp"},
        {"the standard input by its name", {L"base64", L"-"}, "A", "QQ=="},
    };
    std::for_each(std::begin(conversions), std::end(conversions), test::expectConversion);
}

TEST(StreamCommandsTest, Daylight) {
    const Conversion conversions[] = {
        {"nothing", {L"daylight"}, "", "3"},
        {"one byte in the last group", {L"daylight"}, "A", "EE..1"},
        {"two bytes in it", {L"daylight"}, "AB", "EI6.2"},
        {"all three", {L"daylight"}, "ABC", "EI713"},
        {"nothing, back", {L"daylight", L"-d"}, "3", ""},
        {"two bytes and a line's end", {L"daylight", L"-d"}, "EI6.2\r\n", "AB"},
        {"a text of the command line", {L"daylight", L"-d", L"-t", L"EE..1"}, "", "A"},
    };
    std::for_each(std::begin(conversions), std::end(conversions), test::expectConversion);
}

TEST(StreamCommandsTest, Hex) {
    const Conversion conversions[] = {
        {"nothing", {L"hex"}, "", ""},
        {"lower case", {L"hex"}, "J\x0F\xAB\0"s, "4a0fab00"},
        {"upper case", {L"hex", L"--upper"}, "J\x0F\xAB", "4A0FAB"},
        {"both cases, and space between and within the pairs", {L"hex", L"-d"}, "4a 0F\r\nA B\n", "J\x0F\xAB"},
        {"nothing, back", {L"hex", L"-d"}, "", ""},
        {"nothing but space", {L"hex", L"-d"}, " \n", ""},
    };
    std::for_each(std::begin(conversions), std::end(conversions), test::expectConversion);
}

TEST(StreamCommandsTest, Url) {
    const std::string all = "a/b?c=d&e f~+\xC3\xA9\n";
    const Conversion conversions[] = {
        {"nothing", {L"url"}, "", ""},
        {"as it is", {L"url"}, all, "a/b?c=d&e%20f%7E+%C3%A9\n"},
        {"reserved", {L"url", L"--reserved"}, all, "a%2Fb%3Fc%3Dd%26e%20f%7E%2B%C3%A9\n"},
        {"plus", {L"url", L"--plus"}, all, "a/b?c=d&e+f%7E+%C3%A9\n"},
        {"path", {L"url", L"--component", L"path"}, all, "a/b%3Fc=d&e%20f~+%C3%A9\n"},
        {"segment", {L"url", L"--component=segment"}, all, "a%2Fb%3Fc=d&e%20f~+%C3%A9\n"},
        {"query", {L"url", L"-c", L"query"}, all, "a/b?c=d&e+f~%2B%C3%A9\n"},
        {"parameter", {L"url", L"-cparameter"}, all, "a/b?c%3Dd%26e+f~%2B%C3%A9\n"},
        {"back", {L"url", L"-d"}, "a%20b+c%C3%A9%4g%", "a b+c\xC3\xA9%4g%"},
        {"back, with plus", {L"url", L"-d", L"-p"}, "a%20b+c", "a b c"},
        {"a zero byte out of its escape", {L"url", L"-d"}, "a%00b", "a\0b"s},
    };
    std::for_each(std::begin(conversions), std::end(conversions), test::expectConversion);
}

TEST(StreamCommandsTest, Utf16) {
    const std::string utf8 = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80";
    const std::string little = "a\0\xE9\0\xAC\x20\x3D\xD8\x00\xDE"s;
    const std::string big = "\0a\0\xE9\x20\xAC\xD8\x3D\xDE\x00"s;
    const Conversion conversions[] = {
        {"nothing", {L"utf16"}, "", ""},
        {"every length of a sequence", {L"utf16"}, utf8, little},
        {"upper byte first", {L"utf16", L"--big-endian"}, utf8, big},
        {"a mark in front", {L"utf16", L"--mark"}, utf8, "\xFF\xFE" + little},
        {"a big-endian mark", {L"utf16", L"-bm"}, utf8, "\xFE\xFF" + big},
        {"a mark in front of nothing", {L"utf16", L"-m"}, "", "\xFF\xFE"},
        {"no second mark",
         {L"utf16", L"-m"},
         "\xEF\xBB\xBF"
         "a",
         "\xFF\xFE"
         "a\0"s},
        {"zeros", {L"utf16"}, "\0a\0\0"s, "\0\0a\0\0\0\0\0"s},
        {"the last character of all", {L"utf16"}, "\xF4\x8F\xBF\xBF", "\xFF\xDB\xFF\xDF"},
        {"U+40000, U+7FFFF, U+C0000 and U+FFFFF",
         {L"utf16"},
         "a\xF1\x80\x80\x80\xF1\xBF\xBF\xBF\0\xF3\x80\x80\x80\xF3\xBF\xBF\xBF"s,
         "a\0\xC0\xD8\x00\xDC\xBF\xD9\xFF\xDF\0\0\xC0\xDA\x00\xDC\xBF\xDB\xFF\xDF"s},
        {"nothing, back", {L"utf16", L"-d"}, "", ""},
        {"back", {L"utf16", L"-d"}, little, utf8},
        {"back, upper byte first", {L"utf16", L"-db"}, big, utf8},
        {"a mark decides, and goes", {L"utf16", L"-d"}, "\xFE\xFF" + big, utf8},
        {"against the option, too", {L"utf16", L"-db"}, "\xFF\xFE" + little, utf8},
        {"a mark within is a character", {L"utf16", L"-d"}, "a\0\xFF\xFE"s, "a\xEF\xBB\xBF"},
        {"zeros, back", {L"utf16", L"-d"}, "\0\0a\0\0\0\0\0"s, "\0a\0\0"s},
    };
    std::for_each(std::begin(conversions), std::end(conversions), test::expectConversion);
}

TEST(StreamCommandsTest, CodePage) {
    const Conversion conversions[] = {
        {"nothing", {L"codepage", L"--to", L"1252"}, "", ""},
        {"to a code page", {L"codepage", L"--to", L"windows-1252"}, "a\xC3\xA9\xE2\x82\xAC", "a\xE9\x80"},
        {"from a code page", {L"codepage", L"--from", L"LATIN1"}, "a\xE9", "a\xC3\xA9"},
        {"by numbers", {L"codepage", L"--from=1251", L"--to=20866"}, "\xEF\xF0", "\xD0\xD2"},
        {"several bytes to a character", {L"codepage", L"-f", L"shift_jis"}, "\x82\xA0\x0A", "\xE3\x81\x82\n"},
        {"several bytes, back", {L"codepage", L"--to", L"932"}, "\xE3\x81\x82\n", "\x82\xA0\x0A"},
        {"zeros", {L"codepage", L"--to", L"1252"}, "\0a\0"s, "\0a\0"s},
        {"what only the default character replaces",
         {L"codepage", L"--to", L"1252", L"--replace"},
         "\xE3\x81\x82",
         "?"},
        {"what cannot be read again", {L"codepage", L"--to", L"UTF-7", L"--replace"}, "a\xC3\xA9", "a+AOk-"},
        {"a character of a late plane", {L"codepage"}, "\xF3\xB0\x80\x80", "\xF3\xB0\x80\x80"},
    };
    std::for_each(std::begin(conversions), std::end(conversions), test::expectConversion);
}

TEST(StreamCommandsTest, CodePage_ListHasTheUsualOnes) {
    const test::Captured run = vorelconv({L"codepage", L"--list"});
    EXPECT_EQ(run.exitCode, test::kDone);
    EXPECT_THAT("\n" + run.output, ::testing::AllOf(::testing::HasSubstr("\n1252\n"), ::testing::HasSubstr("\n65001\n"),
                                                    ::testing::Not(::testing::HasSubstr("\n1200\n"))));
}

TEST(StreamCommandsTest, CodePage_ThatTheSystemDoesNotHave) {
    const test::Captured run = vorelconv({L"codepage", L"--from", L"12000"});
    EXPECT_EQ(run.exitCode, test::kFailed);
    EXPECT_THAT(run.error, ::testing::StartsWith("vorelconv: code page 12000 (\"12000\") is not on this system"));
}

TEST(StreamCommandsTest, CodePage_PointsToTheCommandForUtf16) {
    for (const Words& arguments : {Words{L"codepage", L"--to", L"utf-16"}, Words{L"codepage", L"--to", L"1201"},
                                   Words{L"codepage", L"--from", L"1200"}}) {
        const test::Captured run = vorelconv(arguments);
        EXPECT_EQ(run.exitCode, test::kFailed);
        EXPECT_EQ(run.output, "");
        EXPECT_EQ(run.error,
                  "vorelconv: UTF-16 is no code page of the system: \"vorelconv utf16\" converts UTF-8 to it, "
                  "and back\n");
    }
}

TEST(StreamCommandsTest, Base64_TellsThePlaceOfBadInput) {
    const BadConversion conversions[] = {
        {{L"base64", L"-d"}, "QUJD\nQ!==", "line 2, offset 6: a Base64 character is expected, found '!' (0x21)"},
        {{L"base64", L"-d"}, "Q===", "line 1, offset 1: a Base64 character is expected, found '=' (0x3D)"},
        {{L"base64", L"-d"}, "QQ=A", "line 1, offset 3: '=' is expected, found 'A' (0x41)"},
        {{L"base64", L"-d"},
         "QQ==\nQQ==",
         "line 2, offset 5: nothing is expected behind the padding, found 'Q' (0x51)"},
        {{L"base64", L"-d"},
         "QUJDQQ",
         "line 1, offset 6: the text ends within a group of four characters, 2 more are expected ('=' where there is "
         "no "
         "byte)"},
        {{L"base64", L"-d"}, "QQ\0="s, "line 1, offset 2: a Base64 character is expected, found 0x00"},
    };
    std::for_each(std::begin(conversions), std::end(conversions), test::expectBadInput);
}

TEST(StreamCommandsTest, Daylight_TellsThePlaceOfBadInput) {
    const BadConversion conversions[] = {
        {{L"daylight", L"-d"},
         "",
         "line 1, offset 0: groups of four characters and one more are expected, the text ends "
         "with 0 behind the last group"},
        {{L"daylight", L"-d"},
         "EI6.",
         "line 1, offset 4: groups of four characters and one more are expected, the text "
         "ends with 0 behind the last group"},
        {{L"daylight", L"-d"}, "EI6.0", "line 1, offset 4: the last character has to be 1, 2 or 3, found '0' (0x30)"},
        {{L"daylight", L"-d"}, "2", "line 1, offset 0: the only character has to be 3, found '2' (0x32)"},
        {{L"daylight", L"-d"},
         "EI,.2",
         "line 1, offset 2: a Daylight character (. + 0-9 A-Z a-z) is expected, found ',' (0x2C)"},
        {{L"daylight", L"-d"},
         "EI\n6.2",
         "line 1, offset 2: a Daylight character (. + 0-9 A-Z a-z) is expected, found 0x0A"},
    };
    std::for_each(std::begin(conversions), std::end(conversions), test::expectBadInput);
}

TEST(StreamCommandsTest, Hex_TellsThePlaceOfBadInput) {
    const BadConversion conversions[] = {
        {{L"hex", L"-d"}, "0x41", "line 1, offset 1: a hexadecimal digit is expected, found 'x' (0x78)"},
        {{L"hex", L"-d"}, "41\n4:", "line 2, offset 4: a hexadecimal digit is expected, found ':' (0x3A)"},
        {{L"hex", L"-d"},
         "414",
         "line 1, offset 3: the text ends within a byte, one more hexadecimal digit is expected"},
    };
    std::for_each(std::begin(conversions), std::end(conversions), test::expectBadInput);
}

TEST(StreamCommandsTest, Url_TellsThePlaceOfBadInput) {
    const BadConversion conversions[] = {
        {{L"url"}, "ab\0"s, "line 1, offset 2: text is expected, found a zero byte"},
        {{L"url", L"-d"}, "a\n\0b"s, "line 2, offset 2: text is expected, found a zero byte"},
    };
    std::for_each(std::begin(conversions), std::end(conversions), test::expectBadInput);
}

TEST(StreamCommandsTest, Utf16_TellsThePlaceOfBadInput) {
    const BadConversion conversions[] = {
        {{L"utf16"}, "a\n\x80", "line 2, offset 2: a UTF-8 sequence is expected, which cannot begin with 0x80"},
        {{L"utf16"}, "\xC0\x80", "line 1, offset 0: a UTF-8 sequence is expected, which cannot begin with 0xC0"},
        {{L"utf16"},
         "\xE0\x9F\xBF",
         "line 1, offset 0: a UTF-8 sequence of 3 bytes begins with 0xE0, but 0x9F cannot follow there"},
        {{L"utf16"},
         "a\xED\xA0\x80",
         "line 1, offset 1: a UTF-8 sequence of 3 bytes begins with 0xED, but 0xA0 cannot follow there"},
        {{L"utf16"},
         "\xF4\x90\x80\x80",
         "line 1, offset 0: a UTF-8 sequence of 4 bytes begins with 0xF4, but 0x90 cannot follow there"},
        {{L"utf16"},
         "\xF0\x9F\x98"
         "a",
         "line 1, offset 0: a UTF-8 sequence of 4 bytes begins with 0xF0, but 'a' (0x61) cannot follow there"},
        {{L"utf16"},
         "ab\xC3",
         "line 1, offset 2: a UTF-8 sequence of 2 bytes begins with 0xC3, but the text ends within it"},
        {{L"utf16"}, "\xF5", "line 1, offset 0: a UTF-8 sequence is expected, which cannot begin with 0xF5"},
        {{L"utf16", L"-d"}, "a\0b"s, "offset 3: the text ends within a unit, an even number of bytes is expected"},
        {{L"utf16", L"-d"}, "a\0\x3D\xD8"s, "offset 2: a surrogate pair is expected, found a surrogate alone"},
        {{L"utf16", L"-d"}, "\xFF\xFE\0\0\x00\xDE"s, "offset 4: a surrogate pair is expected, found a surrogate alone"},
        {{L"utf16", L"-db"}, "\xD8\x3D\0a"s, "offset 0: a surrogate pair is expected, found a surrogate alone"},
    };
    std::for_each(std::begin(conversions), std::end(conversions), test::expectBadInput);
}

TEST(StreamCommandsTest, CodePage_TellsThePlaceOfBadInput) {
    const BadConversion conversions[] = {
        {{L"codepage", L"--to", L"latin1"},
         "a\nb\xE2\x82\xAC",
         "line 2, offset 3: code page 28591 has no character for U+20AC (--replace takes another one)"},
        {{L"codepage", L"--to", L"1252"},
         "ab\xF0\x9F\x98\x80",
         "line 1, offset 2: code page 1252 has no character for U+1F600 (--replace takes another one)"},
        {{L"codepage", L"--to", L"1252"},
         "\xC3\xA9\xC3",
         "line 1, offset 2: a UTF-8 sequence of 2 bytes begins with 0xC3, but the text ends within it"},
        {{L"codepage", L"--from", L"932"},
         "ab\n\x82\xA0\x82",
         "line 2, offset 5: text of code page 932 is expected, found 0x82"},
    };
    std::for_each(std::begin(conversions), std::end(conversions), test::expectBadInput);
}

// ---- Blocks ---------------------------------------------------------------------------------------------------------

/// Around the end of the first block, and in the third one.
constexpr std::size_t kEdgeSizes[] = {kBlockBytes - 1, kBlockBytes, kBlockBytes + 1, 2 * kBlockBytes + 2};

test::Bytes randomBytes(std::size_t count) {
    return test::RandomText(20).bytes(count);
}

std::string asText(const test::Bytes& bytes) {
    return {bytes.begin(), bytes.end()};
}

void expectSame(const std::string& found, const std::string& expected) {
    EXPECT_TRUE(found == expected)
        << found.size() << " bytes, the first difference at "
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

TEST(StreamCommandsTest, BlocksAreCutBetweenGroups) {
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

TEST(StreamCommandsTest, DecodedBlocksMayEndAnywhere) {
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

TEST(StreamCommandsTest, EscapesAcrossTheEndOfABlock) {
    for (std::size_t shift = 0; shift < 4; ++shift) {
        SCOPED_TRACE(shift);
        const std::string front(kBlockBytes - shift, 'a');
        expectSame(vorelconv({L"url", L"-d"}, front + "%41%4").output, front + "A%4");
    }
}

TEST(StreamCommandsTest, SequencesAcrossTheEndOfABlock) {
    const std::string utf8 = "\xF0\x9F\x98\x80\xE2\x82\xAC\xC3\xA9";
    const std::string utf16 = "\x3D\xD8\x00\xDE\xAC\x20\xE9\x00"s;
    // Every place within one of them.
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

TEST(StreamCommandsTest, LinesOfSeveralBytesToACharacterAcrossTheEndOfABlock) {
    // The second block begins within a character, whichever byte the first one began with.
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

TEST(StreamCommandsTest, ALineLongerThanABlock) {
    std::string japanese;
    std::string utf8;
    while (japanese.size() < 3 * kBlockBytes) {
        japanese += "\x82\xA0";
        utf8 += "\xE3\x81\x82";
    }
    expectSame(vorelconv({L"codepage", L"--from", L"932"}, japanese).output, utf8);
}

TEST(StreamCommandsTest, PlacesCountFromTheStartOfTheInput) {
    std::string text;
    while (text.size() < 3 * kBlockBytes) {
        text += "QUJD\n";
    }
    const std::string place =
        "line " + std::to_string(text.size() / 5 + 1) + ", offset " + std::to_string(text.size() + 1);
    test::expectBadInput(
        {{L"base64", L"-d"}, text + "Q!", place + ": a Base64 character is expected, found '!' (0x21)"});
}

TEST(StreamCommandsTest, AnUnfinishedOutputIsTold) {
    const std::string good(4 * kBlockBytes, 'Q');
    const test::Captured run = vorelconv({L"base64", L"-d"}, good + "!");
    EXPECT_EQ(run.exitCode, test::kFailed);
    EXPECT_EQ(run.output.size(), 3 * kBlockBytes);
    EXPECT_THAT(run.error, ::testing::HasSubstr("The output is unfinished, it ends behind 3145728 bytes.\n"));
}

}  // namespace
