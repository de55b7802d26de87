#include "algorithms/Utf8Streams.h"

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/Utf8Reference.h"

namespace {

using vorel::algorithms::BoundedCursor;
using vorel::algorithms::kLongestUtf8Sequence;
using vorel::algorithms::Surrogates;
using vorel::algorithms::Utf8Reader;
using vorel::algorithms::Utf8Writer;

const unsigned char* bytesOf(const std::string& text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

/// A text with ASCII runs of several lengths, sequences of two, three, four and six bytes, and a lead byte whose
/// sequence includes a zero.
const std::string& sampleText() {
    static const std::string kSample =
        "An ASCII run of more than sixteen bytes, \xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80 then "
        "fifteen bytes \xED\xA0\x80\xFD\x80\x80\x81\x82\x83 a\xC3" +
        std::string("\0\xC0\x80.\0\0\0\0\0\0", 10);
    return kSample;
}

/// Reads everything in pieces, and checks the size of each piece. A piece has at most `capacity` units, or at most one
/// unit more if `Rule` is `Written`.
template <Utf8Reader::LastPair Rule>
std::wstring readInPieces(Utf8Reader& reader, std::size_t capacity) {
    constexpr std::size_t kOverhang = Rule == Utf8Reader::LastPair::Written ? 1 : 0;
    std::wstring all;
    while (!reader.atEnd() && !reader.failed()) {
        std::vector<wchar_t> piece(capacity + kOverhang + 1, L'\x5A5A');
        const std::size_t units = reader.read<Rule>(piece.data(), capacity);
        EXPECT_LE(units, capacity + kOverhang);
        EXPECT_EQ(piece[capacity + kOverhang], L'\x5A5A') << "nothing may be written after the capacity";
        if (units == 0 && !reader.failed()) {
            ADD_FAILURE() << "a piece is empty before the end of the text";
            break;
        }
        all.append(piece.data(), units);
    }
    return all;
}

TEST(BoundedCursorTest, EndsAtTheBoundOrAtAZero) {
    const std::string text("ab\0c", 4);
    EXPECT_TRUE((BoundedCursor<char>(text.data(), 0).atEnd()));
    EXPECT_FALSE((BoundedCursor<char>(text.data(), 1).atEnd()));
    EXPECT_FALSE((BoundedCursor<char>(text.data(), -1).atEnd()));
    EXPECT_TRUE((BoundedCursor<char>(text.data() + 2, -1).atEnd()));
    EXPECT_TRUE((BoundedCursor<char>(text.data() + 2, 2).atEnd()));
}

TEST(BoundedCursorTest, Pass_BeyondTheBoundReachesTheEnd) {
    const std::string text = "abcdef";
    BoundedCursor<char> cursor(text.data(), 2);
    cursor.pass(5);
    EXPECT_EQ(cursor.position(), text.data() + 5);
    EXPECT_EQ(cursor.left(), 0u);
    EXPECT_TRUE(cursor.atEnd());
}

TEST(Utf8ReaderTest, Read_IsIndependentOfPieceSize) {
    const std::wstring expected = test::decodeUtf8(sampleText(), -1).units;
    for (std::size_t capacity = 1; capacity <= expected.size() + 1; ++capacity) {
        SCOPED_TRACE(capacity);
        Utf8Reader written(bytesOf(sampleText()), -1);
        EXPECT_EQ(readInPieces<Utf8Reader::LastPair::Written>(written, capacity), expected);
        if (capacity >= 2) {
            Utf8Reader left(bytesOf(sampleText()), -1);
            EXPECT_EQ(readInPieces<Utf8Reader::LastPair::Left>(left, capacity), expected);
        }
    }
}

TEST(Utf8ReaderTest, Read_NeverSplitsAPair) {
    const std::string text = "a\xF0\x9F\x98\x80z";
    wchar_t units[3] = {};

    Utf8Reader left(bytesOf(text), -1);
    EXPECT_EQ(left.read<Utf8Reader::LastPair::Left>(units, 2), 1u);
    EXPECT_EQ(left.position(), bytesOf(text) + 1);

    Utf8Reader written(bytesOf(text), -1);
    EXPECT_EQ(written.read<Utf8Reader::LastPair::Written>(units, 2), 3u);
    EXPECT_EQ(std::wstring(units, 3), L"a\xD83D\xDE00");
    EXPECT_EQ(written.position(), bytesOf(text) + 5);
}

TEST(Utf8ReaderTest, Read_StopsAtAnInvalidLeadByte) {
    for (const std::size_t capacity : {1u, 3u, 8u}) {
        const std::string text = "abc\xF1z";
        Utf8Reader reader(bytesOf(text), -1);
        EXPECT_EQ(readInPieces<Utf8Reader::LastPair::Written>(reader, capacity), L"abc");
        EXPECT_TRUE(reader.failed());
        EXPECT_EQ(reader.position(), bytesOf(text) + 3);
    }
}

TEST(Utf8ReaderTest, Read_DetectsAnInvalidByteAfterTheLastUnit) {
    const std::string text = "ab\x80";
    wchar_t units[2] = {};
    Utf8Reader reader(bytesOf(text), -1);
    EXPECT_EQ(reader.read<Utf8Reader::LastPair::Left>(units, 2), 2u);
    EXPECT_TRUE(reader.failed());
}

TEST(Utf8ReaderTest, Read_AgreesWithTheReferenceForEveryBound) {
    for (int length = 0; length <= static_cast<int>(sampleText().size()); ++length) {
        SCOPED_TRACE(length);
        Utf8Reader reader(bytesOf(sampleText()), length);
        EXPECT_EQ(readInPieces<Utf8Reader::LastPair::Written>(reader, 1000),
                  test::decodeUtf8(sampleText(), length).units);
    }
}

TEST(Utf8ReaderTest, UnitsLeft_CountsTheUnitsThatCanBeRead) {
    // The text is long enough for the vector code, and has sequences that only the scalar codec counts.
    const std::string text = sampleText().substr(0, sampleText().find('\xFD')) + std::string(200, 'a') + sampleText();
    for (int length = -1; length <= static_cast<int>(text.size()); ++length) {
        SCOPED_TRACE(length);
        Utf8Reader reader(bytesOf(text), length);
        const std::wstring expected = test::decodeUtf8(text, length).units;
        EXPECT_EQ(reader.unitsLeft(), expected.size());
        wchar_t units[5];
        const std::size_t read = reader.read<Utf8Reader::LastPair::Left>(units, 5);
        EXPECT_EQ(reader.unitsLeft(), expected.size() - read);
    }
}

/// Well-formed and ill-formed sequences at every position of a vector and across two vectors.
TEST(Utf8ReaderTest, UnitsLeft_CountsSequencesAtEveryPosition) {
    const std::string sequences[] = {"\xC3\xA9",         "\xE2\x82\xAC", "\xF0\x9F\x98\x80", "\xF0\x8F\xBF\xBF",
                                     "\xF4\x80\x80\x80", "\xC3z",        "\xE2\x82z",        "\xE2zz",
                                     "\xF0\x9F\x98z",    "\xF0\x9Fzz",   "\xF0zzz",          "\xFDzzzzz"};
    for (const std::string& first : sequences) {
        for (const std::string& second : sequences) {
            for (std::size_t position = 0; position != 70; ++position) {
                const std::string text =
                    std::string(position, 'a') + first + std::string(30, 'b') + second + std::string(100, 'c');
                ASSERT_EQ(Utf8Reader(bytesOf(text), -1).unitsLeft(), test::decodeUtf8(text + '\0', -1).units.size())
                    << testing::PrintToString(first) << " at " << position << ", " << testing::PrintToString(second);
            }
        }
    }
}

TEST(Utf8ReaderTest, UnitsLeft_StopsAtAnInvalidLeadByte) {
    for (std::size_t before = 0; before != 100; ++before) {
        const std::string text = std::string(before, 'a') + "\xC3\xA9\xF1" + std::string(100, 'a');
        EXPECT_EQ(Utf8Reader(bytesOf(text), -1).unitsLeft(), before + 1);
    }
}

/// Writes everything in pieces. The writer ends a piece as soon as the piece has at least `enough` bytes. The buffer of
/// each piece has a capacity of `enough` + `spare` bytes.
template <Surrogates Rule>
std::string writeInPieces(const std::wstring& text, int length, std::size_t enough, std::size_t spare) {
    const std::size_t capacity = enough + spare;
    Utf8Writer<Rule, wchar_t> writer(text.data(), length);
    std::string all;
    while (!writer.atEnd()) {
        std::vector<unsigned char> piece(capacity + 1, 0x5A);
        const std::size_t bytes = writer.write(piece.data(), enough, capacity);
        EXPECT_LE(bytes, capacity);
        EXPECT_EQ(piece[capacity], 0x5A) << "nothing may be written after the capacity";
        EXPECT_TRUE(bytes + kLongestUtf8Sequence > capacity || bytes >= enough || writer.atEnd())
            << "every piece except the last piece must be full";
        if (bytes == 0) {
            ADD_FAILURE() << "a piece is empty before the end of the text";
            break;
        }
        all.append(piece.begin(), piece.begin() + static_cast<std::ptrdiff_t>(bytes));
    }
    return all;
}

TEST(Utf8WriterTest, Write_IsIndependentOfPieceSize) {
    const std::wstring text = L"An ASCII run of more than sixteen units, \x00E9\x20AC\xD83D\xDE00 and \xDC00 "
                              L"fifteen units \xD800\xD800\xDC00 \xD800";
    const std::string paired = test::encodeUtf16(text, -1).bytes;
    const std::string single = test::encodeUnits(text);
    for (const std::size_t spare : {std::size_t{0}, std::size_t{kLongestUtf8Sequence} - 1, std::size_t{40}}) {
        // If `spare` is 0, a piece must have space for the longest sequence of the text.
        for (std::size_t enough = spare == 0 ? 4 : 1; enough <= single.size() + 1; ++enough) {
            SCOPED_TRACE(testing::Message() << enough << " and " << spare);
            EXPECT_EQ(writeInPieces<Surrogates::Paired>(text, -1, enough, spare), paired);
            EXPECT_EQ(writeInPieces<Surrogates::Single>(text, -1, enough, spare), single);
        }
    }
}

TEST(Utf8WriterTest, BytesLeft_CountsTheBytesThatAreWritten) {
    const std::wstring text = std::wstring(70, L'a') + L"\x00E9\x20AC\xD83D\xDE00 and \xDC00 " +
                              std::wstring(40, L'\x20AC') + L"\xD800\xD800\xDC00" + std::wstring(40, L'\xE9') +
                              L"\xD800";
    for (int length = -1; length <= static_cast<int>(text.size()); ++length) {
        SCOPED_TRACE(length);
        const Utf8Writer<Surrogates::Paired, wchar_t> paired(text.data(), length);
        EXPECT_EQ(paired.bytesLeft(), test::encodeUtf16(text, length).bytes.size());
        const std::wstring taken = length < 0 ? text : text.substr(0, static_cast<std::size_t>(length));
        const Utf8Writer<Surrogates::Single, wchar_t> single(text.data(), length);
        EXPECT_EQ(single.bytesLeft(), test::encodeUnits(taken).size());
    }
}

TEST(Utf8WriterTest, BytesLeft_CountsSequencesAtEveryPosition) {
    const std::wstring sequences[] = {L"\x00E9", L"\x20AC",       L"\xD83D\xDE00",       L"\xD83D",
                                      L"\xDE00", L"\xDE00\xD83D", L"\xD83D\xD83D\xDE00", L"\xD83D\xDE00\xDE00"};
    for (const std::wstring& first : sequences) {
        for (const std::wstring& second : sequences) {
            for (std::size_t position = 0; position != 40; ++position) {
                const std::wstring text =
                    std::wstring(position, L'a') + first + std::wstring(14, L'b') + second + std::wstring(60, L'c');
                const Utf8Writer<Surrogates::Paired, wchar_t> paired(text.data(), -1);
                ASSERT_EQ(paired.bytesLeft(), test::encodeUtf16(text + L'\0', -1).bytes.size())
                    << testing::PrintToString(first) << " at " << position << ", " << testing::PrintToString(second);
                const Utf8Writer<Surrogates::Single, wchar_t> single(text.data(), -1);
                ASSERT_EQ(single.bytesLeft(), test::encodeUnits(text).size());
            }
        }
    }
}

TEST(Utf8WriterTest, Write_StopsBeforeASequenceThatDoesNotFit) {
    const std::wstring text = L"a\x20AC"
                              L"b";
    for (const std::size_t capacity : {1u, 2u, 3u}) {
        unsigned char bytes[3] = {};
        Utf8Writer<Surrogates::Paired, wchar_t> writer(text.data(), -1);
        EXPECT_EQ(writer.write(bytes, capacity, capacity), 1u);
        EXPECT_EQ(bytes[0], 'a');
        EXPECT_FALSE(writer.atEnd());
        EXPECT_EQ(writer.write(bytes, capacity, capacity), capacity == 3 ? 3u : 0u);
    }
}

TEST(Utf8WriterTest, Write_CompletesAPairAcrossTheBound) {
    const std::wstring text = L"a\xD83D\xDE00z";
    EXPECT_EQ(writeInPieces<Surrogates::Paired>(text, 2, 100, 0), "a\xF0\x9F\x98\x80");
    EXPECT_EQ(writeInPieces<Surrogates::Paired>(text, 3, 100, 0), "a\xF0\x9F\x98\x80");
    EXPECT_EQ(writeInPieces<Surrogates::Paired>(text, 4, 100, 0), "a\xF0\x9F\x98\x80z");
}

}  // namespace
