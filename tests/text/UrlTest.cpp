#include "vorel/text/Url.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "support/Expect.h"
#include "support/PageEdge.h"
#include "support/RandomInputs.h"
#include "support/RandomText.h"
#include "support/UrlReference.h"
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

/// Each overload that has an output parameter returns the buffer of this output.
template <class T>
void expectBuffer(const T* returned, const BaseString<T>& output) {
    EXPECT_EQ(returned, output.c_str());
}

/// A way to call the encoder, with flags or with a component. `rule` lets the reference encoder escape the same
/// characters.
struct Use {
    int component;  // kFlags for the overloads with flags
    bool reserved;
    test::UrlRule rule;

    template <class T>
    [[nodiscard]] const T* encode(const T* text, BaseString<T>& output) const {
        return component == kFlags ? urlEncode(text, output, reserved, rule.spaceAsPlus)
                                   : urlEncodeComponent(text, output, static_cast<UrlComponent>(component));
    }
    template <class T>
    [[nodiscard]] BaseString<T> encode(const T* text) const {
        return component == kFlags ? urlEncode(text, reserved, rule.spaceAsPlus)
                                   : urlEncodeComponent(text, static_cast<UrlComponent>(component));
    }

    static constexpr int kFlags = -2;
};

const std::vector<Use>& uses() {
    const std::string reserved = std::string("~").append(test::kUrlReserved);
    static const std::vector<Use> kUses = {{Use::kFlags, false, {"~", false}},
                                           {Use::kFlags, false, {"~", true}},
                                           {Use::kFlags, true, {reserved, false}},
                                           {Use::kFlags, true, {reserved, true}},
                                           {UrlPath, false, {"?", false}},
                                           {UrlPathSegment, false, {"/?", false}},
                                           {UrlQuery, false, {"+", true}},
                                           {UrlQueryParameter, false, {"+&=", true}},
                                           // These numbers are not components.
                                           {4, false, {"", false}},
                                           {99, false, {"", false}},
                                           {-1, false, {"", false}}};
    return kUses;
}

std::string allBytes() {
    std::string bytes;
    for (int byte = 1; byte < 256; ++byte) {
        bytes += static_cast<char>(byte);
    }
    return bytes;
}

TEST(UrlEncode, EveryByteAgreesWithTheReferenceForAllFlagsAndComponents) {
    for (const Use& use : uses()) {
        BaseString<char> output("old");
        expectBuffer(use.encode(allBytes().c_str(), output), output);
        EXPECT_EQ(std::string(output.c_str()), test::urlEncoded(allBytes(), use.rule)) << use.component;
        EXPECT_EQ(output.length(), test::urlEncoded(allBytes(), use.rule).size());
        EXPECT_EQ(use.encode(allBytes().c_str()), output);
    }
}

TEST(UrlEncode, WideAsciiIsEncodedLikeNarrowAscii) {
    const std::string ascii = allBytes().substr(0, 127);
    const std::wstring wide = test::widened(ascii);
    for (const Use& use : uses()) {
        const std::string wanted = test::urlEncoded(ascii, use.rule);
        BaseString<wchar_t> output(L"old");
        expectBuffer(use.encode(wide.c_str(), output), output);
        EXPECT_EQ(output, test::widened(wanted).c_str()) << use.component;
        EXPECT_EQ(use.encode(wide.c_str()), output);
    }
}

TEST(UrlEncode, RandomTextsAgreeWithTheReference) {
    test::PageEdge<char> edge(4096);
    BaseString<char> output;
    test::forEachRandomInput(20000, [&](test::RandomText& random) {
        // Texts with few characters to escape, and texts with many.
        std::string text = random.from(random.oneIn(3) ? " %/\xC3~" : "abcdefghijklmnopqrstuvw/", random.below(220));
        for (std::size_t more = random.below(4); more != 0 && !text.empty(); --more) {
            text[random.below(text.size())] = random.oneOf(allBytes());
        }
        const Use& use = uses()[random.below(uses().size())];
        const char* const position = edge.placeAtEnd(std::string_view(text.c_str(), text.size() + 1));
        ASSERT_STREQ(use.encode(position, output), test::urlEncoded(text, use.rule).c_str()) << text;
    });
}

