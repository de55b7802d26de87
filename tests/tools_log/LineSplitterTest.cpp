#include "vorellog/LineSplitter.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using ::testing::ElementsAre;
using vorellog::Line;
using vorellog::LineEnd;
using vorellog::LineSplitter;
using Texts = std::vector<std::string>;

/// The delivered pieces of lines. A leading "+" marks a piece that continues a line. A trailing "~" marks a piece after
/// which the line continues, and a trailing "!" a line that the end of the file cuts.
class Delivered {
public:
    LineSplitter splitter{[this](const Line& line) {
        const char* const end = line.end == LineEnd::Feed ? "" : line.end == LineEnd::File ? "!" : "~";
        lines.push_back((line.begins ? "" : "+") + std::string(line.text) + end);
    }};
    Texts lines;
};

TEST(LineSplitterTest, LinesAreIndependentOfBlockBoundaries) {
    const std::string bytes = "one\r\ntwo\n\r\n\nthree\r\r\nfo\rur\r\nrest";
    for (std::size_t first = 0; first <= bytes.size(); ++first) {
        for (std::size_t second = first; second <= bytes.size(); ++second) {
            Delivered delivered;
            delivered.splitter.add(std::string_view(bytes).substr(0, first));
            delivered.splitter.add(std::string_view(bytes).substr(first, second - first));
            delivered.splitter.add(std::string_view(bytes).substr(second));
            EXPECT_TRUE(delivered.splitter.isWithinLine());
            delivered.splitter.endOfFile();
            EXPECT_FALSE(delivered.splitter.isWithinLine());
            ASSERT_THAT(delivered.lines, ElementsAre("one", "two", "", "", "three", "fo\rur", "rest!"))
                << first << ", " << second;
        }
    }
}

TEST(LineSplitterTest, EndOfFileAfterACompleteLineDeliversNothing) {
    Delivered delivered;
    delivered.splitter.add("one\r\n");
    delivered.splitter.endOfFile();
    delivered.splitter.endOfFile();
    EXPECT_THAT(delivered.lines, ElementsAre("one"));
}

TEST(LineSplitterTest, EndOfFileSeparatesTheLinesOfTwoFiles) {
    Delivered delivered;
    delivered.splitter.add("half");
    delivered.splitter.endOfFile();
    delivered.splitter.add("whole\n");
    EXPECT_THAT(delivered.lines, ElementsAre("half!", "whole"));
}

TEST(LineSplitterTest, LongLinesAreDeliveredInPieces) {
    constexpr std::size_t kMax = LineSplitter::kMaxPieceBytes;
    struct Case {
        std::size_t size;
        std::vector<std::size_t> pieces;  ///< the last piece ends the line
    };
    const Case cases[] = {{kMax - 1, {kMax - 1}},
                          {kMax, {kMax}},
                          {kMax + 1, {kMax, 1}},
                          {2 * kMax, {kMax, kMax}},
                          {2 * kMax + 5, {kMax, kMax, 5}}};
    for (const std::size_t block : {kMax / 3, kMax, 5 * kMax}) {
        for (const Case& c : cases) {
            std::string text(c.size, 'x');
            for (std::size_t at = 0; at < text.size(); at += 1000) {
                text[at] = static_cast<char>('a' + at / 1000 % 26);
            }
            std::vector<std::size_t> pieces;
            std::string whole;
            bool endedWell = false;
            LineSplitter splitter([&](const Line& line) {
                EXPECT_EQ(line.begins, pieces.empty());
                EXPECT_FALSE(endedWell);
                endedWell = line.end == LineEnd::Feed;
                pieces.push_back(line.text.size());
                whole += line.text;
            });
            const std::string bytes = text + "\r\n";
            for (std::size_t at = 0; at < bytes.size(); at += block) {
                splitter.add(std::string_view(bytes).substr(at, block));
            }
            EXPECT_TRUE(endedWell);
            EXPECT_EQ(whole.substr(0, text.size()), text);
            if (c.size % kMax != 0) {  // otherwise the carriage return may be an additional piece
                EXPECT_EQ(pieces, c.pieces) << c.size << " bytes in blocks of " << block;
            }
        }
    }
}

}  // namespace
