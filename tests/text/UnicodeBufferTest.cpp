#include <algorithm>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "support/PageEdge.h"
#include "support/Utf8Reference.h"
#include "vorel/text/Unicode.h"

namespace {

using vorel::util::ConvertUTF8toString;

constexpr wchar_t kGuard = L'\x5A5A';
constexpr std::size_t kGuards = 24;

const unsigned char* bytesOf(const std::string& text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

/// The result of a call, and the content of the buffer and of the guard units after the buffer.
struct Filled {
    bool done;
    std::wstring buffer;

    friend bool operator==(const Filled&, const Filled&) = default;
    friend std::ostream& operator<<(std::ostream& out, const Filled& filled) {
        return out << (filled.done ? "done " : "failed ") << testing::PrintToString(filled.buffer);
    }
};

/// The expected result: `written`, then unchanged units up to the end of the guard units.
Filled restUnchanged(bool done, const std::wstring& written, std::size_t size) {
    return {done, written + std::wstring(size + kGuards - written.size(), kGuard)};
}

Filled fill(const std::string& text, unsigned int size, int length = -1) {
    const std::string input = text + std::string(6, '\0');
    std::wstring buffer(size + kGuards, kGuard);
    const bool done = ConvertUTF8toString(buffer.data(), size, bytesOf(input), length, false);
    return {done, buffer};
}

/// The expected result: characters are written while all their units and a terminator fit.
Filled expectedFill(const std::string& text, unsigned int size, int length = -1) {
    const test::DecodedText decoded = test::decodeUtf8(text + std::string(6, '\0'), length);
    std::size_t used = 0;
    for (const std::size_t units : decoded.unitsOf) {
        if (used + units + 1 > size) {
            return restUnchanged(true, decoded.units.substr(0, used) + L'\0', size);
        }
        used += units;
    }
    return decoded.error ? restUnchanged(false, decoded.units, size) : restUnchanged(true, decoded.units + L'\0', size);
}

TEST(UnicodeBuffer, ValidTextIsTerminatedAndItsPairsAreNeverSplit) {
    const std::wstring zero(1, L'\0');
    struct Case {
        std::string bytes;
        unsigned int size;
        std::wstring written;
        const char* why;
    };
    const Case cases[] = {
        {"abc", 1, zero, "capacity for the terminator only"},
        {"", 1, zero, "empty text"},
        {"abc", 2, L"a" + zero, "no unit left for b: b and c are dropped"},
        {"abc", 4, L"abc" + zero, "exact size"},
        {"abc", 9, L"abc" + zero, "nothing is written after the terminator"},
        {"a\xF0\x9F\x98\x80z", 2, L"a" + zero, "no unit left for the pair: the pair and z are dropped"},
        {"a\xF0\x9F\x98\x80z", 3, L"a" + zero, "one unit left for the pair: the pair and z are dropped"},
        {"a\xF0\x9F\x98\x80z", 4, L"a\xD83D\xDE00" + zero, "both units of the pair fit, z is dropped"},
        {"\xF0\x9F\x98\x80", 1, zero, "pair first, no unit left"},
        {"\xF0\x9F\x98\x80", 2, zero, "pair first, one unit left"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(fill(c.bytes, c.size), restUnchanged(true, c.written, c.size)) << c.why;
    }
}

TEST(UnicodeBuffer, AgreesWithTheReferenceForEverySize) {
    const std::string texts[] = {
        "",
        "plain ASCII that is longer than two blocks of sixteen bytes",
        "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\xED\xA0\x80\xFD\x80\x80\x80\x80\x80 mixed \xF0\x9F\x98\x80 text",
        "\xF0\x9F\x98\x80\xF0\x9F\x98\x81\xF0\x9F\x98\x82\xF0\x9F\x98\x83",
        "an error after some text: \xFF and more",
        "a pair, then an error \xF0\x9F\x98\x80\x80",
        std::string(470, 'x') + "\xF0\x9F\x98\x80" + std::string(500, 'y'),
    };
    for (const std::string& text : texts) {
        for (unsigned int size = 1; size <= text.size() + 2; ++size) {
            ASSERT_EQ(fill(text, size), expectedFill(text, size))
                << testing::PrintToString(text) << " in a buffer of " << size;
        }
        for (int length = 0; length <= static_cast<int>(text.size()); ++length) {
            const auto enough = static_cast<unsigned int>(text.size()) + 2;
            ASSERT_EQ(fill(text, enough, length), expectedFill(text, enough, length)) << "bound " << length;
        }
    }
}

TEST(UnicodeBuffer, SizeZeroWritesNothing) {
    EXPECT_EQ(fill("", 0), restUnchanged(true, L"", 0));
    EXPECT_EQ(fill("abc", 0), restUnchanged(true, L"", 0));
    EXPECT_EQ(fill("\xF0\x9F\x98\x80", 0), restUnchanged(true, L"", 0));
}

TEST(UnicodeBuffer, FailureLeavesTheTextBeforeItWithoutATerminator) {
    EXPECT_EQ(fill("abc\x80z", 9), restUnchanged(false, L"abc", 9));
    EXPECT_EQ(fill("\xF1", 9), restUnchanged(false, L"", 9));
}

TEST(UnicodeBuffer, InvalidByteAfterTheLastUnitThatFitsIsAFailure) {
    struct Case {
        std::string bytes;
        unsigned int size;
        bool done;
        const char* why;
    };
    const Case cases[] = {
        {"ab\x80", 3, false, "the invalid byte follows the last unit that fits"},
        {"abc\x80", 3, true, "a character before the invalid byte does not fit"},
        {"\x80", 1, false, "capacity for the terminator only"},
        {"a\xF0\x9F\x98\x80\x80", 3, true, "a pair before the invalid byte does not fit"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(fill(c.bytes, c.size).done, c.done) << c.why;
        EXPECT_EQ(fill(c.bytes, c.size), expectedFill(c.bytes, c.size)) << c.why;
    }
}

TEST(UnicodeBuffer, NullInputGivesAnEmptyText) {
    std::wstring buffer(4, kGuard);
    EXPECT_TRUE(ConvertUTF8toString(buffer.data(), 4, nullptr, -1, true));
    EXPECT_EQ(buffer, std::wstring(1, L'\0') + std::wstring(3, kGuard));
}

TEST(UnicodeBuffer, WritesNothingBeyondTheSize) {
    test::PageEdge<wchar_t> edge(4096);
    const std::string text = std::string(37, 'x') + "\xF0\x9F\x98\x80" + std::string(37, 'y');
    for (unsigned int size = 1; size <= text.size(); ++size) {
        wchar_t* buffer = edge.lastElements(size);
        ASSERT_TRUE(ConvertUTF8toString(buffer, size, bytesOf(text), -1, true)) << size;
        const std::wstring expected = expectedFill(text, size).buffer;
        ASSERT_TRUE(std::equal(buffer, std::find(buffer, buffer + size, L'\0') + 1, expected.begin())) << size;
    }
}

}  // namespace
