/// \file
/// The rendered line of the log. ErrorLogTest.cpp tests the header of the line. tests/allocation tests lines that are
/// rendered in several pieces because an allocation failed.

#include "exceptions/LogLine.h"

#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "support/ImportHook.h"

namespace {

using vorel::detail::LogLine;

TEST(LogLine, IsRenderedAsOnePieceOnTheStackOrOnTheHeap) {
    struct Message {
        const wchar_t* unit;
        const char* utf8;
    };
    // The buffer on the stack has 1024 bytes; the header takes about 50 of them.
    for (const Message& message : {Message{L"m", "m"}, Message{L"\x20AC", "\xE2\x82\xAC"}}) {
        for (const std::size_t units : {0u, 1u, 300u, 320u, 330u, 340u, 400u, 960u, 1100u, 5000u}) {
            for (const std::size_t prefixBytes : {0u, 6u, 900u, 960u, 1000u, 1022u, 1023u, 1024u, 3000u}) {
                const std::string prefix(prefixBytes, 'p');
                std::wstring text;
                std::string expected = ": " + prefix;
                for (std::size_t unit = 0; unit != units; ++unit) {
                    text += message.unit;
                    expected += message.utf8;
                }
                expected += '\n';
                LogLine line(prefix.c_str(), text.c_str(), false);
                const std::string piece = line.piece();
                EXPECT_EQ(piece.front(), '[');
                EXPECT_TRUE(piece.ends_with(expected))
                    << units << " units after a prefix of " << prefixBytes << " bytes";
                EXPECT_LT(piece.size() - expected.size(), 70u);
                EXPECT_FALSE(line.next());
            }
        }
    }
}

// A piece has a limit, because the runtime prints at most INT_MAX bytes of a text. The limit is only 16 MiB, to save
// memory.
TEST(LogLine, IsRenderedInPiecesAbove16Mebibytes) {
    constexpr std::size_t kMaxPiece = std::size_t{16} << 20;
    const std::wstring text((kMaxPiece + 100) / 3, L'\x20AC');
    std::string expected = ": P";
    for (std::size_t unit = 0; unit != text.size(); ++unit) {
        expected += "\xE2\x82\xAC";
    }
    expected += '\n';
    LogLine line("P", text.c_str(), false);
    std::string rendered;
    int pieces = 0;
    do {
        const std::string piece = line.piece();
        EXPECT_LT(piece.size(), kMaxPiece);
        rendered += piece;
        ++pieces;
    } while (line.next());
    EXPECT_EQ(pieces, 2);
    EXPECT_TRUE(rendered.ends_with(expected));
    EXPECT_LT(rendered.size() - expected.size(), 70u);
}

TEST(LogLine, HasZeroMillisecondsIfTheClockThrows) {
    const test::ImportHook<importedGetSystemTimeAsFileTime> throwing(
        [](FILETIME*) { throw std::runtime_error("not of the library"); });
    const LogLine line("P", L"text", true);
    const std::string piece = line.piece();
    EXPECT_NE(piece.find("].000 "), std::string::npos) << piece;
    EXPECT_TRUE(piece.ends_with(": Ptext\n"));
}

}  // namespace
