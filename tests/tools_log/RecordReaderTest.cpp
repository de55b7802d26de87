#include "vorellog/RecordReader.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tools_log/Records.h"

namespace {

using test::header;
using test::recordsOf;
using ::testing::ElementsAre;
using vorellog::LineEnd;
using vorellog::Record;
using vorellog::RecordReader;

/// Returns "damage|text" for each record, with a leading period if the record has a header.
std::vector<std::string> shown(const std::vector<Record>& records) {
    std::vector<std::string> texts;
    for (const Record& record : records) {
        texts.push_back((record.header() ? "." : "") + std::string(nameOf(record.damage())) + "|" +
                        std::string(record.text()));
    }
    return texts;
}

class RecordReaderTest : public ::testing::Test {
protected:
    std::vector<Record> records;
    RecordReader reader{[this](const Record& record) { records.push_back(record); }};
};

TEST_F(RecordReaderTest, LinesBecomeRecords) {
    const std::string h = header();
    const std::string g = header(1);
    struct Case {
        const char* why;
        std::vector<std::string> lines;
        std::vector<std::string> records;
    };
    const Case cases[] = {
        {"one line per record", {h + "WARN: a", g + "WARN: b"}, {".|" + h + "WARN: a", ".|" + g + "WARN: b"}},
        {"message of three lines", {h + "a", "b", "", g + "c"}, {".|" + h + "a\nb\n", ".|" + g + "c"}},
        {"lines before the first header", {"a", "b", h + "c"}, {"no header|a", "no header|b", ".|" + h + "c"}},
        {"cut within the message", {h + "WARN: ha" + g + "b"}, {".cut|" + h + "WARN: ha", ".mid-line|" + g + "b"}},
        {"cut within the header",
         {h + "a", "[Mon Nov" + g + "b"},
         {".|" + h + "a", "cut|[Mon Nov", ".mid-line|" + g + "b"}},
        {"two further headers in one line",
         {h + "a" + g + "b" + h + "c"},
         {".cut|" + h + "a", ".mid-line|" + g + "b", ".mid-line|" + h + "c"}},
        {"further line that the next header cuts",
         {h + "a", "b" + g + "c"},
         {".|" + h + "a", "cut|b", ".mid-line|" + g + "c"}},
        {"cut record and its successor, both with further lines",
         {h + "a", "b" + g + "c", "d"},
         {".|" + h + "a", "cut|b", ".mid-line|" + g + "c\nd"}},
        {"invalid UTF-8", {h + "caf\xE9", "x", g + "b"}, {".bad UTF-8|" + h + "caf\xE9\nx", ".|" + g + "b"}},
        {"invalid UTF-8 and cut", {h + "\xC3" + g + "b"}, {".cut|" + h + "\xC3", ".mid-line|" + g + "b"}},
        {"mid-line and invalid UTF-8", {h + "a" + g + "\xC3"}, {".cut|" + h + "a", ".mid-line|" + g + "\xC3"}},
        {"intact record after a mid-line record",
         {h + "a" + g + "b", h + "c"},
         {".cut|" + h + "a", ".mid-line|" + g + "b", ".|" + h + "c"}},
        {"valid UTF-8", {h + "caf\xC3\xA9"}, {".|" + h + "caf\xC3\xA9"}},
        {"empty message", {h}, {".|" + h}},
        {"empty line at the start", {"", h}, {"no header|", ".|" + h}},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(shown(recordsOf(c.lines)), c.records) << c.why;
    }
}

TEST_F(RecordReaderTest, LineWithoutALineFeedIsMarkedAsCut) {
    reader.add({header() + "a", LineEnd::Feed});
    reader.add({header() + "b", LineEnd::File});
    reader.add({"[Mon", LineEnd::File});
    EXPECT_THAT(shown(records), ElementsAre(".|" + header() + "a", ".cut|" + header() + "b", "cut|[Mon"));
}

TEST_F(RecordReaderTest, MidLineRecordWithoutALineFeedIsMarkedAsMidLine) {
    reader.add({header() + "a" + header(1) + "b", LineEnd::File});
    EXPECT_THAT(shown(records), ElementsAre(".cut|" + header() + "a", ".mid-line|" + header(1) + "b"));
}

TEST_F(RecordReaderTest, FurtherLineWithoutALineFeedMarksItsRecordAsCut) {
    reader.add({header() + "a", LineEnd::Feed});
    reader.add({"b", LineEnd::File});
    EXPECT_THAT(shown(records), ElementsAre(".cut|" + header() + "a\nb"));
}

TEST_F(RecordReaderTest, RecordIsHeldBackUntilItIsComplete) {
    reader.add({header() + "a", LineEnd::Feed});
    EXPECT_TRUE(records.empty());
    reader.flush();
    EXPECT_THAT(shown(records), ElementsAre(".|" + header() + "a"));
    reader.flush();
    EXPECT_EQ(records.size(), 1u);
    reader.add({"too late", LineEnd::Feed});
    reader.flush();
    EXPECT_EQ(shown(records).back(), "no header|too late");
}

TEST_F(RecordReaderTest, PiecesOfALongLineFormOneRecord) {
    reader.add({header() + "a", LineEnd::MoreText, true});
    reader.add({"b", LineEnd::MoreText, false});
    reader.add({"c", LineEnd::Feed, false});
    reader.add({"d", LineEnd::Feed, true});
    reader.flush();
    EXPECT_THAT(shown(records), ElementsAre(".|" + header() + "abc\nd"));
}

TEST_F(RecordReaderTest, LargeRecordsAreSplitWithoutLoss) {
    const std::string piece(RecordReader::kMaxRecordBytes / 4, 'x');
    std::string all = header();
    reader.add({header(), LineEnd::Feed, true});
    for (int count = 0; count != 10; ++count) {
        reader.add({piece, LineEnd::Feed, true});
        all += piece;
    }
    for (int count = 0; count != 10; ++count) {
        reader.add({piece, LineEnd::MoreText, count == 0});
        all += piece;
    }
    reader.flush();
    std::string found;
    for (const Record& record : records) {
        EXPECT_LE(record.text().size(), RecordReader::kMaxRecordBytes);
        found += record.text();
    }
    std::erase(found, '\n');
    EXPECT_EQ(found, all);
    EXPECT_GT(records.size(), 1u);
}

}  // namespace
