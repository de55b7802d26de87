#include <string>

#include <gtest/gtest.h>

#include "support/PageEdge.h"
#include "support/Utf8Reference.h"
#include "vorel/text/Unicode.h"

namespace {

using vorel::Array;
using vorel::BaseString;
using vorel::util::ContainsUnicode;
using vorel::util::ConvertStringtoUTF8;
using vorel::util::ConvertUCStoUTF8;
using vorel::util::EncodeAndAppendToBuffer;

using ByteArray = Array<unsigned char>;

std::string textOf(const ByteArray& bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

ByteArray arrayOf(const std::string& bytes) {
    ByteArray array;
    array.append(reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<unsigned int>(bytes.size()));
    return array;
}

/// Converts with both overloads to outputs with previous content. The results must be equal.
std::string encoded(const std::wstring& text, int length = -1) {
    ByteArray array = arrayOf("previous content");
    ConvertStringtoUTF8(text.c_str(), array, false, length);
    BaseString<char> string("previous content");
    ConvertStringtoUTF8(text.c_str(), string, length);
    EXPECT_EQ(string.view(), textOf(array)) << "overload for strings";
    return textOf(array);
}

TEST(UnicodeEncoding, SingleValueHasOneToSixBytes) {
    struct Case {
        unsigned int value;
        std::string bytes;
    };
    const Case cases[] = {
        {0x00, std::string(1, '\0')},
        {0x7F, "\x7F"},
        {0x80, "\xC2\x80"},
        {0xE9, "\xC3\xA9"},
        {0x7FF, "\xDF\xBF"},
        {0x800, "\xE0\xA0\x80"},
        {0xD800, "\xED\xA0\x80"},
        {0xFFFF, "\xEF\xBF\xBF"},
        {0x10000, "\xF0\x90\x80\x80"},
        {0x1FFFFF, "\xF7\xBF\xBF\xBF"},
        {0x200000, "\xF8\x88\x80\x80\x80"},
        {0x3FFFFFF, "\xFB\xBF\xBF\xBF\xBF"},
        {0x4000000, "\xFC\x84\x80\x80\x80\x80"},
        {0x7FFFFFFF, "\xFD\xBF\xBF\xBF\xBF\xBF"},
        {0x80000000, ""},
        {0xFFFFFFFF, ""},
    };
    for (const Case& c : cases) {
        std::string bytes(8, '\x5A');
        ASSERT_EQ(ConvertUCStoUTF8(c.value, bytes.data(), 6), static_cast<int>(c.bytes.size())) << std::hex << c.value;
        EXPECT_EQ(bytes, c.bytes + std::string(8 - c.bytes.size(), '\x5A')) << std::hex << c.value;
    }
}

TEST(UnicodeEncoding, SingleValueIsWrittenRegardlessOfTheGivenSize) {
    for (const int size : {-1, 0, 1, 100}) {
        char bytes[6] = {};
        EXPECT_EQ(ConvertUCStoUTF8(0x20AC, bytes, size), 3);
        EXPECT_EQ(std::string(bytes, 3), "\xE2\x82\xAC");
    }
    EXPECT_EQ(ConvertUCStoUTF8(0x41, nullptr, 6), 0);
    EXPECT_EQ(ConvertUCStoUTF8(0x80000000, nullptr, 6), 0);
}

TEST(UnicodeEncoding, PairsAreJoinedAndUnpairedSurrogatesReplaced) {
    struct Case {
        std::wstring units;
        std::string bytes;
    };
    const Case cases[] = {
        {L"", ""},
        {L"A\x7F\x80\x7FF\x800\xFFFF", "A\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF"},
        {L"\xD83D\xDE00", "\xF0\x9F\x98\x80"},
        {L"\xD800\xDC00\xDBFF\xDFFF", "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"},
        {L"\xD800"
         L"A",
         "?A"},
        {L"\xDC00"
         L"A",
         "?A"},
        {L"\xDFFF\xD800", "??"},
        {L"\xD800\xD800\xDC00", "?\xF0\x90\x80\x80"},
        {L"\xD800\xDC00\xDC00", "\xF0\x90\x80\x80?"},
        {L"A\xDBFF", "A?"},
        {L"\xD7FF\xE000", "\xED\x9F\xBF\xEE\x80\x80"},
        {L"\xFEFF"
         L"A",
         "\xEF\xBB\xBF"
         "A"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(encoded(c.units), c.bytes) << testing::PrintToString(c.units);
    }
}

TEST(UnicodeEncoding, PairMayExceedTheLength) {
    struct Case {
        std::wstring units;
        int length;
        std::string bytes;
        const char* why;
    };
    const Case cases[] = {
        {L"abc", 0, "", "bound of 0"},
        {L"abc", 2, "ab", "bound within the text"},
        {L"abc", 100, "abc", "a zero ends the text before the bound"},
        {L"abc", -1, "abc", "no bound"},
        {L"abc", -2147483647 - 1, "abc", "any negative length means unbounded"},
        {std::wstring(L"a\0b", 3), 3, "a", "a zero ends the text within the bound"},
        {L"\xD83D\xDE00z", 1, "\xF0\x9F\x98\x80", "a pair that starts at the last unit is encoded as a pair"},
        {L"a\xD83D\xDE00z", 2, "a\xF0\x9F\x98\x80", "a pair at the bound, after another character"},
        {L"a\xD83Dz", 2, "a?", "unpaired high surrogate as last unit"},
        {L"a\xDE00z", 2, "a?", "unpaired low surrogate as last unit"},
        {L"\xD83D\xDE00z", 2, "\xF0\x9F\x98\x80", "a pair counts as two units; the bound is after the pair"},
        {L"\xD83D\xDE00z", 3, "\xF0\x9F\x98\x80z", "a pair counts as two units; the bound is after z"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(encoded(c.units, c.length), c.bytes) << c.why;
    }
}

TEST(UnicodeEncoding, AppendedZeroByteIsPartOfTheArray) {
    ByteArray bytes;
    ConvertStringtoUTF8(L"\xD800"
                        L"A",
                        bytes, true, -1);
    EXPECT_EQ(textOf(bytes), std::string("?A\0", 3));
    ConvertStringtoUTF8(L"", bytes, true, -1);
    EXPECT_EQ(textOf(bytes), std::string(1, '\0'));
    ConvertStringtoUTF8(L"abc", bytes, true, 0);
    EXPECT_EQ(textOf(bytes), std::string(1, '\0'));
    ConvertStringtoUTF8(std::wstring(500, L'x').c_str(), bytes, true, -1);
    EXPECT_EQ(textOf(bytes), std::string(500, 'x') + '\0');
}

TEST(UnicodeEncoding, NullGivesAnEmptyOutput) {
    ByteArray bytes = arrayOf("before");
    ConvertStringtoUTF8(nullptr, bytes, true, -1);
    EXPECT_EQ(bytes.size(), 0u) << "no zero byte may be appended";
    BaseString<char> string("before");
    ConvertStringtoUTF8(nullptr, string, -1);
    EXPECT_TRUE(string.empty());
}

TEST(UnicodeEncoding, CharactersNearBlockBoundariesAgreeWithTheReference) {
    for (std::size_t count = 240; count < 262; ++count) {
        for (const std::size_t blocks : {0u, 1u, 3u}) {
            const std::wstring text = std::wstring(256 * blocks + count, L'x') + L"\xE9\x20AC\xD83D\xDE00" +
                                      std::wstring(30, L'\x20AC') + L"\xD83D";
            ASSERT_EQ(encoded(text), test::encodeUtf16(text, -1).bytes)
                << count << " units after " << blocks << " blocks";
        }
    }
}

TEST(UnicodeEncoding, SlotsAfterTheCountAreZeroInAReusedArray) {
    ByteArray bytes = arrayOf(std::string(600, '\xAA'));
    ConvertStringtoUTF8(L"ab", bytes, false, -1);
    ASSERT_EQ(textOf(bytes), "ab");
    bytes.setCount(600);
    EXPECT_EQ(textOf(bytes), "ab" + std::string(598, '\0'));
}

/// The encoder stores whole vectors, so it writes past the result into unused slots. These slots must be zero after the
/// call.
TEST(UnicodeEncoding, SlotsAfterTheCountStayZeroInAReservedArray) {
    const std::wstring mixed = std::wstring(9, L'\x20AC') + L"ab\xE9\xE9xyz\xE9qrs";
    const std::wstring texts[] = {mixed, std::wstring(70, L'a') + mixed, std::wstring(41, L'\xE9'),
                                  mixed + mixed + L'a'};
    constexpr unsigned int kSlots = 600;
    const auto expectZerosAfter = [](ByteArray& bytes, const std::string& result) {
        ASSERT_EQ(textOf(bytes), result);
        bytes.setCount(bytes.allocated());
        EXPECT_EQ(textOf(bytes), result + std::string(bytes.size() - result.size(), '\0'));
    };
    for (const std::wstring& text : texts) {
        SCOPED_TRACE(testing::PrintToString(text));
        ByteArray replaced;
        replaced.reserve(kSlots, true);
        ConvertStringtoUTF8(text.c_str(), replaced, false, -1);
        expectZerosAfter(replaced, test::encodeUtf16(text + L'\0', -1).bytes);
        ByteArray appended = arrayOf("kept");
        appended.reserve(kSlots, true);
        EncodeAndAppendToBuffer(text.c_str(), appended);
        expectZerosAfter(appended, "kept" + test::encodeUnits(text));
    }
}

TEST(UnicodeEncoding, ReadsNothingPastTheEnd) {
    struct Case {
        std::wstring units;
        int length;
    };
    const std::wstring zero(1, L'\0');
    const Case cases[] = {
        {L"", 0},
        {L"a", 1},
        {L"a" + zero, -1},
        {L"a" + zero, 70},
        {L"\xD83D\xDE00", 1},
        {L"\xD83D\xDE00", 2},
        {L"\xD83D" + zero, -1},
        {L"\xDE00", 1},
        {std::wstring(32, L'a'), 32},
        {std::wstring(33, L'a'), 33},
        {std::wstring(64, L'a'), 64},
        {std::wstring(96, L'\xE9'), 96},
        {std::wstring(300, L'\x20AC') + zero, -1},
    };
    test::PageEdge<wchar_t> edge(4096);
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.units));
        ByteArray bytes;
        ConvertStringtoUTF8(edge.placeAtEnd(c.units), bytes, false, c.length);
        EXPECT_EQ(textOf(bytes), test::encodeUtf16(c.units, c.length).bytes);
    }
}

TEST(UnicodeEncoding, EncodeAndAppend_AppendsToThePreviousBytes) {
    ByteArray bytes = arrayOf("before ");
    EncodeAndAppendToBuffer(L"\xE9", bytes);
    EncodeAndAppendToBuffer(L"", bytes);
    EncodeAndAppendToBuffer(nullptr, bytes);
    EncodeAndAppendToBuffer(L"z", bytes);
    EXPECT_EQ(textOf(bytes), "before \xC3\xA9z") << "no terminator may be appended";
}

TEST(UnicodeEncoding, EncodeAndAppend_EncodesSurrogatesSeparately) {
    ByteArray bytes;
    EncodeAndAppendToBuffer(L"\xD83D\xDE00", bytes);
    EXPECT_EQ(textOf(bytes), "\xED\xA0\xBD\xED\xB8\x80");
    EncodeAndAppendToBuffer(L"\xD800", bytes);
    EXPECT_EQ(textOf(bytes), "\xED\xA0\xBD\xED\xB8\x80\xED\xA0\x80") << "unpaired surrogates must not be replaced";
}

TEST(UnicodeEncoding, EncodeAndAppend_CharactersNearBlockBoundariesAgreeWithTheReference) {
    for (std::size_t count = 236; count < 256; ++count) {
        const std::wstring text = std::wstring(count, L'x') + L"\xE9\x20AC\xD83D\xDE00" + std::wstring(300, L'\xDC00');
        ByteArray bytes = arrayOf("kept");
        EncodeAndAppendToBuffer(text.c_str(), bytes);
        ASSERT_EQ(textOf(bytes), "kept" + test::encodeUnits(text)) << count;
    }
}

TEST(UnicodeEncoding, ContainsUnicode_DetectsUnitsFrom128) {
    struct Case {
        const wchar_t* text;
        bool answer;
    };
    static constexpr Case kCases[] = {
        {L"", false},
        {L"plain ASCII", false},
        {L"\x7F", false},
        {L"\x80", true},
        {L"\xFF", true},
        {L"\xD800", true},
        {L"\xFFFF", true},
        {L"ends in \x100", true},
        {L"\x100 starts", true},
        {L"in \xE9 between", true},
    };
    for (const Case& c : kCases) {
        EXPECT_EQ(ContainsUnicode(BaseString<wchar_t>(c.text)), c.answer) << testing::PrintToString(c.text);
    }
    EXPECT_FALSE(ContainsUnicode(BaseString<wchar_t>())) << "string without memory";
    EXPECT_TRUE(ContainsUnicode(BaseString<wchar_t>(L"a\0\xE9", 3))) << "a zero must not end the string";
}

}  // namespace
