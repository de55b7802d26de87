#include "vorel/text/Url.h"

#include <cstdio>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "support/Expect.h"
#include "support/RandomText.h"
#include "support/Widths.h"
#include "vorel/exceptions/Exception.h"

namespace {

using vorel::BaseString;
using vorel::util::UrlComponent;
using vorel::util::urlDecode;
using vorel::util::urlEncode;
using vorel::util::urlEncodeComponent;
using vorel::util::UrlPath;
using vorel::util::UrlPathSegment;
using vorel::util::UrlQuery;
using vorel::util::UrlQueryParameter;

/// What is escaped in every component: from the rules, by itself.
constexpr std::string_view kAlways = "\"#%<>[\\]^`{|}";
constexpr std::string_view kReserved = "$&+,/:;=?@";

/// The text with those bytes escaped that stand in `escaped`, or are none of ASCII, and spaces in either form.
std::string expected(std::string_view text, std::string_view escaped, bool spaceAsPlus) {
    std::string result;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == ' ') {
            result += spaceAsPlus ? "+" : "%20";
        } else if (byte >= 128 || escaped.find(c) != std::string_view::npos) {
            char escape[4];
            std::snprintf(escape, sizeof escape, "%%%2.2X", static_cast<unsigned int>(byte));
            result += escape;
        } else {
            result += c;
        }
    }
    return result;
}

/// Each form returns the buffer of its output.
template <class T>
void expectBuffer(const T* returned, const BaseString<T>& output) {
    EXPECT_EQ(returned, output.c_str());
}

struct ComponentRule {
    int component;
    std::string_view also;
    bool spaceAsPlus;
};

constexpr ComponentRule kComponents[] = {{UrlPath, "?", false}, {UrlPathSegment, "/?", false},
                                         {UrlQuery, "+", true}, {UrlQueryParameter, "+&=", true},
                                         {4, "", false},        {99, "", false},
                                         {-1, "", false}};

std::string allBytes() {
    std::string bytes;
    for (int byte = 1; byte < 256; ++byte) {
        bytes += static_cast<char>(byte);
    }
    return bytes;
}

std::string bothWith(std::string_view first, std::string_view second) {
    return std::string(first).append(second);
}

TEST(UrlEncode, EveryByteUnderEveryPairOfFlags) {
    for (const bool reserved : {false, true}) {
        for (const bool plus : {false, true}) {
            BaseString<char> output("old");
            const std::string escaped = bothWith(kAlways, "~").append(reserved ? kReserved : "");
            expectBuffer(urlEncode(allBytes().c_str(), output, reserved, plus), output);
            EXPECT_EQ(output, expected(allBytes(), escaped, plus).c_str());
            EXPECT_EQ(urlEncode(allBytes().c_str(), reserved, plus), output);
        }
    }
}

TEST(UrlEncode, EveryByteForEveryComponent) {
    for (const ComponentRule& rule : kComponents) {
        const auto component = static_cast<UrlComponent>(rule.component);
        BaseString<char> output("old");
        expectBuffer(urlEncodeComponent(allBytes().c_str(), output, component), output);
        EXPECT_EQ(output, expected(allBytes(), bothWith(kAlways, rule.also), rule.spaceAsPlus).c_str())
            << rule.component;
        EXPECT_EQ(urlEncodeComponent(allBytes().c_str(), component), output);
    }
}

TEST(UrlEncode, TextsOfTheManual) {
    EXPECT_EQ(urlEncode("a b~", false, false), "a%20b%7E");
    EXPECT_EQ(urlEncode("a b~", false, true), "a+b%7E");
    EXPECT_EQ(urlEncode("a/b?c", true, false), "a%2Fb%3Fc");
    EXPECT_EQ(urlEncode("a/b?c", false, false), "a/b?c");
    EXPECT_EQ(urlEncode("a\tb\x7F", true, false), "a\tb\x7F");
    EXPECT_EQ(urlEncodeComponent("a/b?c=d&e f~", UrlPath), "a/b%3Fc=d&e%20f~");
    EXPECT_EQ(urlEncodeComponent("a/b?c=d&e f~", UrlPathSegment), "a%2Fb%3Fc=d&e%20f~");
    EXPECT_EQ(urlEncodeComponent("a/b?c=d&e f~", UrlQuery), "a/b?c=d&e+f~");
    EXPECT_EQ(urlEncodeComponent("a/b?c=d&e f~", UrlQueryParameter), "a/b?c%3Dd%26e+f~");
}

TEST(UrlEncode, WideTextGoesThroughUtf8) {
    EXPECT_EQ(urlEncode(L"\u00E9 \U0001F600", false, true), L"%C3%A9+%F0%9F%98%80");
    EXPECT_EQ(urlEncodeComponent(L"\u20AC/", UrlPathSegment), L"%E2%82%AC%2F");
    BaseString<wchar_t> output(L"old");
    expectBuffer(urlEncode(L"a b", output, false, false), output);
    EXPECT_EQ(output, L"a%20b");
    expectBuffer(urlEncodeComponent(L"a b", output, UrlQuery), output);
    EXPECT_EQ(output, L"a+b");
}