TEST(UrlEncode, FlagsAndComponentsSelectTheEscapedCharacters) {
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

TEST(UrlEncode, WideTextIsEncodedAsUtf8) {
    EXPECT_EQ(urlEncode(L"\u00E9 \U0001F600", false, true), L"%C3%A9+%F0%9F%98%80");
    EXPECT_EQ(urlEncode(L"\u00E9", false, false), L"%C3%A9");
    EXPECT_EQ(urlEncodeComponent(L"\u20AC/", UrlPathSegment), L"%E2%82%AC%2F");
    // An unpaired surrogate is encoded as a question mark.
    EXPECT_EQ(urlEncode(L"\xD800x", false, false), L"?x");
    EXPECT_EQ(urlEncode(L"\xD800x", true, false), L"%3Fx");
    EXPECT_EQ(urlEncodeComponent(L"\xDC00x", UrlPath), L"%3Fx");
    BaseString<wchar_t> output(L"old");
    expectBuffer(urlEncode(L"a b", output, false, false), output);
    EXPECT_EQ(output, L"a%20b");
    expectBuffer(urlEncodeComponent(L"a b", output, UrlQuery), output);
    EXPECT_EQ(output, L"a+b");
}

template <class T>
class UrlOfNullOrEmptyText : public ::testing::Test {};
TYPED_TEST_SUITE(UrlOfNullOrEmptyText, test::CharacterTypes, test::CharacterNames);

TYPED_TEST(UrlOfNullOrEmptyText, IsAnEmptyText) {
    const std::basic_string<TypeParam> empty;
    const auto old = test::text<TypeParam>("old");
    for (const TypeParam* text : {empty.c_str(), static_cast<const TypeParam*>(nullptr)}) {
        BaseString<TypeParam> output;
        for (const Use& use : uses()) {
            output = old.c_str();
            expectBuffer(use.encode(text, output), output);
            EXPECT_EQ(*output.c_str(), TypeParam{0});
            EXPECT_TRUE(output.empty());
            EXPECT_TRUE(use.encode(text).empty());
            BaseString<TypeParam> none;
            EXPECT_EQ(use.encode(text, none), nullptr);
        }
        output = old.c_str();
        expectBuffer(urlDecode(text, output, 0), output);
        EXPECT_EQ(*output.c_str(), TypeParam{0});
        EXPECT_TRUE(output.empty());
        EXPECT_TRUE(urlDecode(text).empty());
        BaseString<TypeParam> none;
        EXPECT_EQ(urlDecode(text, none, 1), nullptr);
    }
}

/// The input is the whole text of the output or the end of this text.
TEST(UrlInPlace, InputInsideTheOutputGivesTheSameResultAsSeparateInput) {
    const std::string pattern = "a b%41+~/\xC3\xA9%zz";
    for (std::size_t length = 1; length <= 300; length += length < 20 ? 1 : 40) {
        std::string whole;
        while (whole.size() < length) {
            whole += pattern;
        }
        whole.resize(length);
        for (const std::size_t start : {std::size_t{0}, length / 3, length - 1}) {
            const std::string text = whole.substr(start);
            SCOPED_TRACE(text);
            BaseString<char> string(whole.c_str());
            expectBuffer(urlDecode(string.c_str() + start, string, 1), string);
            EXPECT_EQ(string.view(), test::urlDecoded(text, true));
            for (const Use& use : uses()) {
                string = whole.c_str();
                expectBuffer(use.encode(string.c_str() + start, string), string);
                EXPECT_EQ(string, use.encode(text.c_str()));
            }
        }
        BaseString<char> string(whole.c_str());
        EXPECT_STREQ(urlDecode(string.c_str() + length, string, 0), "") << "input at the terminator";
    }
}

struct DecodeRow {
    std::string_view text;
    int flags;
    std::string_view decoded;
};

TEST(UrlDecode, DecodesOnlyCompleteEscapes) {
    for (const DecodeRow& row :
         {DecodeRow{"%41%4g%", 0, "A%4g%"}, DecodeRow{"a+b", 0, "a+b"}, DecodeRow{"a+b", 1, "a b"},
          DecodeRow{"a+b", 2, "a+b"}, DecodeRow{"a+b", 3, "a b"}, DecodeRow{"a+b", -2, "a+b"},
          DecodeRow{"a+b", -1, "a b"}, DecodeRow{"%4", 0, "%4"}, DecodeRow{"%", 0, "%"}, DecodeRow{"%41", 0, "A"},
          DecodeRow{"x%4a", 0, "xJ"}, DecodeRow{"%%41", 0, "%A"}, DecodeRow{"%4%41", 0, "%4A"},
          DecodeRow{"%2541", 0, "%41"}, DecodeRow{"%2B+", 1, "+ "}, DecodeRow{"%g1%1g", 0, "%g1%1g"},
          DecodeRow{"%C3%a9", 0, "\xC3\xA9"},
          DecodeRow{"0123456789abcdef%410123456789abcdefg", 0, "0123456789abcdefA0123456789abcdefg"}}) {
        BaseString<char> output("old");
        expectBuffer(urlDecode(std::string(row.text).c_str(), output, row.flags), output);
        EXPECT_EQ(output, std::string(row.decoded).c_str()) << row.text;
        BaseString<wchar_t> wide(L"old");
        expectBuffer(urlDecode(test::text<wchar_t>(row.text).c_str(), wide, row.flags), wide);
        EXPECT_EQ(wide, row.decoded == "\xC3\xA9" ? L"\u00E9" : test::text<wchar_t>(row.decoded).c_str()) << row.text;
    }
    EXPECT_EQ(urlDecode("%41+"), "A+");
    EXPECT_EQ(urlDecode(L"%C3%A9+"), L"\u00E9+");
}

TEST(UrlDecode, EveryPairOfBytesAfterThePercentSignAgreesWithTheReference) {
    BaseString<char> output;
    for (const char high : allBytes()) {
        for (const char low : allBytes()) {
            const std::string text = {'a', '%', high, low, 'z'};
            urlDecode(text.c_str(), output, 0);
            ASSERT_EQ(output.view(), test::urlDecoded(text, false)) << text;
        }
    }
}

TEST(UrlDecode, EscapedZeroEndsOnlyWideText) {
    BaseString<char> output;
    urlDecode("a%00b", output, 0);
    EXPECT_EQ(output.view(), std::string_view("a\0b", 3));
    BaseString<wchar_t> wide;
    urlDecode(L"a%00b", wide, 0);  // the conversion from UTF-8 ends at the zero
    EXPECT_EQ(wide.view(), L"a");
}

TEST(UrlDecode, BytesFromWideTextAreConvertedFromUtf8) {
    BaseString<wchar_t> output;
    expectBuffer(urlDecode(L"%E2%82%AC%41", output, 0), output);
    EXPECT_EQ(output, L"\u20ACA");
    expectBuffer(urlDecode(L"a+%2B", output, 1), output);
    EXPECT_EQ(output, L"a +");
    EXPECT_EQ(urlDecode(L"%ED%A0%80"), L"\xD800");
    // The conversion from UTF-8 throws if a sequence begins with a byte that is not a lead byte. The last message of
    // its exception contains the decoded bytes. The C runtime converts this message to wide text by the current locale,
    // so the test does not compare its text.
    try {
        urlDecode(L"%80%41b", output, 0);
        ADD_FAILURE() << "nothing was thrown";
    } catch (const vorel::Exception& e) {
        const std::vector<std::wstring> messages = test::messagesOf(e);
        ASSERT_EQ(messages.size(), 3u);
        EXPECT_EQ(messages[0], L"Error converting UTF-8 character (Hex string: 41-62)");
        EXPECT_EQ(messages[1], L"vorel::util::ConvertUTF8toString: Vorel exception rethrown");
        EXPECT_FALSE(messages[2].empty());
    }
    EXPECT_THROW(urlDecode(L"%80"), vorel::Exception);
}

/// Fills blocks of the heap with lead bytes, and frees the blocks. So memory that is allocated later does not contain
/// zeros by chance.
void dirtyFreeBlocks() {
    std::vector<std::string> blocks;
    for (std::size_t size = 16; size <= 4096; size += size / 16) {
        blocks.resize(blocks.size() + 50, std::string(size, '\xF0'));
    }
}

/// Trailing bytes are not checked. If the text ends within a sequence, the missing trailing bytes are decoded as zeros.
TEST(UrlDecode, BytesFromWideTextMayEndWithinASequence) {
    struct Row {
        const wchar_t* text;
        std::wstring decoded;
    };
    for (const Row& row :
         {Row{L"%C3", L"\xC0"}, Row{L"caf%E9", L"caf\x9000"}, Row{L"%E2%82", L"\x2080"},
          Row{L"%F0", std::wstring(1, L'\0')}, Row{L"%F0%9F", L"\xD83C\xDC00"}, Row{L"%F0%9F%98", L"\xD83D\xDE00"},
          Row{L"%FE", L"\xE5C0\xDC00"}, Row{L"%FD", L"\xD7C0\xDC00"}, Row{L"%FD%BF%BF%BF%BF", L"\xA7BF\xDFC0"},
          // An escaped zero can also be a trailing byte.
          Row{L"%C3%00b", L"\xC0"
                          L"b"},
          Row{L"%C3%00%C3", L"\xC0\xC0"}}) {
        for (const std::size_t before : {0u, 1u, 11u, 12u, 60u, 250u, 499u}) {
            SCOPED_TRACE(testing::Message() << before << " letters before the escapes");
            dirtyFreeBlocks();
            BaseString<wchar_t> output;
            urlDecode((std::wstring(before, L'a') + row.text).c_str(), output, 0);
            EXPECT_EQ(output.view(), std::wstring(before, L'a') + row.decoded) << row.text;
        }
    }
}

/// The conversion from UTF-8 writes blocks of 450 units. If it fails, the output contains the blocks before the
/// failure.
TEST(UrlDecode, FailureForWideTextLeavesTheCompleteBlocksBeforeIt) {
    for (const auto& [before, kept] : {std::pair{0u, 0u}, {449u, 0u}, {450u, 450u}, {899u, 450u}, {1000u, 900u}}) {
        for (const unsigned int capacity : {0u, 16u, 5000u}) {
            BaseString<wchar_t> output;
            output.reserve(capacity, true);
            output = L"old";
            EXPECT_THROW(urlDecode((std::wstring(before, L'a') + L"%80b").c_str(), output, 0), vorel::Exception);
            EXPECT_EQ(output.view(), std::wstring(kept, L'a'));
        }
    }
}

TEST(UrlDecode, RandomTextsAgreeWithTheReference) {
    test::PageEdge<char> edge(4096);
    test::forEachRandomInput(30000, [&](test::RandomText& random) {
        std::string text;
        while (random.below(6) != 0) {
            text += random.from("abcdefgh/+", random.below(30));
            text += random.from("%0123456789abcdefABCDEFg", random.below(6));
        }
        const bool plus = random.oneIn(2);
        BaseString<char> output;
        urlDecode(edge.placeAtEnd(std::string_view(text.c_str(), text.size() + 1)), output, plus ? 1 : 0);
        ASSERT_EQ(output.view(), test::urlDecoded(text, plus)) << text;
    });
}

TEST(UrlDecode, ReversesUrlEncode) {
    test::forEachRandomInput(10000, [&](test::RandomText& random) {
        std::string text = random.from(allBytes(), random.below(80));
        const bool plus = random.oneIn(2);
        BaseString<char> output;
        urlDecode(urlEncode(text.c_str(), true, plus).c_str(), output, plus ? 1 : 0);
        ASSERT_EQ(output.view(), text);
        urlDecode(urlEncodeComponent(text.c_str(), UrlQueryParameter).c_str(), output, 1);
        ASSERT_EQ(output.view(), text);
    });
}

}  // namespace
