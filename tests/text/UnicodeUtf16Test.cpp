#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "support/PageEdge.h"
#include "vorel/text/Unicode.h"

namespace {

using vorel::Array;
using vorel::BaseString;
using vorel::util::ConvertStringtoUTF16;
using vorel::util::ConvertUTF16toString;

const unsigned char* bytesOf(const std::string& text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

/// Reads with both overloads into outputs with previous content. The results must be equal.
std::wstring read(const std::string& bytes, int length) {
    BaseString<wchar_t> output(L"previous content");
    ConvertUTF16toString(output, bytesOf(bytes), length);
    BaseString<wchar_t> ofChars(L"previous content");
    ConvertUTF16toString(ofChars, bytes.data(), length);
    EXPECT_EQ(ofChars.view(), output.view()) << "overload for char";
    return std::wstring(output.view());
}

enum class Order { Little, Big };

std::string write(const wchar_t* text, Order order, bool appendZero, int length = -1) {
    Array<unsigned char> output;
    output.setCount(3);
    ConvertStringtoUTF16(text, output, order == Order::Little, appendZero, length);
    return {reinterpret_cast<const char*>(output.data()), output.size()};
}

TEST(UnicodeUtf16, ReadsLittleEndianUnits) {
    struct Case {
        std::string bytes;
        int length;
        std::wstring units;
        const char* why;
    };
    const Case cases[] = {
        {std::string("A\0", 2), 2, L"A", "one unit"},
        {std::string("A\0\xE9\0", 4), 4, L"A\xE9", "two units"},
        {std::string("\xAC\x20", 2), 2, L"\x20AC", "low byte first"},
        {std::string("A\0B", 3), 3, L"A", "an extra byte is ignored"},
        {std::string("A\0B\0", 4), 1, L"", "half a unit is ignored"},
        {std::string("A\0B\0", 4), 0, L"", "length 0"},
        {std::string("A\0\0\0B\0", 6), 6, L"A", "a zero unit ends the text"},
        {std::string("\0\0A\0", 4), 4, L"", "zero unit first"},
        {std::string("\0A\0B", 4), 4, L"\x4100\x4200", "a zero byte is not a zero unit"},
        {std::string("\xFF\xFE"
                     "A\0",
                     4),
         4,
         L"\xFEFF"
         L"A",
         "a byte-order mark is part of the text"},
        {std::string("\xFE\xFF"
                     "A\0",
                     4),
         4,
         L"\xFFFE"
         L"A",
         "a byte-order mark does not change the byte order"},
        {std::string("\0\xD8"
                     "A\0",
                     4),
         4,
         L"\xD800"
         L"A",
         "an unpaired surrogate is accepted"},
        {std::string("\x3D\xD8\0\xDE", 4), 4, L"\xD83D\xDE00", "a surrogate pair stays two units"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(read(c.bytes, c.length), c.units) << c.why;
    }
}

TEST(UnicodeUtf16, ReadsAtOddAddressesAndNothingPastTheEnd) {
    test::PageEdge<char> edge(4096);
    for (const std::size_t units : {1u, 2u, 17u, 600u}) {
        std::string bytes;
        for (std::size_t unit = 0; unit < units; ++unit) {
            bytes += static_cast<char>('a' + unit % 26);
            bytes += '\x01';
        }
        for (const char* const leftOver : {"", "z"}) {
            // An extra byte after the last unit moves the text to an odd address.
            const std::string input = bytes + leftOver;
            BaseString<wchar_t> output;
            ConvertUTF16toString(output, edge.placeAtEnd(input), static_cast<int>(input.size()));
            ASSERT_EQ(output.length(), units);
            EXPECT_EQ(std::memcmp(output.c_str(), bytes.data(), bytes.size()), 0);
        }
    }
}

TEST(UnicodeUtf16, ReadsNothingPastTheZeroUnit) {
    test::PageEdge<char> edge(64);
    BaseString<wchar_t> output;
    ConvertUTF16toString(output, edge.placeAtEnd(std::string("A\0B\0\0\0", 6)), 1000);
    EXPECT_EQ(output.view(), L"AB");
}

TEST(UnicodeUtf16, ReadingNullGivesAnEmptyText) {
    for (const int length : {-1, 0, 6}) {
        BaseString<wchar_t> output(L"before");
        ConvertUTF16toString(output, static_cast<const unsigned char*>(nullptr), length);
        EXPECT_TRUE(output.empty());
        output = L"before";
        ConvertUTF16toString(output, static_cast<const char*>(nullptr), length);
        EXPECT_TRUE(output.empty());
    }
}

TEST(UnicodeUtf16, WritesBothByteOrdersWithoutAByteOrderMark) {
    struct Case {
        const wchar_t* units;
        Order order;
        bool appendZero;
        std::string bytes;
    };
    const Case cases[] = {
        {L"A", Order::Little, false, std::string("A\0", 2)},
        {L"A", Order::Big, false, std::string("\0A", 2)},
        {L"A", Order::Little, true, std::string("A\0\0\0", 4)},
        {L"A", Order::Big, true, std::string("\0A\0\0", 4)},
        {L"\x20AC\xD83D\xDE00", Order::Little, false, std::string("\xAC\x20\x3D\xD8\x00\xDE", 6)},
        {L"\x20AC\xD83D\xDE00", Order::Big, false, std::string("\x20\xAC\xD8\x3D\xDE\x00", 6)},
        {L"\xD800", Order::Big, false, std::string("\xD8\x00", 2)},
        {L"", Order::Little, false, ""},
        {L"", Order::Little, true, std::string(2, '\0')},
        {L"A\0B", Order::Little, false, std::string("A\0", 2)},
        {nullptr, Order::Little, true, ""},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(write(c.units, c.order, c.appendZero), c.bytes);
    }
}

TEST(UnicodeUtf16, WritingIgnoresTheLengthArgument) {
    for (const int length : {-1, 0, 1, 100}) {
        EXPECT_EQ(write(L"AB", Order::Little, false, length), std::string("A\0B\0", 4)) << length;
    }
}

TEST(UnicodeUtf16, WritesLongTexts) {
    const std::wstring text(3000, L'\x1234');
    std::string little;
    std::string big;
    for (std::size_t unit = 0; unit < text.size(); ++unit) {
        little += "\x34\x12";
        big += "\x12\x34";
    }
    EXPECT_EQ(write(text.c_str(), Order::Little, false), little);
    EXPECT_EQ(write(text.c_str(), Order::Big, false), big);
    EXPECT_EQ(read(little, static_cast<int>(little.size())), text);
}

}  // namespace