TEST(UrlEncode, NothingIsAnEmptyText) {
    for (const char* text : {"", static_cast<const char*>(nullptr)}) {
        BaseString<char> output("old");
        EXPECT_STREQ(urlEncode(text, output, false, false), "");
        EXPECT_STREQ(urlEncodeComponent(text, output, UrlPath), "");
        EXPECT_STREQ(urlDecode(text, output, 0), "");
        BaseString<char> none;
        EXPECT_EQ(urlEncode(text, none, false, false), nullptr);
        EXPECT_EQ(urlDecode(text, none, 0), nullptr);
    }
    for (const wchar_t* text : {L"", static_cast<const wchar_t*>(nullptr)}) {
        BaseString<wchar_t> output(L"old");
        EXPECT_STREQ(urlEncode(text, output, false, false), L"");
        EXPECT_STREQ(urlEncodeComponent(text, output, UrlPath), L"");
        EXPECT_STREQ(urlDecode(text, output, 0), L"");
    }
}

struct DecodeRow {
    std::string_view text;
    int flags;
    std::string_view decoded;
};

TEST(UrlDecode, UndoesWholeEscapesOnly) {
    for (const DecodeRow& row :
         {DecodeRow{"%41%4g%", 0, "A%4g%"}, DecodeRow{"a+b", 0, "a+b"}, DecodeRow{"a+b", 1, "a b"},
          DecodeRow{"a+b", 2, "a+b"}, DecodeRow{"a+b", 3, "a b"}, DecodeRow{"%4", 0, "%4"}, DecodeRow{"%", 0, "%"},
          DecodeRow{"%41", 0, "A"}, DecodeRow{"x%4a", 0, "xJ"}, DecodeRow{"%%41", 0, "%A"},
          DecodeRow{"%4%41", 0, "%4A"}, DecodeRow{"%2541", 0, "%41"}, DecodeRow{"%2B+", 1, "+ "},
          DecodeRow{"%g1%1g", 0, "%g1%1g"}, DecodeRow{"%C3%a9", 0, "\xC3\xA9"},
          DecodeRow{"0123456789abcdef%410123456789abcdefg", 0, "0123456789abcdefA0123456789abcdefg"}}) {
        BaseString<char> output("old");
        expectBuffer(urlDecode(std::string(row.text).c_str(), output, row.flags), output);
        EXPECT_EQ(output, std::string(row.decoded).c_str()) << row.text;
    }
    EXPECT_EQ(urlDecode("%41+"), "A+");
    EXPECT_EQ(urlDecode(L"%C3%A9+"), L"\u00E9+");
}

TEST(UrlDecode, AnEscapedZeroIsPartOfTheText) {
    BaseString<char> output;
    urlDecode("a%00b", output, 0);
    EXPECT_EQ(output.view(), std::string_view("a\0b", 3));
}

TEST(UrlDecode, WideTextHasToBeUtf8) {
    BaseString<wchar_t> output;
    expectBuffer(urlDecode(L"%E2%82%AC%41", output, 0), output);
    EXPECT_EQ(output, L"\u20ACA");
    EXPECT_THROW(urlDecode(L"%80", output, 0), vorel::Exception);
}

std::string decodedPlainly(std::string_view text, bool plusIsSpace) {
    std::string result;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const std::string pair(text.substr(at + 1 < text.size() ? at + 1 : at, 2));
        if (text[at] == '%' && at + 2 < text.size() &&
            pair.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos) {
            result += static_cast<char>(std::stoul(pair, nullptr, 16));
            at += 2;
        } else {
            result += plusIsSpace && text[at] == '+' ? ' ' : text[at];
        }
    }
    return result;
}

TEST(UrlDecode, RandomTextsAgreeWithTheReference) {
    test::RandomText random(20261121);
    for (int count = 0; count < 30000; ++count) {
        std::string text;
        while (random.below(6) != 0) {
            text += random.from("abcdefgh/+", random.below(30));
            text += random.from("%0123456789abcdefABCDEFg", random.below(6));
        }
        const bool plus = random.oneIn(2);
        BaseString<char> output;
        urlDecode(text.c_str(), output, plus ? 1 : 0);
        ASSERT_EQ(output.view(), decodedPlainly(text, plus)) << text;
    }
}

TEST(UrlDecode, WhatWasEncodedComesBack) {
    test::RandomText random(20261121);
    for (int count = 0; count < 10000; ++count) {
        std::string text = random.from(allBytes(), random.below(80));
        const bool plus = random.oneIn(2);
        BaseString<char> output;
        urlDecode(urlEncode(text.c_str(), true, plus).c_str(), output, plus ? 1 : 0);
        ASSERT_EQ(output.view(), text);
        urlDecode(urlEncodeComponent(text.c_str(), UrlQueryParameter).c_str(), output, 1);
        ASSERT_EQ(output.view(), text);
    }
}

}  // namespace
