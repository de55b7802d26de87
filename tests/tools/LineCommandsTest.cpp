/// \file
/// The commands that convert values line by line: integer, double, boolean, list and range. Tests of the reading of
/// lines also use the command sort.

#include <algorithm>

#include "Vorelconv.h"

namespace {

using namespace std::string_literals;
using test::BadConversion;
using test::Conversion;

TEST(LineCommandsTest, Integer) {
    const Conversion conversions[] = {
        {"empty input", {L"integer"}, "", ""},
        {"all accepted forms",
         {L"integer"},
         "42\n +0042 \n-7\n12.\n12.000\n\t0\n-0\n00\n",
         "42\n42\n-7\n12\n12\n0\n0\n0\n"},
        {"line ends", {L"integer"}, "1\r\n2\n3", "1\n2\n3\n"},
        {"the limits of 64 bits",
         {L"integer"},
         "9223372036854775807\n-9223372036854775808\n",
         "9223372036854775807\n-9223372036854775808\n"},
        {"unsigned", {L"integer", L"--type", L"uint64"}, "18446744073709551615\n+0\n", "18446744073709551615\n0\n"},
        {"the limits of 32 bits",
         {L"integer", L"-y", L"int32"},
         "2147483647\n-2147483648\n",
         "2147483647\n-2147483648\n"},
        {"unsigned 32 bits", {L"integer", L"-yuint32"}, "4294967295", "4294967295\n"},
        {"hexadecimal", {L"integer", L"--type=hex"}, "ff\n FFFFFFFF \n0\n", "255\n4294967295\n0\n"},
        {"no leading zeros", {L"integer", L"--strict"}, "0\n10\n", "0\n10\n"},
        {"text on the command line", {L"integer", L"--text", L"-5"}, "", "-5\n"},
    };
    std::for_each(std::begin(conversions), std::end(conversions), test::expectConversion);
}

TEST(LineCommandsTest, Double) {
    const Conversion conversions[] = {
        {"all accepted forms",
         {L"double"},
         "123.456\n1e20\n0.05\n-0\n +1.5E3 \n.5\n1e400\n-1e400\n",
         "123.456\n1e+020\n5.e-002\n0\n1500\n0.5\nInf\n-Inf\n"},
        {"JSON", {L"double", L"--json"}, "123.456\n1e20\n0.05\n1e400\n", "123.456\n1.0e+020\n5.0e-002\n\"Infinity\"\n"},
        {"rounded", {L"double", L"-r"}, "2.5\n-2.5\n1.6\n", "2\n-3\n2\n"},
        {"to bits",
         {L"double", L"--to-bits"},
         "1\n-2\n0.1\n",
         "3ff0000000000000\nc000000000000000\n3fb999999999999a\n"},
        {"from bits",
         {L"double", L"--from-bits"},
         "3ff0000000000000\n FFF0000000000000\n7ff80000000007a2\n7ff8000000000000\n",
         "1\n-Inf\nNA\nNaN\n"},
        {"from bits to JSON", {L"double", L"-fj"}, "7ff8000000000000", "\"NaN\"\n"},
    };
    std::for_each(std::begin(conversions), std::end(conversions), test::expectConversion);
}

TEST(LineCommandsTest, Boolean) {
    const Conversion conversions[] = {
        {"all accepted words",
         {L"boolean"},
         "true\nYES\nOn\nt\ny\n1\n10\n-3\nfalse\nno\nOFF\nf\nN\n0\n 00 \n",
         "true\ntrue\ntrue\ntrue\ntrue\ntrue\ntrue\ntrue\nfalse\nfalse\nfalse\nfalse\nfalse\nfalse\nfalse\n"},
        {"strict", {L"boolean", L"--strict"}, "true\nY\n1\nFalse\nno\n0\n", "true\ntrue\ntrue\nfalse\nfalse\nfalse\n"},
    };
    std::for_each(std::begin(conversions), std::end(conversions), test::expectConversion);
}

TEST(LineCommandsTest, List) {
    const Conversion conversions[] = {
        {"quoted and unquoted texts", {L"list"}, "a,\"b,c\",\"d\"\"e\"\n", "a\nb,c\nd\"e\n"},
        {"one list per line", {L"list"}, "a,b\n\nc,,d,\n", "a\nb\nc\n\nd\n"},
        {"quotes are kept if text follows the closing quote", {L"list"}, "\"ab\"x,c\n", "\"ab\"x\nc\n"},
        {"other delimiters", {L"list", L"--delimiter", L";|"}, "a;b|c,d", "a\nb\nc,d\n"},
        {"a delimiter outside ASCII", {L"list", L"-e", L"\u20AC"}, "a\xE2\x82\xAC\xC3\xA9", "a\n\xC3\xA9\n"},
        {"trimmed", {L"list", L"--trim"}, " a , b ", "a\nb\n"},
        {"joined", {L"list", L"--join"}, "a\nb,c\nd\"e\n", "a,\"b,c\",\"d\"\"e\"\n"},
        {"joined and trimmed", {L"list", L"-jr", L"-e;"}, " a \n b;\n", "a;\"b;\"\n"},
        {"joined empty input", {L"list", L"--join"}, "", "\n"},
        {"integers", {L"list", L"--type", L"integer"}, "1 ,2 3\n-4\n1, 2\n", "1\n2\n3\n-4\n1\n0\n2\n"},
        {"the limits of 32 bits, and fractions of any length",
         {L"list", L"-y", L"integer"},
         "2147483647,-2147483648,+007 1.99999999999 -.99999999999 0000000000012",
         "2147483647\n-2147483648\n7\n1\n0\n12\n"},
        {"unsigned", {L"list", L"-y", L"unsigned"}, "4294967295 1 -0", "4294967295\n1\n0\n"},
        {"doubles", {L"list", L"-y", L"double"}, "1.5 2e3 abc 4", "1.5\n2000\n4\n"},
        {"booleans", {L"list", L"-y", L"boolean"}, "T f 1 0 yes 3", "true\nfalse\ntrue\nfalse\ntrue\n"},
    };
    std::for_each(std::begin(conversions), std::end(conversions), test::expectConversion);
}

TEST(LineCommandsTest, Range) {
    const Conversion conversions[] = {
        {"all accepted forms", {L"range"}, "1-5,7\n 3 - 9 , 12-\n-5\n\n,4,\n", "1-5\n7-7\n3-9\n12-\n-5\n4-4\n"},
        {"the largest numbers", {L"range"}, "00-2147483647,2147483647-", "0-2147483647\n2147483647-\n"},
    };
    std::for_each(std::begin(conversions), std::end(conversions), test::expectConversion);
}

TEST(LineCommandsTest, CharactersOfPlanes4To15AreConverted) {
    const Conversion conversions[] = {
        {"U+40000 and U+FFFFF", {L"list"}, "\xF1\x80\x80\x80,\xF3\xBF\xBF\xBF", "\xF1\x80\x80\x80\n\xF3\xBF\xBF\xBF\n"},
        {"sorted", {L"sort"}, "\xF3\xB0\x80\x80\na\n", "a\n\xF3\xB0\x80\x80\n"},
    };
    std::for_each(std::begin(conversions), std::end(conversions), test::expectConversion);
}

TEST(LineCommandsTest, ByteOrderMarkAtTheStartIsDropped) {
    const std::string mark = "\xEF\xBB\xBF";
    const Conversion conversions[] = {
        {"before a number", {L"integer"}, mark + "42\n", "42\n"},
        {"before a text", {L"sort"}, mark + "a\n", "a\n"},
        {"alone", {L"integer"}, mark, ""},
        {"before an empty line", {L"sort"}, mark + "\n", "\n"},
        {"kept at any other position", {L"sort"}, mark + mark + "a\n" + mark + "b", mark + "a\n" + mark + "b\n"},
    };
    std::for_each(std::begin(conversions), std::end(conversions), test::expectConversion);
}

TEST(LineCommandsTest, Integer_ReportsThePositionOfBadInput) {
    const std::string in64 = "expected an integer from -9223372036854775808 to 9223372036854775807, found ";
    const BadConversion conversions[] = {
        {{L"integer"}, "1\n2x\n", "line 2, offset 2: expected an integer, found \"2x\""},
        {{L"integer"}, "1\n\n", "line 2, offset 2: expected an integer, found \"\""},
        {{L"integer"}, "1e0", "line 1, offset 0: expected an integer, found \"1e0\""},
        {{L"integer"}, "9223372036854775808", "line 1, offset 0: " + in64 + "\"9223372036854775808\""},
        {{L"integer"}, "-9223372036854775809", "line 1, offset 0: " + in64 + "\"-9223372036854775809\""},
        {{L"integer"}, "18446744073709551617", "line 1, offset 0: " + in64 + "\"18446744073709551617\""},
        {{L"integer"}, "100000000000000000000.0", "line 1, offset 0: " + in64 + "\"100000000000000000000.0\""},
        {{L"integer", L"-y", L"int32"},
         "2147483648",
         "line 1, offset 0: expected an integer from -2147483648 to 2147483647, found \"2147483648\""},
        {{L"integer", L"-y", L"int32"},
         "-2147483649",
         "line 1, offset 0: expected an integer from -2147483648 to 2147483647, found \"-2147483649\""},
        {{L"integer", L"-y", L"uint32"},
         "-1",
         "line 1, offset 0: expected an integer from 0 to 4294967295, found \"-1\""},
        {{L"integer", L"-y", L"uint32"},
         "4294967296",
         "line 1, offset 0: expected an integer from 0 to 4294967295, found \"4294967296\""},
        {{L"integer", L"-y", L"uint64"},
         "18446744073709551616",
         "line 1, offset 0: expected an integer from 0 to 18446744073709551615, found \"18446744073709551616\""},
        {{L"integer", L"-y", L"hex"},
         "123456789",
         "line 1, offset 0: expected a number of one to eight hexadecimal digits, found \"123456789\""},
        {{L"integer", L"-y", L"hex"},
         "0x1F",
         "line 1, offset 0: expected a number of one to eight hexadecimal digits, found \"0x1F\""},
        {{L"integer", L"-y", L"hex"},
         " ",
         "line 1, offset 0: expected a number of one to eight hexadecimal digits, found \" \""},
        {{L"integer", L"-s"}, "007", "line 1, offset 0: expected an integer without leading zeros, found \"007\""},
    };
    std::for_each(std::begin(conversions), std::end(conversions), test::expectBadInput);
}

TEST(LineCommandsTest, DoubleAndBoolean_ReportThePositionOfBadInput) {
    const BadConversion conversions[] = {
        {{L"double"}, "1\nabc", "line 2, offset 2: expected a number, found \"abc\""},
        {{L"double"}, "1e", "line 1, offset 0: expected a number, found \"1e\""},
        {{L"double"}, "1,5", "line 1, offset 0: expected a number, found \"1,5\""},
        {{L"double", L"-f"}, "3ff", "line 1, offset 0: expected sixteen hexadecimal digits, found \"3ff\""},
        {{L"boolean"}, "tru", "line 1, offset 0: expected a boolean or an integer, found \"tru\""},
        {{L"boolean"}, "\n", "line 1, offset 0: expected a boolean or an integer, found \"\""},
        {{L"boolean", L"-s"},
         "on",
         "line 1, offset 0: expected true, false, yes, no, t, f, y, n, 1 or 0, found \"on\""},
    };
    std::for_each(std::begin(conversions), std::end(conversions), test::expectBadInput);
}

TEST(LineCommandsTest, ListAndRange_ReportThePositionOfBadInput) {
    const BadConversion conversions[] = {
        {{L"list", L"-y", L"integer"},
         "1;2",
         "line 1, offset 0: expected integers separated by white space or commas, found \"1;2\" (valid items: 1)"},
        {{L"list", L"-y", L"double"},
         std::string(80, '1'),
         "line 1, offset 0: expected words of fewer than 80 characters, found \"" + std::string(60, '1') +
             "\xE2\x80\xA6\" (valid items: 0)"},
        {{L"list", L"-y", L"integer"},
         "1,99999999999",
         "line 1, offset 0: expected an integer from -2147483648 to 2147483647, found \"99999999999\""},
        {{L"list", L"-y", L"integer"},
         "1\n1 -2147483649",
         "line 2, offset 2: expected an integer from -2147483648 to 2147483647, found \"-2147483649\""},
        {{L"list", L"-y", L"unsigned"},
         "4294967297",
         "line 1, offset 0: expected an integer from 0 to 4294967295, found \"4294967297\""},
        {{L"list", L"-y", L"unsigned"},
         "1,-1",
         "line 1, offset 0: expected an integer from 0 to 4294967295, found \"-1\""},
        {{L"range"},
         "1\n5-4294967295",
         "line 2, offset 2: expected a number from 0 to 2147483647, found \"4294967295\""},
        {{L"range"}, "99999999999", "line 1, offset 0: expected a number from 0 to 2147483647, found \"99999999999\""},
        {{L"range"},
         "1-2,5--1",
         "line 1, offset 0: expected a list of ranges without negative numbers, found \"1-2,5--1\""},
        {{L"range"}, "-2147483648", "line 1, offset 0: expected a number from 0 to 2147483647, found \"2147483648\""},
        {{L"range"},
         "1\n1-x",
         "line 2, offset 2: expected ranges of numbers (\"1-5,7,9-\"): Found nonnumeric text in numeric item: "
         "\"1-x\""},
    };
    std::for_each(std::begin(conversions), std::end(conversions), test::expectBadInput);
}

TEST(LineCommandsTest, ReportsThePositionOfInvalidText) {
    const BadConversion conversions[] = {
        {{L"integer"}, "1\n2\0\n"s, "line 2, offset 3: expected text, found a zero byte"},
        {{L"list"}, "a\nb\xFF", "line 2, offset 3: invalid UTF-8: a sequence cannot begin with 0xFF"},
        {{L"list"},
         "\xEF\xBB\xBF"
         "a\n\xFF",
         "line 2, offset 5: invalid UTF-8: a sequence cannot begin with 0xFF"},
    };
    std::for_each(std::begin(conversions), std::end(conversions), test::expectBadInput);
}

TEST(LineCommandsTest, LinesAcrossTheEndsOfBlocksAreConverted) {
    std::string text;
    std::string expected;
    for (int number = 0; text.size() < (std::size_t{5} << 19); ++number) {
        text += "0" + std::to_string(number) + "\r\n";
        expected += std::to_string(number) + "\n";
    }
    EXPECT_TRUE(test::vorelconv({L"integer"}, text).output == expected);
}

}  // namespace
